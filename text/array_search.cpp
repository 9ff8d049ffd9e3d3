// Binary search and the emptiness test of clsZKArray.
#include "array_rows.h"
#include "tsruntime/automation/checked.h"
#include "tsruntime/automation/convert.h"
#include "tsruntime/clsZKArray.h"

namespace tsruntime {
bool clsZKArray::IsArrayNothing(const Variant& Expression) const {
  return !Expression.isArray() || IsArrayNothing(Expression.asArray());
}

bool clsZKArray::IsArrayNothing(const SafeArray& Expression) const {
  if (!Expression.isDimensioned()) return true;
  const Bounds& first = Expression.bounds()[0];
  return first.upper < first.lower;
}

bool clsZKArray::FindInArray(const SafeArray& SortedArray, const String& SearchString,
                             int32_t* RowIndexBuf, bool SortedHiToLow,
                             int32_t CompareMethod, const Variant& Column2D) {
  using namespace array_detail;
  const bool table = !Column2D.isMissing();
  const Bounds rows = RowBounds(SortedArray, table);
  int32_t lo = rows.lower, hi = rows.upper;
  auto answer = [RowIndexBuf](int32_t index, bool found) {
    if (RowIndexBuf) *RowIndexBuf = index;
    return found;
  };
  answer(lo, false);
  const RowLayout layout =
      ResolveLayout(SortedArray, table ? Variant(ToInteger(Column2D)) : Variant::Missing());
  const int factor = DirectionFactor(SortedHiToLow);
  bool probe_low = false;
  for (;;) {
    // The midpoint is truncated toward zero. Below zero that can round up onto `hi`,
    // which would probe the same element for ever; the element below it comes next.
    const int32_t mid = probe_low ? lo : CheckedLong(int64_t{lo} + hi) / 2;
    probe_low = false;
    if (mid < rows.lower || mid > rows.upper) RaiseRuntime(RuntimeError::kSubscriptOutOfRange);
    const int c = CompareElement(KeyAt(SortedArray, layout, mid), SearchString, CompareMethod) *
                  factor;
    if (c < 0) {
      lo = CheckedLong(int64_t{mid} + 1);
      if (lo > hi) return answer(lo, false);
    } else if (c == 0) {
      return answer(mid, true);
    } else {
      if (lo == mid) return answer(mid, false);
      probe_low = mid == hi;
      hi = mid;
    }
  }
}

}  // namespace tsruntime
