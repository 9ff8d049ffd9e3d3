// The three sorts of clsZKArray.
//
// Each sort first takes one key per row (the element's text for binary compare, its
// collation key for text compare) and runs its algorithm on small records holding the
// key and the row's original position; moving a record stands for moving the row. Only
// when the algorithm has finished are the array's rows put into the order the records
// ended in, each row moved once. Rows end in the places the row-by-row versions would
// leave them, including equal keys: selection and quick sort make the same comparisons,
// and the bubble sort reaches its order by a shorter way (see Bubble).
#include <algorithm>
#include <chrono>
#include <cstring>
#include <utility>
#include <vector>

#include "array_rows.h"
#include "tsruntime/automation/compare.h"
#include "tsruntime/automation/convert.h"

namespace tsruntime::array_detail {

Bounds RowBounds(const SafeArray& array, bool table) {
  const int dim = table ? 2 : 1;
  return Bounds{array.lbound(dim), array.ubound(dim)};
}

RowLayout ResolveLayout(const SafeArray& array, const Variant& column) {
  if (array.elementType() == VarType::kByte) RaiseRuntime(RuntimeError::kTypeMismatch);
  RowLayout layout;
  if (column.isMissing()) {
    if (array.dimensions() != 1) RaiseRuntime(RuntimeError::kSubscriptOutOfRange);
    layout.rows = array.bounds()[0];
    return layout;
  }
  const int32_t key = ToLong(column);
  if (array.dimensions() != 2) RaiseRuntime(RuntimeError::kSubscriptOutOfRange);
  const Bounds& columns = array.bounds()[0];
  if (key < columns.lower || key > columns.upper) {
    RaiseRuntime(RuntimeError::kSubscriptOutOfRange);
  }
  layout.rows = array.bounds()[1];
  layout.width = columns.count();
  layout.key_offset = int64_t{key} - columns.lower;
  return layout;
}

int CompareElement(const Variant& element, StringView text, int32_t mode) {
  if (element.isString()) return CompareStrings(element.asString(), text, mode);
  return CompareStrings(ToString(element), text, mode);
}

namespace {

// A row while it is being sorted: its key and where the row came from. `head` holds the
// key's first units, zero-padded, so that most comparisons need not follow `key`: a
// smaller head means a smaller key, and only equal heads need the whole key.
struct SortRec {
  uint64_t head;
  const void* key;
  size_t length;  // in key units: UTF-16 code units, or bytes of a collation key
  size_t row;     // position among the rows sorted, before sorting
};

uint64_t BinaryHead(const char16_t* key, size_t length) {
  uint64_t head = 0;
  for (size_t i = 0; i < 4; ++i) head = head << 16 | (i < length ? key[i] : 0u);
  return head;
}

uint64_t TextHead(const char* key, size_t length) {
  uint64_t head = 0;
  for (size_t i = 0; i < 8; ++i) head = head << 8 | (i < length ? uint8_t(key[i]) : 0u);
  return head;
}

int CompareHeads(const SortRec& a, const SortRec& b) {
  return (a.head > b.head) - (a.head < b.head);
}

struct BinaryOrder {
  int operator()(const SortRec& a, const SortRec& b) const {
    if (a.head != b.head) return CompareHeads(a, b);
    const auto* x = static_cast<const char16_t*>(a.key);
    const auto* y = static_cast<const char16_t*>(b.key);
    const size_t n = std::min(a.length, b.length);
    for (size_t i = 4; i < n; ++i) {
      if (x[i] != y[i]) return x[i] < y[i] ? -1 : 1;
    }
    return (a.length > b.length) - (a.length < b.length);
  }
};

struct TextOrder {
  int operator()(const SortRec& a, const SortRec& b) const {
    if (a.head != b.head) return CompareHeads(a, b);
    const int c = std::memcmp(a.key, b.key, std::min(a.length, b.length));
    if (c != 0) return c < 0 ? -1 : 1;
    return (a.length > b.length) - (a.length < b.length);
  }
};

// A comparison times the direction factor, as every test of the sorts is made.
template <class Order>
struct Directed {
  int factor;
  int operator()(const SortRec& a, const SortRec& b) const { return Order()(a, b) * factor; }
};

// The keys of rows `first` .. `last` (host indexes), one record per row.
class SortKeys {
 public:
  SortKeys(const SafeArray& array, const RowLayout& layout, int32_t first, int32_t last,
           int32_t mode) {
    const size_t n = static_cast<size_t>(int64_t{last} - first + 1);
    recs_.resize(n);
    if (mode == vbBinaryCompare) {
      size_t not_text = 0;
      for (size_t k = 0; k < n; ++k) {
        not_text += !KeyAt(array, layout, Row(first, k)).isString();
      }
      converted_.reserve(not_text);  // no reallocation: records point into it
      for (size_t k = 0; k < n; ++k) {
        const Variant& v = KeyAt(array, layout, Row(first, k));
        const String& s = v.isString() ? v.asString() : converted_.emplace_back(ToString(v));
        recs_[k] = SortRec{BinaryHead(s.data(), s.size()), s.data(), s.size(), k};
      }
      return;
    }
    std::vector<size_t> ends(n);
    for (size_t k = 0; k < n; ++k) {
      const Variant& v = KeyAt(array, layout, Row(first, k));
      arena_ += v.isString() ? TextSortKey(v.asString()) : TextSortKey(ToString(v));
      ends[k] = arena_.size();
    }
    for (size_t k = 0, begin = 0; k < n; begin = ends[k], ++k) {
      const char* key = arena_.data() + begin;
      recs_[k] = SortRec{TextHead(key, ends[k] - begin), key, ends[k] - begin, k};
    }
  }

