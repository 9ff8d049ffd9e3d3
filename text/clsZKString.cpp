// clsZKString's type information and its enumerations. The members live beside their
// concerns: string_search.cpp, string_replace.cpp, string_chars.cpp, packed_array.cpp,
// in_words.cpp, legacy_conversions.cpp.
#include "tsruntime/clsZKString.h"

namespace tsruntime {
namespace {

const EnumInfo kTrimTypes{u"xeZK_TRIM_TYPE",
                          {{u"xcZK_TRIM_LEFT", xcZK_TRIM_LEFT},
                           {u"xcZK_TRIM_RIGHT", xcZK_TRIM_RIGHT},
                           {u"xcZK_TRIM_BOTH", xcZK_TRIM_BOTH}}};

const EnumInfo kCaseTypes{u"xeZK_CHANGE_CASE",
                          {{u"xcZK_CASE_FIRSTUP", xcZK_CASE_FIRSTUP},
                           {u"xcZK_CASE_ALLDOWN", xcZK_CASE_ALLDOWN},
                           {u"xcZK_CASE_ALLUP", xcZK_CASE_ALLUP}}};

[[maybe_unused]] const bool enums_registered = RegisterEnum(kTrimTypes) && RegisterEnum(kCaseTypes);

const Variant kBinary = Variant(int32_t{vbBinaryCompare});

}  // namespace

TSRUNTIME_DEFINE_CLASS(clsZKString) {
  static const ClassInfo info = [] {
    using C = clsZKString;
    return ClassBuilder<C>("clsZKString")
            .Method("InstrRight", &C::InstrRight,
                    {"Expression", "SearchStr", Opt("SearchLen", -1), Opt("CompareType", kBinary)})
            .Method("Replace", &C::Replace,
                    {"Expression", "SearchStr", Opt("ReplaceStr", String()),
                     Opt("CompareType", kBinary)})
            .Method("Filter", &C::Filter,
                    {"Expression", "FilteringStr", Opt("Iclude", false),
                     Opt("CompareType", kBinary), Opt("SelStart")})
            .Method("GetLeft", &C::GetLeft,
                    {"Expression", "SepStr", Opt("InstrRight", false), Opt("SepInclude", false),
                     Opt("AllIfNoMatch", false)})
            .Method("GetRight", &C::GetRight,
                    {"Expression", "SepStr", Opt("InstrLeft", false), Opt("SepInclude", false),
                     Opt("AllIfNoMatch", false)})
            .Method("Trim", &C::Trim,
                    {"Expression", "CharsTrim", "TrimType", Opt("CompareType", kBinary),
                     Opt("SelStart")})
            .Method("ChangeCase", &C::ChangeCase,
                    {"SourceString", "CaseType", Opt("WordDelimiters", String())})
            .Method("ArrayJoin", &C::ArrayJoin,
                    {Typed("DataArray", ArrayOf(VarType::kString))})
            .Method("ArraySplit", &C::ArraySplit, {"DataString"})
            .Returns(ArrayOf(VarType::kString))  // the packed text unpacks into strings
            .Method("InWords", &C::InWords, {"Expression", Opt("IncludeUnitNames", true)})
            .Method("ConvMKD", &C::ConvMKD, {"Expression"})
            .Method("ConvMKI", &C::ConvMKI, {"Expression"})
            .Method("ConvMKL", &C::ConvMKL, {"Expression"})
            .Method("ConvMKS", &C::ConvMKS, {"Expression"})
            .Method("ConvCVD", &C::ConvCVD, {"Expression"})
            .Method("ConvCVI", &C::ConvCVI, {"Expression"})
            .Method("ConvCVL", &C::ConvCVL, {"Expression"})
            .Method("ConvCVS", &C::ConvCVS, {"Expression"})
            .Method("ConvWin2Dos", &C::ConvWin2Dos, {"SourceString", "DestString"})
            .Method("IsVarEQ", &C::IsVarEQ, {"Expression0", "Expression1"})
            .Method("StrToVarNull", &C::StrToVarNull, {"Expression", Opt("TrimLen", 0)})
            .Build();
  }();
  return info;
}

}  // namespace tsruntime
