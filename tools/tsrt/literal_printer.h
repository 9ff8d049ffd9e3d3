// Writing values in the literal syntax that `ParseLiteral` reads back.
//
//   PrintLiteral(Variant(int32_t{5}))                    -> 5&
//   PrintLiteral(Variant(int32_t{5}), VarType::kLong)    -> 5
//   PrintLiteral(Variant(u"a\"b\r\n"))                   -> "a""b" & vbCrLf
//   PrintLiteral(Variant(SafeArray(VarType::kString)))   -> Array(Undimensioned) As String
//
// What is printed parses back to the same type and value, with two exceptions that
// have no literal: objects print as `<Object clsName>`, and a date that is not a whole
// second inside years 100-9999 prints as `CDate(serial)`, which does parse back.
#pragma once

#include <string>

#include "tsruntime/automation/variant.h"

namespace tsrt {

// The value as a literal, in UTF-8. `declared` is the type the member declares for it:
// an Integer, Long, Byte or Double whose type the declaration already fixes prints
// without the suffix that would otherwise keep its type (`0` rather than `0&` for a Long
// result). Single, Currency and Decimal keep their mark, since without it they would
// not come back exactly.
std::string PrintLiteral(const tsruntime::Variant& value,
                         tsruntime::VarType declared = tsruntime::VarType::kVariant);

}  // namespace tsrt
