// Rows of a string list or (column, row) table, as the clsZKArray operations see them.
// Internal to the library.
#pragma once

#include <cstdint>

#include "tsruntime/automation/safearray.h"

namespace tsruntime::array_detail {

// Where the rows of an array are and which element of a row is its key. A list is a
// table of one column.
struct RowLayout {
  Bounds rows;            // host indexes of the rows
  int64_t width = 1;      // elements per row
  int64_t key_offset = 0; // position of the key within a row
};

// The row bounds an operation iterates over: the first dimension of a list, the second
// of a table. Subscript out of range (9) when the array has no such dimension.
Bounds RowBounds(const SafeArray& array, bool table);

// The layout for reading keys: a list needs exactly one dimension, a table exactly two
// and a key column within the first. Raises what indexing the host's array would:
// subscript out of range (9), or the column's conversion error; type mismatch (13) for
// a byte array, which holds no text.
RowLayout ResolveLayout(const SafeArray& array, const Variant& column);

// The key element of host row `row`.
inline const Variant& KeyAt(const SafeArray& array, const RowLayout& layout, int32_t row) {
  return array.elements()[static_cast<size_t>((int64_t{row} - layout.rows.lower) *
                                                  layout.width +
                                              layout.key_offset)];
}

// -1, 0 or +1 comparing an element's text with `text`, converting the element with the
// host's string conversion.
int CompareElement(const Variant& element, StringView text, int32_t mode);

// Direction factor of a sort or search: +1 ascending, -1 descending (Boolean True is -1,
// and the factor is the Boolean times 2 plus 1).
inline int DirectionFactor(bool hi_to_low) { return hi_to_low ? -1 : 1; }

// The sorts. Each takes host row indexes, raises host runtime errors untranslated, and
// leaves the array untouched when it raises.
void BubbleSort(SafeArray& array, const Variant& column, bool hi_to_low, int32_t mode);
void SelectionSort(SafeArray& array, int32_t min_index, int32_t max_index,
                   const Variant& column, bool hi_to_low, int32_t mode);
void QuickSort(SafeArray& array, int32_t min_index, int32_t max_index,
               const Variant& column, bool hi_to_low, int32_t mode);

}  // namespace tsruntime::array_detail