  std::vector<SortRec>& recs() { return recs_; }

 private:
  static int32_t Row(int32_t first, size_t k) {
    return static_cast<int32_t>(first + static_cast<int64_t>(k));
  }

  std::vector<SortRec> recs_;
  std::vector<String> converted_;  // texts of keys that are not strings
  std::string arena_;              // collation keys, back to back
};

// Puts rows `first` .. into the order of `recs`: the row at position k afterwards is the
// one that was at position recs[k].row. Each row moves once, along the permutation's
// cycles, so no row is copied.
void ApplyOrder(SafeArray& array, const RowLayout& layout, int32_t first,
                const std::vector<SortRec>& recs) {
  const size_t width = static_cast<size_t>(layout.width);
  Variant* base = array.elements().data() +
                  static_cast<size_t>(int64_t{first} - layout.rows.lower) * width;
  auto row = [&](size_t k) { return base + k * width; };
  std::vector<bool> placed(recs.size());
  std::vector<Variant> held(width);
  for (size_t start = 0; start < recs.size(); ++start) {
    if (placed[start]) continue;
    placed[start] = true;
    if (recs[start].row == start) continue;
    std::move(row(start), row(start) + width, held.begin());
    for (size_t to = start;;) {
      const size_t from = recs[to].row;
      if (from == start) {
        std::move(held.begin(), held.end(), row(to));
        break;
      }
      std::move(row(from), row(from) + width, row(to));
      placed[from] = true;
      to = from;
    }
  }
}

// gap = n \ 2; insertion sort of every gap-th record; halve the gap.
//
// Powers of two as gaps leave some orders (one half of the keys interleaved with the
// other) a quadratic last pass, so the passes are not run literally. With no two keys
// equal only one order is sorted, and any sort finds it. Otherwise each pass is what an
// insertion sort of each gap-th run is, a stable sort of that run, and a run longer than
// a few records is sorted as such: equal keys end exactly where the steps leave them.
template <class Cmp>
void Bubble(std::vector<SortRec>& r, Cmp cmp) {
  const auto less = [&](const SortRec& a, const SortRec& b) { return cmp(a, b) < 0; };
  std::vector<SortRec> sorted = r;
  std::sort(sorted.begin(), sorted.end(), less);
  const auto equal = [&](const SortRec& a, const SortRec& b) { return cmp(a, b) == 0; };
  if (std::adjacent_find(sorted.begin(), sorted.end(), equal) == sorted.end()) {
    r = std::move(sorted);
    return;
  }
  constexpr int64_t kShortRun = 32;
  const int64_t n = static_cast<int64_t>(r.size());
  std::vector<SortRec>& run = sorted;
  for (int64_t gap = n / 2; gap >= 1; gap /= 2) {
    if (n / gap <= kShortRun) {
      for (int64_t i = gap; i < n; ++i) {
        for (int64_t j = i - gap; j >= 0; j -= gap) {
          if (cmp(r[j], r[j + gap]) < 1) break;
          std::swap(r[j], r[j + gap]);
        }
      }
      continue;
    }
    for (int64_t first = 0; first < gap; ++first) {
      run.clear();
      for (int64_t i = first; i < n; i += gap) run.push_back(r[i]);
      std::stable_sort(run.begin(), run.end(), less);
      for (int64_t i = first, k = 0; i < n; i += gap) r[i] = run[k++];
    }
  }
}

// Records lo .. hi: the first smallest of the rest swaps into each place in turn.
template <class Cmp>
void Selection(std::vector<SortRec>& r, int64_t lo, int64_t hi, Cmp cmp) {
  for (int64_t i = lo; i < hi; ++i) {
    int64_t m = i;
    SortRec held = r[i];
    for (int64_t j = i + 1; j <= hi; ++j) {
      if (cmp(r[j], held) < 0) {
        held = r[j];
        m = j;
      }
    }
    r[m] = r[i];
    r[i] = held;
  }
}

// Uniform numbers in [0, 1), seeded from the clock.
class PivotRandom {
 public:
  PivotRandom()
      : state_(static_cast<uint64_t>(
            std::chrono::high_resolution_clock::now().time_since_epoch().count())) {}
  double Next() {  // splitmix64
    uint64_t z = (state_ += 0x9E3779B97F4A7C15ull);
    z = (z ^ (z >> 30)) * 0xBF58476D1CE4E5B9ull;
    z = (z ^ (z >> 27)) * 0x94D049BB133111EBull;
    z ^= z >> 31;
    return static_cast<double>(z >> 11) * 0x1.0p-53;
  }

