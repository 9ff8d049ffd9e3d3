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
          .Method("IsArrayNothing",
                  static_cast<bool (clsZKArray::*)(const Variant&) const>(
                      &clsZKArray::IsArrayNothing),
                  {"Expression"})
          .Method("SortBubble", &clsZKArray::SortBubble,
                  {sort_array, Opt("SortColumn"), Opt("SortHiToLow", false),
                   Opt("ComareMethod", int32_t{vbBinaryCompare})})
          .Method("SortQuick", &clsZKArray::SortQuick,
                  {sort_array, "MinIndex", "MaxIndex", Opt("SortColumn"),
                   Opt("SortHiToLow", false), Opt("CompareMethod", int32_t{vbBinaryCompare})})
          .Method("SortSelection", &clsZKArray::SortSelection,
                  {sort_array, "MinIndex", "MaxIndex", Opt("SortColumn"),
                   Opt("SortHiToLow", false), Opt("CompareMethod", int32_t{vbBinaryCompare})})
          .Method("FindInArray", &clsZKArray::FindInArray,
                  {Typed("SortedArray", ArrayOf(VarType::kString)), "SearchString",
                   Opt("RowIndexBuf"), Opt("SortedHiToLow", false),
                   Opt("CompareMethod", int32_t{vbBinaryCompare}), Opt("Column2D")})
          .Method("RoundArrayCurrency", &clsZKArray::RoundArrayCurrency,
                  {Typed("acurToRound", ArrayOf(VarType::kCurrency)),
                   Typed("acurRounded", ArrayOf(VarType::kCurrency)), "NoChangeIndexes"})
          .Build();
  return info;
}

}  // namespace tsruntime
