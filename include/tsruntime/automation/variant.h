// Variant: the tagged value of the automation runtime.
//
// A Variant holds one of the host runtime's types, identified by its type code:
//
//   Empty 0   Null 1   Integer 2 (int16)   Long 3 (int32)   Single 4   Double 5
//   Currency 6   Date 7   String 8   Object 9   Error 10   Boolean 11 (True is -1)
//   Decimal 14   Byte 17   arrays 8192 + element type (a byte array is 8209)
//
// The Error type also carries the "missing argument" marker that the dispatch layer
// passes for an optional argument the caller left out (see `Variant::Missing`).
//
// Conversions between types follow the host runtime and live in convert.h.
#pragma once

#include <cstdint>
#include <memory>
#include <variant>

#include "tsruntime/automation/currency.h"
#include "tsruntime/automation/date.h"
#include "tsruntime/automation/decimal.h"
#include "tsruntime/automation/error.h"
#include "tsruntime/automation/object.h"
#include "tsruntime/automation/string.h"

namespace tsruntime {

enum class VarType : uint16_t {
  kEmpty = 0,
  kNull = 1,
  kInteger = 2,
  kLong = 3,
  kSingle = 4,
  kDouble = 5,
  kCurrency = 6,
  kDate = 7,
  kString = 8,
  kObject = 9,
  kError = 10,
  kBoolean = 11,
  kVariant = 12,
  kUnknown = 13,
  kDecimal = 14,
  kByte = 17,
  kArray = 0x2000,  // or-ed with the element type
};

constexpr int32_t TypeCode(VarType t) { return static_cast<int32_t>(t); }
constexpr VarType ArrayOf(VarType element) {
  return static_cast<VarType>(static_cast<uint16_t>(element) | 0x2000);
}

// The host runtime's name of a type code, as `TypeName` would print it ("String",
// "Long", "String()"...).
String TypeName(VarType type);

class SafeArray;

struct NullValue {
  friend bool operator==(NullValue, NullValue) { return true; }
};
// An Error-typed value: an SCODE. 0x80020004 is the missing-argument marker.
struct ErrorValue {
  int32_t scode = 0;
  friend bool operator==(ErrorValue, ErrorValue) = default;
};
inline constexpr int32_t kMissingScode = static_cast<int32_t>(0x80020004);

class Variant {
 public:
  Variant() = default;  // Empty
  Variant(const Variant&) = default;
  // An object or array held before an assignment is released as by the destructor.
  Variant& operator=(const Variant& o) {
    Variant copy(o);  // `o` may live inside the array this one holds
    std::swap(v_, copy.v_);
    return *this;
  }
  // A Variant moved from is Empty (an array's storage went with the move).
  Variant(Variant&& o) noexcept : v_(std::move(o.v_)) { o.v_.emplace<std::monostate>(); }
  Variant& operator=(Variant&& o) noexcept {
    if (this != &o) {
      Variant old(std::move(*this));
      v_ = std::move(o.v_);
      o.v_.emplace<std::monostate>();
    }
    return *this;
  }
  // Releasing a value that holds objects or arrays, which may hold others in turn, takes
  // a loop rather than the stack: a chain nested a million deep is released like one.
  ~Variant() {
    if (isObject() || isArray()) ReleaseNested();
  }
  Variant(NullValue) : v_(NullValue{}) {}
  Variant(int16_t x) : v_(x) {}
  Variant(int32_t x) : v_(x) {}
  Variant(float x) : v_(x) {}
  Variant(double x) : v_(x) {}
  Variant(Currency x) : v_(x) {}
  Variant(Date x) : v_(x) {}
  Variant(String x) : v_(std::move(x)) {}
  Variant(StringView x) : v_(String(x)) {}
  Variant(const char16_t* x) : v_(String(x)) {}
  Variant(Ref<Object> x) : v_(std::move(x)) {}
  template <class T>
  Variant(Ref<T> x) : v_(Ref<Object>(std::move(x))) {}
  Variant(ErrorValue x) : v_(x) {}
  Variant(bool x) : v_(x) {}
  Variant(Decimal x) : v_(x) {}
  Variant(uint8_t x) : v_(x) {}
  Variant(SafeArray array);
  Variant(const char*) = delete;  // say which: FromUtf8 or FromAscii

  static Variant Null() { return Variant(NullValue{}); }
  static Variant Missing() { return Variant(ErrorValue{kMissingScode}); }
  // The host language's `Nothing`: an object-typed Variant holding no object.
  static Variant Nothing() { return Variant(Ref<Object>()); }

  VarType type() const;
  bool isEmpty() const { return v_.index() == 0; }
  bool isNull() const { return std::holds_alternative<NullValue>(v_); }
  bool isMissing() const {
    auto* e = std::get_if<ErrorValue>(&v_);
    return e && e->scode == kMissingScode;
  }
  bool isString() const { return std::holds_alternative<String>(v_); }
  bool isObject() const { return std::holds_alternative<Ref<Object>>(v_); }
  bool isArray() const { return std::holds_alternative<ArrayBox>(v_); }
  // Integer, Long, Single, Double, Currency, Decimal, Byte (not Boolean or Date).
  bool isNumeric() const;

  // Typed access; each raises type mismatch (13) when the Variant holds another type.
  int16_t asInteger() const { return value<int16_t>(); }
  int32_t asLong() const { return value<int32_t>(); }
  float asSingle() const { return value<float>(); }
  double asDouble() const { return value<double>(); }
  Currency asCurrency() const { return value<Currency>(); }
  Date asDate() const { return value<Date>(); }
  const String& asString() const { return value<String>(); }
  String& asString() { return value<String>(); }
  const Ref<Object>& asObject() const { return value<Ref<Object>>(); }
  ErrorValue asError() const { return value<ErrorValue>(); }
  bool asBoolean() const { return value<bool>(); }
  const Decimal& asDecimal() const { return value<Decimal>(); }
  uint8_t asByte() const { return value<uint8_t>(); }
  const SafeArray& asArray() const;
  SafeArray& asArray();

  // The held value as the C++ type that stands for its type code; raises type
  // mismatch (13) when the Variant holds another type.
  template <class T>
  const T& value() const;
  template <class T>
  T& value();

  // Exact identity of type and value (strings binary, objects by address, arrays
  // element by element). The host runtime's equality is `VariantEquals` (compare.h).
  friend bool operator==(const Variant& a, const Variant& b);

 private:
  void ReleaseNested() noexcept;

  // Arrays are values: copying a Variant copies the array.
  struct ArrayBox {
    std::unique_ptr<SafeArray> p;
    ArrayBox() = default;
    explicit ArrayBox(SafeArray a);
    ArrayBox(const ArrayBox& o);
    ArrayBox(ArrayBox&&) noexcept = default;
    ArrayBox& operator=(const ArrayBox& o);
    ArrayBox& operator=(ArrayBox&&) noexcept = default;
    ~ArrayBox();
  };

  std::variant<std::monostate, NullValue, int16_t, int32_t, float, double, Currency, Date,
               String, Ref<Object>, ErrorValue, bool, Decimal, uint8_t, ArrayBox>
      v_;
};

template <class T>
const T& Variant::value() const {
  if (const T* p = std::get_if<T>(&v_)) return *p;
  RaiseRuntime(RuntimeError::kTypeMismatch);
}
template <class T>
T& Variant::value() {
  if (T* p = std::get_if<T>(&v_)) return *p;
  RaiseRuntime(RuntimeError::kTypeMismatch);
}

}  // namespace tsruntime

#include "tsruntime/automation/safearray.h"
