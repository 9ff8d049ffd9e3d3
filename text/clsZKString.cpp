// clsZKString's type information and its enumerations. The members live beside their
// concerns: string_search.cpp, string_replace.cpp, string_chars.cpp, packed_array.cpp,
// in_words.cpp, legacy_conversions.cpp.
#include "tsruntime/clsZKString.h"

namespace tsruntime {
namespace {

const EnumInfo kTrimTypes{u"xeZK_TRIM_TYPE",
                          {{u"xcZK_TRIM_LEFT", xcZK_TRIM_LEFT,
                            u"Trim strips the start of the text."},
                           {u"xcZK_TRIM_RIGHT", xcZK_TRIM_RIGHT,
                            u"Trim strips the end of the text."},
                           {u"xcZK_TRIM_BOTH", xcZK_TRIM_BOTH,
                            u"Trim strips both ends of the text."}},
                          u"The ends of the text clsZKString.Trim strips, as bits."};

const EnumInfo kCaseTypes{u"xeZK_CHANGE_CASE",
                          {{u"xcZK_CASE_FIRSTUP", xcZK_CASE_FIRSTUP,
                            u"The first character upper case, the rest of the text lower case."},
                           {u"xcZK_CASE_ALLDOWN", xcZK_CASE_ALLDOWN,
                            u"Every character lower case."},
                           {u"xcZK_CASE_ALLUP", xcZK_CASE_ALLUP,
                            u"Every character upper case."}},
                          u"The case clsZKString.ChangeCase gives."};

[[maybe_unused]] const bool enums_registered = RegisterEnum(kTrimTypes) && RegisterEnum(kCaseTypes);

const Variant kBinary = Variant(int32_t{vbBinaryCompare});

}  // namespace

TSRUNTIME_DEFINE_CLASS(clsZKString) {
  static const ClassInfo info = [] {
    using C = clsZKString;
    return ClassBuilder<C>("clsZKString")
            .Help(u"Text operations: search, replace, filter, cut, trim and change case, the "
                  u"packed-array text, amounts in Russian words, legacy packed numbers.")
            .Method("InstrRight", &C::InstrRight,
                    {"Expression", "SearchStr", Opt("SearchLen", -1), Opt("CompareType", kBinary)})
            .Help(u"The position of the last SearchStr lying wholly in the first SearchLen "
                  u"characters of Expression (all for -1), or 0; error for SearchLen below -1.")
            .Method("Replace", &C::Replace,
                    {"Expression", "SearchStr", Opt("ReplaceStr", String()),
                     Opt("CompareType", kBinary)})
            .Help(u"Expression with every SearchStr replaced by ReplaceStr, scanning again the "
                  u"text a replacement produced.")
            .Method("Filter", &C::Filter,
                    {"Expression", "FilteringStr", Opt("Iclude", false),
                     Opt("CompareType", kBinary), Opt("SelStart")})
            .Help(u"Keeps (Iclude True) or drops the characters of Expression that FilteringStr "
                  u"contains; SelStart comes back as the caret's place in the result.")
            .Method("GetLeft", &C::GetLeft,
                    {"Expression", "SepStr", Opt("InstrRight", false), Opt("SepInclude", false),
                     Opt("AllIfNoMatch", false)})
            .Help(u"The text before the first SepStr (the last with InstrRight True), with it "
                  u"when SepInclude; no match gives Expression with AllIfNoMatch, else \"\".")
            .Method("GetRight", &C::GetRight,
                    {"Expression", "SepStr", Opt("InstrLeft", false), Opt("SepInclude", false),
                     Opt("AllIfNoMatch", false)})
            .Help(u"The text after the last SepStr (the first with InstrLeft True), with it when "
                  u"SepInclude; no match gives Expression with AllIfNoMatch, else \"\".")
            .Method("Trim", &C::Trim,
                    {"Expression", "CharsTrim", "TrimType", Opt("CompareType", kBinary),
                     Opt("SelStart")})
            .Help(u"Strips the characters CharsTrim contains from the ends TrimType names "
                  u"(xeZK_TRIM_TYPE); SelStart comes back moved with the text.")
            .Method("ChangeCase", &C::ChangeCase,
                    {"SourceString", "CaseType", Opt("WordDelimiters", String())})
            .Help(u"SourceString in the case CaseType names (xeZK_CHANGE_CASE), its length kept; "
                  u"anything but a string comes back unchanged.")
            .Method("ArrayJoin", &C::ArrayJoin,
                    {Typed("DataArray", ArrayOf(VarType::kString))})
            .Help(u"Packs the elements of DataArray from index 0 into the packed-array text: each "
                  u"as its length + 9 in nine digits, then the element.")
            .Method("ArraySplit", &C::ArraySplit, {"DataString"})
            .Returns(ArrayOf(VarType::kString))  // the packed text unpacks into strings
            .Help(u"Unpacks a packed-array text into a String array from 0; \"\" gives one empty "
                  u"element with bounds -1 to -1.")
            .Method("InWords", &C::InWords, {"Expression", Opt("IncludeUnitNames", true)})
            .Help(u"The amount in Russian words as on payment documents, roubles and kopecks; "
                  u"with IncludeUnitNames False no kopecks and no unit words.")
            .Method("ConvMKD", &C::ConvMKD, {"Expression"})
            .Help(u"The Double Expression packed into 8 characters, one byte each through the "
                  u"ANSI code page.")
            .Method("ConvMKI", &C::ConvMKI, {"Expression"})
            .Help(u"The Integer Expression packed into 2 characters, one byte each through the "
                  u"ANSI code page.")
            .Method("ConvMKL", &C::ConvMKL, {"Expression"})
            .Help(u"The Long Expression packed into 4 characters, one byte each through the ANSI "
                  u"code page.")
            .Method("ConvMKS", &C::ConvMKS, {"Expression"})
            .Help(u"The Single Expression packed into 4 characters, one byte each through the "
                  u"ANSI code page.")
            .Method("ConvCVD", &C::ConvCVD, {"Expression"})
            .Help(u"The Double packed in the first 8 characters of Expression (missing bytes are "
                  u"zero); Expression comes back through the ANSI code page.")
            .Method("ConvCVI", &C::ConvCVI, {"Expression"})
            .Help(u"The Integer packed in the first 2 characters of Expression (missing bytes are "
                  u"zero); Expression comes back through the ANSI code page.")
            .Method("ConvCVL", &C::ConvCVL, {"Expression"})
            .Help(u"The Long packed in the first 4 characters of Expression (missing bytes are "
                  u"zero); Expression comes back through the ANSI code page.")
            .Method("ConvCVS", &C::ConvCVS, {"Expression"})
            .Help(u"The Single packed in the first 4 characters of Expression (missing bytes are "
                  u"zero); Expression comes back through the ANSI code page.")
            .Method("ConvWin2Dos", &C::ConvWin2Dos, {"SourceString", "DestString"})
            .Help(u"Converts SourceString from the ANSI to the OEM code page into DestString, "
                  u"losing the last character; False for an empty SourceString.")
            .Method("IsVarEQ", &C::IsVarEQ, {"Expression0", "Expression1"})
            .Help(u"Whether Expression0 equals Expression1, Empty and Null each equal only "
                  u"themselves and strings compared binary; never raises.")
            .Method("StrToVarNull", &C::StrToVarNull, {"Expression", Opt("TrimLen", 0)})
            .Help(u"Null for anything but a non-empty string, else the string cut to its first "
                  u"TrimLen characters when TrimLen is 1 or more.")
            .Build();
  }();
  return info;
}

}  // namespace tsruntime
