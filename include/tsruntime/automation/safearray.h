// SafeArray: the host runtime's array with per-dimension bounds.
//
// An array has an element type and either no dimensions at all ("never dimensioned",
// what `Dim a() As String` gives before any `ReDim`) or one or more dimensions, each
// with its own lower and upper bound. A dimensioned array may hold no elements: its
// upper bound is then below its lower bound (0 to -1, or -1 to -1), and it is still
// distinct from a never-dimensioned one.
//
// Tables are two-dimensional and indexed (column, row). Elements are stored with the
// first index varying fastest, as the host runtime lays them out. Byte arrays keep
// their elements as raw bytes.
#pragma once

#include <cstdint>
#include <span>
#include <vector>

#include "tsruntime/automation/variant.h"

namespace tsruntime {

struct Bounds {
  int32_t lower = 0;
  int32_t upper = -1;
  int64_t count() const { return upper >= lower ? int64_t{upper} - lower + 1 : 0; }
};

class SafeArray {
 public:
  // A never-dimensioned array of `element` (Variant by default).
  explicit SafeArray(VarType element = VarType::kVariant);
  // A dimensioned array; every element starts as its type's zero value ("" for
  // strings, Empty for variants, 0 for numbers). Out of memory (7) past 2^31 - 1
  // elements, before anything is allocated.
  SafeArray(VarType element, std::vector<Bounds> dims);

  // One-dimensional array holding `items`, lower bound `lower`. Overflow (6) when the
  // last index would pass INT32_MAX; out of memory (7) for no items from INT32_MIN,
  // whose upper bound INT32_MIN - 1 no array can hold.
  static SafeArray FromStrings(const std::vector<String>& items, int32_t lower = 0);
  static SafeArray FromBytes(std::span<const uint8_t> bytes, int32_t lower = 0);
  static SafeArray FromVariants(std::vector<Variant> items, int32_t lower = 0);

  VarType elementType() const { return element_; }
  VarType type() const { return ArrayOf(element_); }
  bool isDimensioned() const { return !dims_.empty(); }
  int dimensions() const { return static_cast<int>(dims_.size()); }
  // Bounds of dimension `dim` (1-based); subscript out of range (9) when the array is
  // not dimensioned or has no such dimension.
  int32_t lbound(int dim = 1) const;
  int32_t ubound(int dim = 1) const;
  const std::vector<Bounds>& bounds() const { return dims_; }
  int64_t size() const;

  // Element access by host index; subscript out of range (9) outside the bounds.
  Variant get(int32_t i) const;
  Variant get(int32_t column, int32_t row) const;
  // Stores `value` converted to the element type (13, 6 or 94 when it cannot be).
  void set(int32_t i, const Variant& value);
  void set(int32_t column, int32_t row, const Variant& value);

  // Direct access to the elements of a non-byte array, laid out first index fastest.
  // A reference stays valid until the array is redimensioned.
  Variant& at(int32_t i);
  const Variant& at(int32_t i) const;
  Variant& at(int32_t column, int32_t row);
  const Variant& at(int32_t column, int32_t row) const;
  std::vector<Variant>& elements() { return items_; }
  const std::vector<Variant>& elements() const { return items_; }
  // The bytes of a byte array.
  std::vector<uint8_t>& bytes() { return bytes_; }
  const std::vector<uint8_t>& bytes() const { return bytes_; }

  // `ReDim Preserve` of the last dimension to a new upper bound (the lower bound
  // stays); dimensions an undimensioned array as 0 to `upper`. Out of memory (7), with
  // the array unchanged, past 2^31 - 1 elements.
  void RedimPreserve(int32_t upper);

  // The elements of a one-dimensional string array, converted to String.
  std::vector<String> ToStrings() const;

  friend bool operator==(const SafeArray& a, const SafeArray& b);

 private:
  int64_t offset(int32_t i) const;
  int64_t offset(int32_t column, int32_t row) const;

  VarType element_;
  std::vector<Bounds> dims_;
  std::vector<Variant> items_;
  std::vector<uint8_t> bytes_;
};

}  // namespace tsruntime
