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
          .Help(u"A collection of error records gathered in order, rendered as text, packed into "
                u"one string and shown as an error report; raises nothing.")
          .Get("HasErrors", &clsTSErrors::HasErrors)
          .Help(u"True when the collection holds one record or more.")
          .Let("ProgramName", &clsTSErrors::LetProgramName, {Typed("RHS", VarType::kString)})
          .Help(u"The program named in the error report; empty at creation, kept by Clear.")
          .Get("ProgramName", &clsTSErrors::ProgramName)
          .Let("ModuleName", &clsTSErrors::LetModuleName, {Typed("RHS", VarType::kString)})
          .Help(u"The module named in the error report; empty at creation, kept by Clear.")
          .Get("ModuleName", &clsTSErrors::ModuleName)
          .Let("FunctionName", &clsTSErrors::LetFunctionName, {Typed("RHS", VarType::kString)})
          .Help(u"The function named in the error report; empty at creation, kept by Clear.")
          .Get("FunctionName", &clsTSErrors::FunctionName)
          .Method("ShowErrorMessage", &clsTSErrors::ShowErrorMessage,
                  {Opt("MessageText", String()), Opt("ErrorCode", int32_t{0})})
          .Help(u"Shows the error report with MessageText and ErrorCode above the records and "
                u"returns when it is closed; without a display it goes to standard error.")
          .Method("Add", &clsTSErrors::Add,
                  {Opt("Description", String()), Opt("Number", int32_t{0})})
          .Help(u"Appends a new record with Number and Description.")
          .Method("AddAsObject", &clsTSErrors::AddAsObject, {"ErrItem"})
          .Help(u"Appends the clsTSError ErrItem itself, so later changes to it show in the "
                u"collection.")
          .Method("AddAsError",
                  [](clsTSErrors& self, const Variant& ErrorObject) {
                    self.AddAsError(ErrorObject);
                  },
                  {"ErrorObject"})
          .Help(u"Appends a record with the Number and Description of ErrorObject (the Err "
                u"object); nothing when either cannot be read.")
          .Get("Count", &clsTSErrors::Count)
          .Help(u"The number of records.")
          .Method("Clear", &clsTSErrors::Clear)
          .Help(u"Removes every record; the program, module and function names stay.")
          .Let("Item", &clsTSErrors::LetItem, {"Index", "RHS"})
          .Help(u"The record at the zero-based Index, or Nothing; assigning replaces the record, "
                u"and an index outside does nothing.")
          .Get("Item", &clsTSErrors::Item, {"Index"})
          .Get("GetErrDescription", &clsTSErrors::GetErrDescription, {"Index"})
          .Help(u"The Description of the record at Index, or \"\" when there is none.")
          .Get("GetErrNumber", &clsTSErrors::GetErrNumber, {"Index"})
          .Help(u"The Number of the record at Index, or 0 when there is none.")
          .Method("GetAsText", &clsTSErrors::GetAsText,
                  {Opt("Prefix"), Opt("IncludeNumber", true)})
          .Help(u"One line per record: Prefix, the record's GetText(IncludeNumber), CR LF; \"\" "
                u"when empty.")
          .Method("ToString", &clsTSErrors::ToString)
          .Help(u"The records' ToString texts packed by clsZKString.ArrayJoin; \"\" when empty.")
          .Method("ToObject", &clsTSErrors::ToObject, {"strData"})
          .Help(u"Appends one record per piece of the packed text strData, after those already "
                u"held; always returns False.")
          .Default("Item")
          .Build();
  return info;
}

}  // namespace tsruntime
