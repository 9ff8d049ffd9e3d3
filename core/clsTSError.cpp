#include "tsruntime/clsTSError.h"

#include <string>

#include "tsruntime/automation/convert.h"

namespace tsruntime {

String clsTSError::GetText(bool IncludeNumber) const {
  if (!IncludeNumber || number_ == 0) return description_;
  return u"[" + FromAscii(std::to_string(number_)) + u"] " + description_;
}

String clsTSError::ToString() const {
  return FromAscii(std::to_string(number_)) + u'\a' + description_;
}

bool clsTSError::ToObject(const String& strData) {
  if (strData.empty()) return true;
  const size_t first = strData.find(u'\a');
  const String number = strData.substr(0, first);
  String description;
  if (first != String::npos) {
    const size_t second = strData.find(u'\a', first + 1);
    description = strData.substr(first + 1, second == String::npos ? second : second - first - 1);
  }
  try {
    number_ = ToLong(Variant(number));
  } catch (const Error&) {
    // A number that does not convert keeps the old one; the description is still read.
  }
  description_ = std::move(description);
  return true;
}

TSRUNTIME_DEFINE_CLASS(clsTSError) {
  static const ClassInfo info =
      ClassBuilder<clsTSError>("clsTSError")
          .Help(u"One error record of a clsTSErrors collection: a number and a text; raises "
                u"nothing.")
          .Get("Number", &clsTSError::Number)
          .Help(u"The error's number; 0 means it has none.")
          .Let("Number", &clsTSError::LetNumber, {Typed("RHS", VarType::kLong)})
          .Get("Description", &clsTSError::Description)
          .Help(u"The error's text; the default member.")
          .Let("Description", &clsTSError::LetDescription, {Typed("RHS", VarType::kString)})
          .Method("GetText", &clsTSError::GetText, {Opt("IncludeNumber", true)})
          .Help(u"\"[Number] Description\" when IncludeNumber is True and Number is not 0, else "
                u"Description alone.")
          .Method("ToString", &clsTSError::ToString)
          .Help(u"Number in decimal, the character 7 (BEL), then Description: the text ToObject "
                u"reads.")
          .Method("ToObject", &clsTSError::ToObject, {"strData"})
          .Help(u"Reads a ToString text: the piece before the first BEL as Number (kept when it "
                u"does not convert), the next as Description; always True.")
          .Default("Description")
          .Build();
  return info;
}

}  // namespace tsruntime
