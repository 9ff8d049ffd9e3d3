// clsTSErrors: the errors of a long operation gathered in order, with the program,
// module and function they came from; rendered as text, packed into one string and
// back, and shown to the user as an error report.
//
//   auto errors = tsruntime::New<tsruntime::clsTSErrors>();
//   errors->Add(u"Нет файла", 53);
//   errors->Add(u"Пустая строка");
//   errors->GetAsText(u"  --> ");   // "  --> [53] Нет файла\r\n  --> Пустая строка\r\n"
//   String packed = errors->ToString();
//   auto copy = tsruntime::New<tsruntime::clsTSErrors>();
//   copy->ToObject(packed);         // False, always; copy now holds the two records
//
// Records are held by reference: `AddAsObject` and `Item` store the caller's object,
// and later changes to it show in the collection.
//
// Indexes are zero-based. An index is taken when it is numeric (a number, a Boolean,
// Empty, or text that reads as a number in the thread's locale) and 0 <= index < Count;
// a fractional index then picks the record at its value rounded half to even, when
// there is one. Any other index gives no record, "" or 0, and raises nothing.
//
// No member raises an error to the host: a step that fails is skipped and the result
// keeps what was built so far.
#pragma once

#include <cstdint>
#include <vector>

#include "tsruntime/automation/dispatch.h"
#include "tsruntime/clsTSError.h"
#include "tsruntime/clsZKString.h"

namespace tsruntime {

class clsTSErrors : public Object {
 public:
  clsTSErrors();
  TSRUNTIME_CLASS_INFO;

  // True when the collection holds one record or more.
  bool HasErrors() const { return count_ >= 1; }

  // Context for the report of `ShowErrorMessage`; empty at creation, kept by `Clear`.
  const String& ProgramName() const { return program_name_; }
  void LetProgramName(const String& value) { program_name_ = value; }
  const String& ModuleName() const { return module_name_; }
  void LetModuleName(const String& value) { module_name_ = value; }
  const String& FunctionName() const { return function_name_; }
  void LetFunctionName(const String& value) { function_name_ = value; }

  // Shows the error report (see core/error_report.h for its text) and returns when it
  // is closed. Until the report window is available, and always without a display, the
  // report goes to standard error in the terminal's encoding and the call returns at
  // once. A missing `ErrorCode` is 0.
  void ShowErrorMessage(const String& MessageText = {}, int32_t ErrorCode = 0);

  // Appends a new record with `Number`, then `Description`.
  void Add(const String& Description = {}, int32_t Number = 0);
  // Appends `ErrItem` itself (Nothing too: it then renders as nothing).
  void AddAsObject(const Ref<clsTSError>& ErrItem);
  // Appends a record with the error's number and description; source and help are
  // not kept.
  void AddAsError(const Error& ErrorObject);
  // The same for an automation object with `Number` and `Description` (the host's Err
  // object, `ErrObject`): appends nothing when either cannot be read.
  void AddAsError(const Variant& ErrorObject);

  int32_t Count() const { return count_; }
  // Empties the collection; the context names stay.
  void Clear();

  // The record at `Index`, or Nothing; the default member.
  Ref<clsTSError> Item(const Variant& Index) const;
  // Replaces the record at `Index`; an index outside does nothing.
  void LetItem(const Variant& Index, const Ref<clsTSError>& value);
  // The record's Description, or "".
  String GetErrDescription(const Variant& Index) const;
  // The record's Number, or 0.
  int32_t GetErrNumber(const Variant& Index) const;

  // One line per record: `Prefix` (as text; "" when left out), the record's
  // `GetText(IncludeNumber)`, CR LF. "" for an empty collection.
  //   Add("D", 5): GetAsText() == "[5] D\r\n", GetAsText(, False) == "D\r\n"
  String GetAsText(const Variant& Prefix = Variant::Missing(), bool IncludeNumber = true) const;

  // The records' `clsTSError.ToString` texts packed by `clsZKString.ArrayJoin`; "" when
  // empty.
  String ToString() const;
  // Appends one record per element of `ArraySplit(strData)`, each read by
  // `clsTSError.ToObject`, after those already held. "" or a text that does not split
  // appends nothing. Returns False in every case, also when records were read.
  bool ToObject(const String& strData);

 private:
  // The slot that a host index picks, or -1.
  int32_t SlotOf(const Variant& Index) const;
  void Append(Ref<clsTSError> record);

  String program_name_, module_name_, function_name_;
  int32_t count_ = 0;
  // Slots 0 to count - 1; one empty slot while the collection is empty.
  std::vector<Ref<clsTSError>> records_;
  Ref<clsZKString> string_;
};

}  // namespace tsruntime
