// clsZKArray: sorting string arrays in place, binary search in a sorted array, and
// rounding a list of money amounts to whole kopecks.
//
//   auto ar = tsruntime::New<tsruntime::clsZKArray>();
//   SafeArray names = SafeArray::FromStrings({u"Петров", u"Иванов", u"Сидоров"});
//   ar->SortBubble(names);                        // Иванов, Петров, Сидоров
//   int32_t at = 0;
//   ar->FindInArray(names, u"Орлов", &at);        // False, at == 1 (insert before Петров)
//
// Arrays are either lists (one dimension; `SortColumn` / `Column2D` left out) or tables
// indexed (column, row), where one column is the key and a whole row moves as one
// record. Elements are compared as text, each converted with the host runtime's string
// conversion, under a compare method: 0 binary (by UTF-16 code unit), 1 text (case
// blind in the thread's locale; "abc" and "ABC" are equal keys). A True `SortHiToLow`
// sorts descending.
//
// The three sorts are not stable, and the order in which equal keys end up is part of
// their contract: it is what the step-by-step algorithms below leave, and stored data
// sorted by older hosts depends on it.
//
//   - SortBubble (despite its name a diminishing-gap insertion sort): gap = n \ 2; while
//     gap >= 1, for i = gap .. n-1 walk j = i-gap, i-2*gap, ... >= 0 swapping rows j and
//     j+gap while key(j) compares greater than key(j+gap); then gap = gap \ 2. Equal
//     keys are never swapped with each other directly.
//   - SortSelection: for each row i of MinIndex .. MaxIndex-1, find the first row m from
//     i on holding the smallest key, and swap rows i and m.
//   - SortQuick: ranges where MaxIndex - MinIndex < 20 go to SortSelection (so up to 20
//     rows the result is exactly SortSelection's). Larger ranges take a random pivot
//     row, partition with a moving hole (keys equal to the pivot end on its right) and
//     sort both sides the same way. Where equal keys end up depends on the pivots drawn.
//     Many equal keys make the partitions lopsided and the sort slow (quadratic when
//     all keys are equal); the sort never runs out of stack.
//
// Text compare sorts compute one collation key per element and compare those, with the
// same order as the host's text comparison.
//
// The sorts trap every failure (a bad index or column, an element that has no text such
// as Null, a byte array) and raise it again with their own numbers
// `xcZKERR_ARRAY_SORTBUBBLE`, `xcZKERR_ARRAY_SORTQUICK`, `xcZKERR_ARRAY_SORTSEL`, the
// source "ZKRuntimeLib.clsZKArray.<operation>", and the caught description, help file
// and help context. When they fail the array is left as it was.
#pragma once

#include <cstdint>

#include "tsruntime/automation/compare.h"
#include "tsruntime/automation/dispatch.h"
#include "tsruntime/errors.h"

namespace tsruntime {

class clsZKArray : public Object {
 public:
  clsZKArray() = default;
  TSRUNTIME_CLASS_INFO;

  // True when `Expression` is not an array, was never dimensioned, or its first
  // dimension's upper bound is below its lower bound. Never fails.
  bool IsArrayNothing(const Variant& Expression) const;
  bool IsArrayNothing(const SafeArray& Expression) const;

  // Sorts the whole array: every element of a list, or every row (second dimension,
  // lower to upper bound) of a table keyed on column `SortColumn`. Returns True; an
  // empty array or one of one element is left as it is. A never-dimensioned array
  // fails (subscript out of range, wrapped).
  bool SortBubble(SafeArray& SortArray, const Variant& SortColumn = Variant::Missing(),
                  bool SortHiToLow = false, int32_t ComareMethod = vbBinaryCompare);

  // Sort the rows (or elements) `MinIndex` to `MaxIndex`, inclusive; rows outside the
  // range stay where they are. A range of fewer than two rows is not looked at (True
  // whatever the array); a range reaching outside the array fails.
  bool SortQuick(SafeArray& SortArray, int32_t MinIndex, int32_t MaxIndex,
                 const Variant& SortColumn = Variant::Missing(), bool SortHiToLow = false,
                 int32_t CompareMethod = vbBinaryCompare);
  bool SortSelection(SafeArray& SortArray, int32_t MinIndex, int32_t MaxIndex,
                     const Variant& SortColumn = Variant::Missing(),
                     bool SortHiToLow = false, int32_t CompareMethod = vbBinaryCompare);

  // Binary search for `SearchString` in a list, or in column `Column2D` (taken as a
  // 16-bit integer) of a table's rows, sorted ascending (or descending with
  // `SortedHiToLow` True) under `CompareMethod`. True when found, with `RowIndexBuf`
  // (when given) set to the index found. On a miss, False with `RowIndexBuf` set to the
  // index where `SearchString` would be inserted to keep the order: the lower bound for
  // a string below every element, the upper bound + 1 for one above every element.
  //
  // Nothing is trapped: an empty or never-dimensioned array, a column outside the table
  // or a list searched as a table raise the host runtime's subscript out of range (9);
  // an element without text raises its conversion error.
  bool FindInArray(const SafeArray& SortedArray, const String& SearchString,
                   int32_t* RowIndexBuf = nullptr, bool SortedHiToLow = false,
                   int32_t CompareMethod = vbBinaryCompare,
                   const Variant& Column2D = Variant::Missing());

  // Rounds money amounts to whole kopecks so that they still add up.
  //
  // `acurToRound` is a one-dimensional array of amounts (Currency, or anything the host
  // converts to Currency). `acurRounded` receives a Currency array with the same bounds:
  //   - the elements whose indexes are named in `NoChangeIndexes` are copied unchanged
  //     (a single index, an array of indexes, or Empty / Null / Missing for none);
  //   - every other amount is rounded to a whole kopeck, half a kopeck away from zero,
  //     and then the rounded amounts are corrected so that their sum equals the sum of
  //     the original amounts, rounded the same way. The correction is a whole number of
  //     kopecks, at most one kopeck per amount, given to (or taken from) the amounts that
  //     their own rounding moved furthest the other way, earlier indexes first among
  //     equals. When the unchanged amounts are whole kopecks themselves, the rounded
  //     array therefore adds up to the original total rounded to kopecks.
  //
  //   {10.005, 10.005, 10.005} -> {10.00, 10.01, 10.01}   (total 30.015 -> 30.02)
  //   {-0.005, -0.005}         -> {0.00, -0.01}            (total -0.01)
  //
  // Returns True on success. Returns False, and leaves `acurRounded` alone, when
  // `acurToRound` is not a dimensioned one-dimensional array, an amount or an index
  // cannot be converted, an index is outside the array, or a result would leave the
  // Currency range. An empty array gives an empty result and True.
  bool RoundArrayCurrency(const SafeArray& acurToRound, SafeArray& acurRounded,
                          const Variant& NoChangeIndexes);
};

}  // namespace tsruntime
