#include "tsruntime/clsZKArray.h"

#include "array_rows.h"
#include "tsruntime/errors.h"

namespace tsruntime {

bool clsZKArray::SortBubble(SafeArray& SortArray, const Variant& SortColumn,
                            bool SortHiToLow, int32_t ComareMethod) {
  return WithErrorTrap(xcZKERR_ARRAY_SORTBUBBLE, "clsZKArray", "SortBubble", [&] {
    array_detail::BubbleSort(SortArray, SortColumn, SortHiToLow, ComareMethod);
    return true;
  });
}

bool clsZKArray::SortQuick(SafeArray& SortArray, int32_t MinIndex, int32_t MaxIndex,
                           const Variant& SortColumn, bool SortHiToLow,
                           int32_t CompareMethod) {
  return WithErrorTrap(xcZKERR_ARRAY_SORTQUICK, "clsZKArray", "SortQuick", [&] {
    array_detail::QuickSort(SortArray, MinIndex, MaxIndex, SortColumn, SortHiToLow,
                            CompareMethod);
    return true;
  });
}

bool clsZKArray::SortSelection(SafeArray& SortArray, int32_t MinIndex, int32_t MaxIndex,
                               const Variant& SortColumn, bool SortHiToLow,
                               int32_t CompareMethod) {
  return WithErrorTrap(xcZKERR_ARRAY_SORTSEL, "clsZKArray", "SortSelection", [&] {
    array_detail::SelectionSort(SortArray, MinIndex, MaxIndex, SortColumn, SortHiToLow,
                                CompareMethod);
    return true;
  });
}

TSRUNTIME_DEFINE_CLASS(clsZKArray) {
  const Param sort_array = Typed("SortArray", ArrayOf(VarType::kString));
  static const ClassInfo info =
      ClassBuilder<clsZKArray>("clsZKArray")
          .Help(u"Sorting string arrays and tables in place, binary search in a sorted array, "
                u"rounding money amounts to kopecks that still add up.")
          .Method("IsArrayNothing",
                  static_cast<bool (clsZKArray::*)(const Variant&) const>(
                      &clsZKArray::IsArrayNothing),
                  {"Expression"})
          .Help(u"True when Expression is not an array, was never dimensioned, or its first "
                u"dimension holds no elements.")
          .Method("SortBubble", &clsZKArray::SortBubble,
                  {sort_array, Opt("SortColumn"), Opt("SortHiToLow", false),
                   Opt("ComareMethod", int32_t{vbBinaryCompare})})
          .Help(u"Sorts the whole list, or the table's rows on column SortColumn, under "
                u"ComareMethod, descending with SortHiToLow; returns True.")
          .Method("SortQuick", &clsZKArray::SortQuick,
                  {sort_array, "MinIndex", "MaxIndex", Opt("SortColumn"),
                   Opt("SortHiToLow", false), Opt("CompareMethod", int32_t{vbBinaryCompare})})
          .Help(u"Sorts the rows MinIndex to MaxIndex of a list or of a table on column "
                u"SortColumn, under CompareMethod; ranges under 20 rows as SortSelection.")
          .Method("SortSelection", &clsZKArray::SortSelection,
                  {sort_array, "MinIndex", "MaxIndex", Opt("SortColumn"),
                   Opt("SortHiToLow", false), Opt("CompareMethod", int32_t{vbBinaryCompare})})
          .Help(u"Sorts the rows MinIndex to MaxIndex of a list or of a table on column "
                u"SortColumn by selection, under CompareMethod.")
          .Method("FindInArray", &clsZKArray::FindInArray,
                  {Typed("SortedArray", ArrayOf(VarType::kString)), "SearchString",
                   Opt("RowIndexBuf"), Opt("SortedHiToLow", false),
                   Opt("CompareMethod", int32_t{vbBinaryCompare}), Opt("Column2D")})
          .Help(u"Binary search for SearchString in a sorted list or table column Column2D; "
                u"RowIndexBuf comes back as the index found, or where it would go.")
          .Method("RoundArrayCurrency", &clsZKArray::RoundArrayCurrency,
                  {Typed("acurToRound", ArrayOf(VarType::kCurrency)),
                   Typed("acurRounded", ArrayOf(VarType::kCurrency)), "NoChangeIndexes"})
          .Help(u"Rounds the amounts of acurToRound to whole kopecks into acurRounded so that "
                u"they still add up, copying those at NoChangeIndexes; False when it cannot.")
          .Build();
  return info;
}

}  // namespace tsruntime
