#include <algorithm>
#include <iterator>

#include "tsruntime/automation/codepage.h"
#include "tsruntime/clsZKStorage.h"

namespace tsruntime {

namespace {

constexpr VarType kByteArray = ArrayOf(VarType::kByte);

// The types kept as number text and read back as the same type.
bool IsNumberType(int32_t type) {
  static constexpr VarType kNumbers[] = {VarType::kInteger,  VarType::kLong,
                                         VarType::kSingle,   VarType::kDouble,
                                         VarType::kCurrency, VarType::kDecimal,
                                         VarType::kByte};
  return std::any_of(std::begin(kNumbers), std::end(kNumbers),
                     [type](VarType t) { return TypeCode(t) == type; });
}

// Appends the text a value of type `type` is kept as; false, for a type the list
// refuses, with nothing appended.
bool AppendText(String& out, const Variant& value, VarType type) {
  switch (type) {
    case VarType::kInteger:
      AppendDecimal(out, value.asInteger());
      return true;
    case VarType::kLong:
      AppendDecimal(out, value.asLong());
      return true;
    case VarType::kByte:
      AppendDecimal(out, value.asByte());
      return true;
    case VarType::kNull:
      return true;
    case VarType::kDate: {
      // Years 100 to 9999, the only dates the runtime can build or read back.
      const double d = value.asDate().value;
      if (!(d >= -657434.0 && d < 2958466.0)) return false;
      out += value.asDate().ToIsoText();
      return true;
    }
    case VarType::kString:
      out += value.asString();
      return true;
    case VarType::kBoolean:
      if (value.asBoolean()) out += u'1';
      return true;
    default:
      break;
  }
  if (IsNumberType(TypeCode(type))) {
    out += ToString(value);
    return true;
  }
  if (!value.isArray()) return false;
  if (type != kByteArray) return true;  // kept, but `Item` will refuse it
  const SafeArray& bytes = value.asArray();
  if (bytes.ubound(1) < 0) return true;  // raises for a never-dimensioned array
  out += AnsiToString(bytes.bytes());
  return true;
}

[[noreturn]] void RaiseItem(xeZK_ERROR_CODES code, String description) {
  RaiseOwn(code, "clsZKStorageItems", "Item", std::move(description));
}

}  // namespace

bool clsZKStorageItems::Add(const Variant& value) {
  const size_t end = texts_.size();
  try {
    // Room for the slot is made first, so that nothing after the text can fail;
    // doubling keeps a long run of calls linear.
    if (slots_.size() == slots_.capacity()) {
      slots_.reserve(std::max<size_t>(16, 2 * slots_.size()));
    }
    const VarType type = value.type();
    if (AppendText(texts_, value, type)) {
      slots_.push_back({texts_.size(), TypeCode(type)});
      return true;
    }
  } catch (const Error&) {
  } catch (const std::bad_alloc&) {
  }
  texts_.resize(end);
  return false;
}

Variant clsZKStorageItems::Item(int32_t index) const {
  if (index < 0) {
    RaiseItem(xcZKERR_STORAGE_NOITEMS,
              LanguageText(u"Нет данных в хранилище", u"Storage is Empty"));
  }
  if (index >= Count()) {
    RaiseItem(xcZKERR_STORAGE_INDEX,
              LanguageText(u"Недопустимый индекс элемента", u"Index out of bounds"));
  }
  const int32_t type = slots_[static_cast<size_t>(index)].type;
  const String text(TextAt(static_cast<size_t>(index)));
  if (IsNumberType(type)) return ChangeType(Variant(text), static_cast<VarType>(type));
  if (type == TypeCode(kByteArray)) return Variant(SafeArray::FromBytes(StringToAnsi(text)));
  // A code outside the 16 bits of a type must not wrap into a readable one.
  switch (type >= 0 && type <= 0xFFFF ? static_cast<VarType>(type) : VarType::kEmpty) {
    case VarType::kNull:
      return Variant::Null();
    case VarType::kDate:
      return Variant(ToDate(Variant(text)));
    case VarType::kString:
      return Variant(text);
    case VarType::kBoolean:
      return Variant(!text.empty());
    default:
      break;
  }
  const String code = FromAscii(std::to_string(type));
  RaiseItem(xcZKERR_STORAGE_DATATYPE,
            LanguageText(u"Тип данных #" + code + u" не поддерживается",
                         u"Data type #" + code + u" is not supported"));
}

void clsZKStorageItems::Clear() {
  texts_.clear();
  slots_.clear();
}

TSRUNTIME_DEFINE_CLASS(clsZKStorageItems) {
  static const ClassInfo info =
      ClassBuilder<clsZKStorageItems>("clsZKStorageItems")
          .Help(u"The ordered, typed values of a storage node, each kept as text beside its type "
                u"code.")
          .Method("Add", &clsZKStorageItems::Add, {"value"})
          .Help(u"Appends value in its text form with its type code and returns True; False "
                u"for Empty, objects, Error values, or a value with no text.")
          .Get("Item", &clsZKStorageItems::Item, {"index"})
          .Help(u"The value at the zero-based index, rebuilt from its text; the default member. "
                u"Raises the storage errors outside the list or for an unreadable type.")
          .Method("Clear", &clsZKStorageItems::Clear)
          .Help(u"Empties the list.")
          .Get("Count", &clsZKStorageItems::Count)
          .Help(u"The number of values.")
          .Method("ToString", &clsZKStorageItems::ToString, {"ErrFlag"})
          .Help(u"The values as storage records; ErrFlag comes back False when the text is "
                u"complete.")
          .Method("ToObject", &clsZKStorageItems::ToObject, {"strData"})
          .Help(u"Replaces the values with the records of strData, read lazily by Item; False for "
                u"a malformed record, never raises.")
          .Default("Item")
          .Build();
  return info;
}

}  // namespace tsruntime
