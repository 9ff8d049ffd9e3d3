// Conversions between Variant types, as the host runtime makes them.
//
//   - Number to text uses the locale's decimal separator and no grouping: 1.5 is "1,5"
//     under a Russian locale. Doubles show up to 15 significant digits, Singles 7,
//     Currency up to 4 decimals; very large or small values use "1E+20" notation.
//   - Text to number accepts optional spaces, a sign, digits with the locale's decimal
//     separator and an exponent; anything else is type mismatch (13). No grouping:
//     "1 000" is 13, and so is "1.5" under a Russian locale.
//   - "&H" / "&O" text is read straight into the target type: a whole-number type takes
//     as many bits as it has, its top bit the sign ("&HF060" is the Integer -4000 and the
//     Long 61536; "&H100" is overflow for a Byte); Single, Double, Currency and Decimal
//     take the unsigned value, up to 64 bits, and overflow only beyond their range.
//   - Text to Currency and Decimal is exact: every amount `ToString` writes reads back
//     unchanged, and "0,00015" rounds to 0,0002 as a true half.
//   - Rounding to Integer, Long and Byte is half to even (2.5 -> 2, 3.5 -> 4); a value
//     outside the target range is overflow (6).
//   - Boolean True is -1 as a number and "True" as text; text "True"/"False" (any case)
//     or a number converts to Boolean.
//   - Null converts to nothing but Variant: invalid use of Null (94). Empty is 0, "" or
//     False. Arrays and Error values are type mismatch (13).
//   - An object converts through its default member (`DefaultValue`): a `clsTSError`
//     converted to String is its Description.
#pragma once

#include <cstdint>

#include "tsruntime/automation/variant.h"

namespace tsruntime {

int16_t ToInteger(const Variant& v);
int32_t ToLong(const Variant& v);
uint8_t ToByte(const Variant& v);
float ToSingle(const Variant& v);
double ToDouble(const Variant& v);
Currency ToCurrency(const Variant& v);
Date ToDate(const Variant& v);
Decimal ToDecimal(const Variant& v);
bool ToBoolean(const Variant& v);
String ToString(const Variant& v);

// The value converted to `type` (a scalar type code, or Variant for a copy).
Variant ChangeType(const Variant& v, VarType type);

// What an object stands for where a value is expected: its class's default member, read
// with no arguments (again while that gives another object). Nothing raises 91, an
// object whose class has no default member 438. Any other value comes back unchanged.
Variant DefaultValue(const Variant& v);

// The host runtime's `a & b`: both sides as text, objects through their default member;
// Null joins as "" and Null & Null is Null.
Variant Concatenate(const Variant& a, const Variant& b);

// Number formatting and parsing in the thread's locale.
String FormatDouble(double value);
String FormatSingle(float value);
String FormatCurrency(Currency value);
// The text as a Double ("&H" / "&O" text unsigned); raises type mismatch (13) when it
// is not a number.
double ParseNumber(StringView text);

// Half-to-even rounding to a whole number, as the host runtime rounds to integers.
double RoundHalfEven(double value);

}  // namespace tsruntime
