#include "tsruntime/automation/safearray.h"

#include "tsruntime/automation/convert.h"

namespace tsruntime {
namespace {

Variant ZeroOf(VarType t) {
  switch (t) {
    case VarType::kVariant: return Variant();
    case VarType::kObject: return Variant::Nothing();
    case VarType::kString: return Variant(String());
    default: return ChangeType(Variant(int16_t{0}), t);
  }
}

[[noreturn]] void OutOfRange() { RaiseRuntime(RuntimeError::kSubscriptOutOfRange); }

// An automation array counts its elements in 32 bits.
constexpr int64_t kMaxElements = INT32_MAX;

// The element count of `dims`; out of memory (7) beyond what an array can hold, before
// any attempt to allocate it.
int64_t CheckedCount(const std::vector<Bounds>& dims) {
  int64_t n = dims.empty() ? 0 : 1;
  for (const Bounds& b : dims) {
    if (__builtin_mul_overflow(n, b.count(), &n) || n > kMaxElements) {
      RaiseRuntime(RuntimeError::kOutOfMemory);
    }
  }
  return n;
}

// Bounds of `count` elements from `lower`; overflow (6) when the upper bound would not
// fit above. No elements from the lowest bound would need an upper bound below it: the
// runtime reads that as the whole 32-bit range, too many elements to hold (7).
Bounds Span(int32_t lower, size_t count) {
  const int64_t upper = int64_t{lower} + static_cast<int64_t>(count) - 1;
  if (count > static_cast<size_t>(kMaxElements) || upper > INT32_MAX) {
    RaiseRuntime(RuntimeError::kOverflow);
  }
  if (upper < INT32_MIN) RaiseRuntime(RuntimeError::kOutOfMemory);
  return Bounds{lower, static_cast<int32_t>(upper)};
}

}  // namespace

SafeArray::SafeArray(VarType element) : element_(element) {}

SafeArray::SafeArray(VarType element, std::vector<Bounds> dims)
    : element_(element), dims_(std::move(dims)) {
  const int64_t n = CheckedCount(dims_);
  if (element_ == VarType::kByte) {
    bytes_.assign(static_cast<size_t>(n), 0);
  } else {
    items_.assign(static_cast<size_t>(n), ZeroOf(element_));
  }
}

SafeArray SafeArray::FromStrings(const std::vector<String>& items, int32_t lower) {
  SafeArray a(VarType::kString, {Span(lower, items.size())});
  for (size_t i = 0; i < items.size(); ++i) a.items_[i] = Variant(items[i]);
  return a;
}

SafeArray SafeArray::FromBytes(std::span<const uint8_t> bytes, int32_t lower) {
  SafeArray a(VarType::kByte);
  a.dims_ = {Span(lower, bytes.size())};
  a.bytes_.assign(bytes.begin(), bytes.end());
  return a;
}

SafeArray SafeArray::FromVariants(std::vector<Variant> items, int32_t lower) {
  SafeArray a(VarType::kVariant);
  a.dims_ = {Span(lower, items.size())};
  a.items_ = std::move(items);
  return a;
}

int32_t SafeArray::lbound(int dim) const {
  if (dim < 1 || dim > dimensions()) OutOfRange();
  return dims_[dim - 1].lower;
}

int32_t SafeArray::ubound(int dim) const {
  if (dim < 1 || dim > dimensions()) OutOfRange();
  return dims_[dim - 1].upper;
}

int64_t SafeArray::size() const {
  if (dims_.empty()) return 0;
  int64_t n = 1;
  for (const Bounds& b : dims_) n *= b.count();
  return n;
}

int64_t SafeArray::offset(int32_t i) const {
  if (dims_.size() != 1 || i < dims_[0].lower || i > dims_[0].upper) OutOfRange();
  return int64_t{i} - dims_[0].lower;
}

int64_t SafeArray::offset(int32_t column, int32_t row) const {
  if (dims_.size() != 2) OutOfRange();
  const Bounds& c = dims_[0];
  const Bounds& r = dims_[1];
  if (column < c.lower || column > c.upper || row < r.lower || row > r.upper) OutOfRange();
  return (int64_t{row} - r.lower) * c.count() + (int64_t{column} - c.lower);
}

Variant SafeArray::get(int32_t i) const {
  const int64_t k = offset(i);
  return element_ == VarType::kByte ? Variant(bytes_[k]) : items_[k];
}

Variant SafeArray::get(int32_t column, int32_t row) const {
  const int64_t k = offset(column, row);
  return element_ == VarType::kByte ? Variant(bytes_[k]) : items_[k];
}

void SafeArray::set(int32_t i, const Variant& value) {
  const int64_t k = offset(i);
  if (element_ == VarType::kByte) {
    bytes_[k] = ToByte(value);
  } else {
    items_[k] = ChangeType(value, element_);
  }
}

void SafeArray::set(int32_t column, int32_t row, const Variant& value) {
  const int64_t k = offset(column, row);
  if (element_ == VarType::kByte) {
    bytes_[k] = ToByte(value);
  } else {
    items_[k] = ChangeType(value, element_);
  }
}

Variant& SafeArray::at(int32_t i) {
  if (element_ == VarType::kByte) RaiseRuntime(RuntimeError::kTypeMismatch);
  return items_[offset(i)];
}
const Variant& SafeArray::at(int32_t i) const {
  if (element_ == VarType::kByte) RaiseRuntime(RuntimeError::kTypeMismatch);
  return items_[offset(i)];
}
Variant& SafeArray::at(int32_t column, int32_t row) {
  if (element_ == VarType::kByte) RaiseRuntime(RuntimeError::kTypeMismatch);
  return items_[offset(column, row)];
}
const Variant& SafeArray::at(int32_t column, int32_t row) const {
  if (element_ == VarType::kByte) RaiseRuntime(RuntimeError::kTypeMismatch);
  return items_[offset(column, row)];
}

void SafeArray::RedimPreserve(int32_t upper) {
  std::vector<Bounds> dims = dims_;
  if (dims.empty()) dims.push_back(Bounds{0, -1});
  dims.back().upper = upper;
  const int64_t n = CheckedCount(dims);
  dims_ = std::move(dims);
  if (element_ == VarType::kByte) {
    bytes_.resize(static_cast<size_t>(n), 0);
  } else {
    items_.resize(static_cast<size_t>(n), ZeroOf(element_));
  }
}

std::vector<String> SafeArray::ToStrings() const {
  std::vector<String> out;
  out.reserve(static_cast<size_t>(size()));
  if (element_ == VarType::kByte) {
    for (uint8_t b : bytes_) out.push_back(ToString(Variant(b)));
  } else {
    for (const Variant& v : items_) out.push_back(ToString(v));
  }
  return out;
}

bool operator==(const SafeArray& a, const SafeArray& b) {
  if (a.element_ != b.element_ || a.dims_.size() != b.dims_.size()) return false;
  for (size_t i = 0; i < a.dims_.size(); ++i) {
    if (a.dims_[i].lower != b.dims_[i].lower || a.dims_[i].upper != b.dims_[i].upper)
      return false;
  }
  return a.items_ == b.items_ && a.bytes_ == b.bytes_;
}

}  // namespace tsruntime
