#include "tsruntime/clsTSErrors.h"

#include <cmath>
#include <new>

#include "tsruntime/error_report.h"
#include "tsruntime/automation/convert.h"

namespace tsruntime {
namespace {

// What the host runtime's IsNumeric accepts.
bool IsNumericIndex(const Variant& v) {
  if (v.isNumeric() || v.isEmpty() || v.type() == VarType::kBoolean) return true;
  if (!v.isString()) return false;
  try {
    ParseNumber(v.asString());
    return true;
  } catch (const Error&) {
    return false;
  }
}

// Reads a property of a late-bound object; throws what the object raises.
Variant ReadProperty(const Ref<Object>& object, StringView name) {
  std::vector<Argument> none;
  return Invoke(*object, name, InvokeKind::kCall, none);
}

// Runs one step of a member that must never raise; a failed step is skipped.
template <class F>
void Step(F&& body) {
  try {
    body();
  } catch (const Error&) {
  } catch (const std::bad_alloc&) {
  }
}

}  // namespace

clsTSErrors::clsTSErrors() : records_(1), string_(New<clsZKString>()) {}

int32_t clsTSErrors::SlotOf(const Variant& Index) const {
  int32_t slot = -1;
  Step([&] {
    if (!IsNumericIndex(Index)) return;
    const double value = ToDouble(Index);
    if (!(value >= 0 && value < count_)) return;
    // The slot is the index as a Long; a fraction rounding up to Count has no record.
    const double rounded = RoundHalfEven(value);
    if (rounded < count_) slot = static_cast<int32_t>(rounded);
  });
  return slot;
}

void clsTSErrors::Append(Ref<clsTSError> record) {
  Step([&] {
    if (count_ == INT32_MAX) return;
    records_.resize(static_cast<size_t>(count_) + 1);
    records_[count_] = std::move(record);
    ++count_;
  });
}

void clsTSErrors::ShowErrorMessage(const String& MessageText, int32_t ErrorCode) {
  Step([&] { PresentErrorReport(ErrorReportCaption(*this),
                                ErrorReportText(*this, MessageText, ErrorCode)); });
}

void clsTSErrors::Add(const String& Description, int32_t Number) {
  Step([&] {
    Ref<clsTSError> record = New<clsTSError>();
    record->LetNumber(Number);
    record->LetDescription(Description);
    Append(std::move(record));
  });
}

void clsTSErrors::AddAsObject(const Ref<clsTSError>& ErrItem) { Append(ErrItem); }

void clsTSErrors::AddAsError(const Error& ErrorObject) {
  Add(ErrorObject.description(), ErrorObject.number());
}

void clsTSErrors::AddAsError(const Variant& ErrorObject) {
  Step([&] {
    if (!ErrorObject.isObject() || !ErrorObject.asObject()) return;
    const Ref<Object>& object = ErrorObject.asObject();
    const String description = tsruntime::ToString(ReadProperty(object, u"Description"));
    const int32_t number = ToLong(ReadProperty(object, u"Number"));
    Add(description, number);
  });
}

void clsTSErrors::Clear() {
  records_.assign(1, nullptr);
  count_ = 0;
}

Ref<clsTSError> clsTSErrors::Item(const Variant& Index) const {
  const int32_t slot = SlotOf(Index);
  return slot < 0 ? nullptr : records_[slot];
}

void clsTSErrors::LetItem(const Variant& Index, const Ref<clsTSError>& value) {
  const int32_t slot = SlotOf(Index);
  if (slot >= 0) records_[slot] = value;
}

String clsTSErrors::GetErrDescription(const Variant& Index) const {
  const Ref<clsTSError> record = Item(Index);
  return record ? record->Description() : String();
}

int32_t clsTSErrors::GetErrNumber(const Variant& Index) const {
  const Ref<clsTSError> record = Item(Index);
  return record ? record->Number() : 0;
}

String clsTSErrors::GetAsText(const Variant& Prefix, bool IncludeNumber) const {
  String prefix, text;
  Step([&] {
    if (!Prefix.isMissing()) prefix = tsruntime::ToString(Prefix);
  });
  Step([&] {
    for (int32_t i = 0; i < count_; ++i) {
      // An empty slot (AddAsObject of Nothing) has no line.
      if (records_[i]) text += prefix + records_[i]->GetText(IncludeNumber) + u"\r\n";
    }
  });
  return text;
}

String clsTSErrors::ToString() const {
  String packed;
  if (count_ == 0) return packed;
  Step([&] {
    std::vector<String> texts(static_cast<size_t>(count_));
    for (int32_t i = 0; i < count_; ++i) {
      if (records_[i]) texts[i] = records_[i]->ToString();
    }
    packed = string_->ArrayJoin(SafeArray::FromStrings(texts));
  });
  return packed;
}

bool clsTSErrors::ToObject(const String& strData) {
  if (strData.empty()) return false;
  Step([&] {
    const SafeArray parts = string_->ArraySplit(strData);
    for (const Variant& part : parts.elements()) {
      Ref<clsTSError> record = New<clsTSError>();
      record->ToObject(part.asString());
      Append(std::move(record));
    }
  });
  return false;
}

TSRUNTIME_DEFINE_CLASS(clsTSErrors) {
  static const ClassInfo info =
      ClassBuilder<clsTSErrors>("clsTSErrors")
          .Get("HasErrors", &clsTSErrors::HasErrors)
          .Let("ProgramName", &clsTSErrors::LetProgramName, {Typed("RHS", VarType::kString)})
          .Get("ProgramName", &clsTSErrors::ProgramName)
          .Let("ModuleName", &clsTSErrors::LetModuleName, {Typed("RHS", VarType::kString)})
          .Get("ModuleName", &clsTSErrors::ModuleName)
          .Let("FunctionName", &clsTSErrors::LetFunctionName, {Typed("RHS", VarType::kString)})
          .Get("FunctionName", &clsTSErrors::FunctionName)
          .Method("ShowErrorMessage", &clsTSErrors::ShowErrorMessage,
                  {Opt("MessageText", String()), Opt("ErrorCode", int32_t{0})})
          .Method("Add", &clsTSErrors::Add,
                  {Opt("Description", String()), Opt("Number", int32_t{0})})
          .Method("AddAsObject", &clsTSErrors::AddAsObject, {"ErrItem"})
          .Method("AddAsError",
                  [](clsTSErrors& self, const Variant& ErrorObject) {
                    self.AddAsError(ErrorObject);
                  },
                  {"ErrorObject"})
          .Get("Count", &clsTSErrors::Count)
          .Method("Clear", &clsTSErrors::Clear)
          .Let("Item", &clsTSErrors::LetItem, {"Index", "RHS"})
          .Get("Item", &clsTSErrors::Item, {"Index"})
          .Get("GetErrDescription", &clsTSErrors::GetErrDescription, {"Index"})
          .Get("GetErrNumber", &clsTSErrors::GetErrNumber, {"Index"})
          .Method("GetAsText", &clsTSErrors::GetAsText,
                  {Opt("Prefix"), Opt("IncludeNumber", true)})
          .Method("ToString", &clsTSErrors::ToString)
          .Method("ToObject", &clsTSErrors::ToObject, {"strData"})
          .Default("Item")
          .Build();
  return info;
}

}  // namespace tsruntime
