// clsZKArray.RoundArrayCurrency: amounts to whole kopecks, still adding up.
#include <algorithm>
#include <optional>
#include <vector>

#include "tsruntime/automation/convert.h"
#include "tsruntime/clsZKArray.h"

namespace tsruntime {
namespace {

using Wide = __int128;
constexpr int64_t kKopeck = 100;  // in Currency's ten-thousandths

int32_t Index(const Bounds& bounds, size_t k) {
  return static_cast<int32_t>(bounds.lower + static_cast<int64_t>(k));
}

// Half a kopeck away from zero.
Wide RoundToKopeck(Wide raw) {
  Wide q = raw / kKopeck;
  const Wide r = raw % kKopeck;
  if (r >= kKopeck / 2) ++q;
  if (r <= -kKopeck / 2) --q;
  return q * kKopeck;
}

// The element positions named by `indexes` (host indexes of an array with `bounds`), or
// nothing when one cannot be converted or lies outside.
std::optional<std::vector<bool>> KeptPositions(const Variant& indexes, const Bounds& bounds) {
  std::vector<bool> kept(static_cast<size_t>(bounds.count()));
  auto keep = [&](const Variant& v) {
    const int32_t i = ToLong(v);
    if (i < bounds.lower || i > bounds.upper) return false;
    kept[static_cast<size_t>(int64_t{i} - bounds.lower)] = true;
    return true;
  };
  if (indexes.isMissing() || indexes.isEmpty() || indexes.isNull()) return kept;
  if (!indexes.isArray()) {
    if (!keep(indexes)) return std::nullopt;
    return kept;
  }
  const SafeArray& list = indexes.asArray();
  if (list.elementType() == VarType::kByte) {
    for (uint8_t b : list.bytes()) {
      if (!keep(Variant(b))) return std::nullopt;
    }
  } else {
    for (const Variant& v : list.elements()) {
      if (!keep(v)) return std::nullopt;
    }
  }
  return kept;
}

}  // namespace

bool clsZKArray::RoundArrayCurrency(const SafeArray& acurToRound, SafeArray& acurRounded,
                                    const Variant& NoChangeIndexes) {
  try {
    if (acurToRound.dimensions() != 1) return false;
    const Bounds bounds = acurToRound.bounds()[0];
    const size_t n = static_cast<size_t>(bounds.count());
    std::vector<Wide> amounts(n);
    for (size_t k = 0; k < n; ++k) {
      amounts[k] = ToCurrency(acurToRound.get(Index(bounds, k))).raw;
    }
    const std::optional<std::vector<bool>> kept = KeptPositions(NoChangeIndexes, bounds);
    if (!kept) return false;

    std::vector<Wide> result = amounts;
    std::vector<size_t> changeable;
    Wide exact_total = 0, rounded_total = 0;
    for (size_t k = 0; k < n; ++k) {
      if ((*kept)[k]) continue;
      changeable.push_back(k);
      exact_total += amounts[k];
      result[k] = RoundToKopeck(amounts[k]);
      rounded_total += result[k];
    }
    // Whole kopecks to give (positive) or take (negative), one per amount, to the
    // amounts whose own rounding went furthest the other way; earlier ones first.
    const Wide correction = (RoundToKopeck(exact_total) - rounded_total) / kKopeck;
    auto error = [&](size_t k) { return result[k] - amounts[k]; };
    if (correction > 0) {
      std::stable_sort(changeable.begin(), changeable.end(),
                       [&](size_t a, size_t b) { return error(a) < error(b); });
    } else {
      std::stable_sort(changeable.begin(), changeable.end(),
                       [&](size_t a, size_t b) { return error(a) > error(b); });
    }
    const size_t moves = static_cast<size_t>(std::min<Wide>(
        correction < 0 ? -correction : correction, static_cast<Wide>(changeable.size())));
    for (size_t m = 0; m < moves; ++m) {
      result[changeable[m]] += correction > 0 ? kKopeck : -kKopeck;
    }

    SafeArray rounded(VarType::kCurrency, {bounds});
    for (size_t k = 0; k < n; ++k) {
      if (result[k] < INT64_MIN || result[k] > INT64_MAX) return false;
      rounded.set(Index(bounds, k),
                  Variant(Currency::FromRaw(static_cast<int64_t>(result[k]))));
    }
    acurRounded = std::move(rounded);
    return true;
  } catch (const Error&) {
    return false;
  }
}

}  // namespace tsruntime