 private:
  uint64_t state_;
};

// Random pivot, partition with a moving hole, then the left part before the right one.
// Ranges are kept on a list of their own rather than the call stack: lopsided
// partitions (many equal keys) would otherwise recurse once per row.
template <class Cmp>
void Quick(std::vector<SortRec>& r, int64_t min_index, int64_t max_index, Cmp cmp) {
  PivotRandom random;
  std::vector<std::pair<int64_t, int64_t>> pending{{min_index, max_index}};
  while (!pending.empty()) {
    const auto [mn, mx] = pending.back();
    pending.pop_back();
    if (mx - mn < 20) {
      Selection(r, mn, mx, cmp);
      continue;
    }
    const int64_t p =
        std::min(mx, mn + static_cast<int64_t>(random.Next() * static_cast<double>(mx - mn + 1)));
    const SortRec pivot = r[p];
    r[p] = r[mn];
    int64_t lo = mn, hi = mx;
    for (;;) {
      while (cmp(r[hi], pivot) >= 0) {
        if (--hi <= lo) break;
      }
      if (hi <= lo) {
        r[lo] = pivot;
        break;
      }
      r[lo] = r[hi];
      ++lo;
      while (cmp(r[lo], pivot) < 0) {
        if (++lo >= hi) break;
      }
      if (lo >= hi) {
        lo = hi;
        r[hi] = pivot;
        break;
      }
      r[hi] = r[lo];
    }
    pending.emplace_back(lo + 1, mx);
    pending.emplace_back(mn, lo - 1);
  }
}

// Sorts rows `first` .. `last` with `algorithm(records, comparison)`.
template <class Algorithm>
void SortRows(SafeArray& array, const RowLayout& layout, int32_t first, int32_t last,
              bool hi_to_low, int32_t mode, Algorithm algorithm) {
  SortKeys keys(array, layout, first, last, mode);
  const int factor = DirectionFactor(hi_to_low);
  if (mode == vbBinaryCompare) {
    algorithm(keys.recs(), Directed<BinaryOrder>{factor});
  } else {
    algorithm(keys.recs(), Directed<TextOrder>{factor});
  }
  ApplyOrder(array, layout, first, keys.recs());
}

// Sorts rows `min_index` .. `max_index`, which must lie in the array unless there are
// fewer than two of them (then nothing is looked at).
template <class Algorithm>
void SortRange(SafeArray& array, int32_t min_index, int32_t max_index, const Variant& column,
               bool hi_to_low, int32_t mode, Algorithm algorithm) {
  if (max_index <= min_index) return;
  const RowLayout layout = ResolveLayout(array, column);
  if (min_index < layout.rows.lower || max_index > layout.rows.upper) {
    RaiseRuntime(RuntimeError::kSubscriptOutOfRange);
  }
  SortRows(array, layout, min_index, max_index, hi_to_low, mode, algorithm);
}

int64_t Last(const std::vector<SortRec>& r) { return static_cast<int64_t>(r.size()) - 1; }

}  // namespace

void BubbleSort(SafeArray& array, const Variant& column, bool hi_to_low, int32_t mode) {
  const Bounds rows = RowBounds(array, !column.isMissing());
  if (rows.count() < 2) return;
  const RowLayout layout = ResolveLayout(array, column);
  SortRows(array, layout, rows.lower, rows.upper, hi_to_low, mode,
           [](std::vector<SortRec>& r, auto cmp) { Bubble(r, cmp); });
}

void SelectionSort(SafeArray& array, int32_t min_index, int32_t max_index,
                   const Variant& column, bool hi_to_low, int32_t mode) {
  SortRange(array, min_index, max_index, column, hi_to_low, mode,
            [](std::vector<SortRec>& r, auto cmp) { Selection(r, 0, Last(r), cmp); });
}

void QuickSort(SafeArray& array, int32_t min_index, int32_t max_index,
               const Variant& column, bool hi_to_low, int32_t mode) {
  SortRange(array, min_index, max_index, column, hi_to_low, mode,
            [](std::vector<SortRec>& r, auto cmp) { Quick(r, 0, Last(r), cmp); });
}

}  // namespace tsruntime::array_detail
