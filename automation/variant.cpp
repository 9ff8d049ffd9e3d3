#include "tsruntime/automation/variant.h"

#include <vector>

namespace tsruntime {

Variant::ArrayBox::ArrayBox(SafeArray a) : p(std::make_unique<SafeArray>(std::move(a))) {}
Variant::ArrayBox::ArrayBox(const ArrayBox& o)
    : p(o.p ? std::make_unique<SafeArray>(*o.p) : nullptr) {}
Variant::ArrayBox& Variant::ArrayBox::operator=(const ArrayBox& o) {
  if (this != &o) p = o.p ? std::make_unique<SafeArray>(*o.p) : nullptr;
  return *this;
}
Variant::ArrayBox::~ArrayBox() = default;

Variant::Variant(SafeArray array) : v_(ArrayBox(std::move(array))) {}

namespace {

// While a value is being released, the objects and arrays that its release would free
// in turn wait here instead; the outermost release on the thread frees them one by one.
thread_local std::vector<Variant>* pending_releases = nullptr;

}  // namespace

void Variant::ReleaseNested() noexcept {
  if (pending_releases) {
    pending_releases->push_back(std::move(*this));
    return;
  }
  std::vector<Variant> pending;
  pending_releases = &pending;
  v_.emplace<std::monostate>();  // may queue the values this one held
  while (!pending.empty()) {
    Variant next = std::move(pending.back());
    pending.pop_back();
    next.v_.emplace<std::monostate>();
  }
  pending_releases = nullptr;
}

VarType Variant::type() const {
  static constexpr VarType kByIndex[] = {
      VarType::kEmpty,    VarType::kNull,    VarType::kInteger, VarType::kLong,
      VarType::kSingle,   VarType::kDouble,  VarType::kCurrency, VarType::kDate,
      VarType::kString,   VarType::kObject,  VarType::kError,   VarType::kBoolean,
      VarType::kDecimal,  VarType::kByte};
  if (auto* a = std::get_if<ArrayBox>(&v_)) return a->p->type();
  return kByIndex[v_.index()];
}

bool Variant::isNumeric() const {
  switch (type()) {
    case VarType::kInteger:
    case VarType::kLong:
    case VarType::kSingle:
    case VarType::kDouble:
    case VarType::kCurrency:
    case VarType::kDecimal:
    case VarType::kByte:
      return true;
    default:
      return false;
  }
}

const SafeArray& Variant::asArray() const { return *value<ArrayBox>().p; }
SafeArray& Variant::asArray() { return *value<ArrayBox>().p; }

bool operator==(const Variant& a, const Variant& b) {
  if (a.v_.index() != b.v_.index()) return false;
  if (a.isArray()) return a.asArray() == b.asArray();
  if (a.isObject()) return a.asObject().get() == b.asObject().get();
  return std::visit(
      [&](const auto& x) -> bool {
        using T = std::decay_t<decltype(x)>;
        if constexpr (std::is_same_v<T, Variant::ArrayBox> ||
                      std::is_same_v<T, Ref<Object>>) {
          return false;
        } else if constexpr (std::is_same_v<T, Decimal>) {
          return Decimal::Compare(x, std::get<T>(b.v_)) == 0;
        } else if constexpr (std::is_same_v<T, float> || std::is_same_v<T, double>) {
          const T y = std::get<T>(b.v_);
          return x == y || (x != x && y != y);  // the same NaN is the same value
        } else {
          return x == std::get<T>(b.v_);
        }
      },
      a.v_);
}

String TypeName(VarType type) {
  const auto code = static_cast<uint16_t>(type);
  if (code & 0x2000) return TypeName(static_cast<VarType>(code & ~0x2000)) + u"()";
  switch (type) {
    case VarType::kEmpty: return u"Empty";
    case VarType::kNull: return u"Null";
    case VarType::kInteger: return u"Integer";
    case VarType::kLong: return u"Long";
    case VarType::kSingle: return u"Single";
    case VarType::kDouble: return u"Double";
    case VarType::kCurrency: return u"Currency";
    case VarType::kDate: return u"Date";
    case VarType::kString: return u"String";
    case VarType::kObject: return u"Object";
    case VarType::kError: return u"Error";
    case VarType::kBoolean: return u"Boolean";
    case VarType::kVariant: return u"Variant";
    case VarType::kUnknown: return u"Unknown";
    case VarType::kDecimal: return u"Decimal";
    case VarType::kByte: return u"Byte";
    default: return u"Unknown";
  }
}

}  // namespace tsruntime
