// clsTSError: one error record of a `clsTSErrors` collection, a number and a text.
//
//   auto e = tsruntime::New<tsruntime::clsTSError>();
//   e->LetNumber(5);
//   e->LetDescription(u"Нет файла");
//   e->GetText();     // "[5] Нет файла"
//   e->ToString();    // "5" BEL "Нет файла" (BEL is the character 7)
//
// Nothing here raises.
#pragma once

#include <cstdint>

#include "tsruntime/automation/dispatch.h"

namespace tsruntime {

class clsTSError : public Object {
 public:
  TSRUNTIME_CLASS_INFO;

  // The error's number; 0 means it has none.
  int32_t Number() const { return number_; }
  void LetNumber(int32_t value) { number_ = value; }

  // The error's text; the default member.
  const String& Description() const { return description_; }
  void LetDescription(const String& value) { description_ = value; }

  // "[" + Number + "] " + Description when `IncludeNumber` is True and Number is not 0,
  // else Description alone.
  String GetText(bool IncludeNumber = true) const;

  // Number in decimal, BEL (character 7), Description: the form `ToObject` reads.
  String ToString() const;

  // Reads a `ToString` text: splits at every BEL and takes the first piece as Number (a
  // Long as the host runtime converts text: "&H10", " 7", "2,5" rounding half to even
  // under a Russian locale) and the second as Description ("" when there is none);
  // later pieces are dropped, so a description holding BEL loses its tail. A number
  // that does not convert leaves Number as it was. "" changes nothing. Always True.
  bool ToObject(const String& strData);

 private:
  int32_t number_ = 0;
  String description_;
};

}  // namespace tsruntime
