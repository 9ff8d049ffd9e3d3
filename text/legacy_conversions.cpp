// clsZKString: numbers packed into byte strings, ANSI to OEM text, and the two helpers
// for database values.
#include <algorithm>
#include <array>
#include <bit>
#include <cstring>
#include <exception>

#include "tsruntime/automation/codepage.h"
#include "tsruntime/clsZKString.h"

namespace tsruntime {
namespace {

// The value's bytes in little-endian order, whatever the processor's order.
template <class T>
std::array<uint8_t, sizeof(T)> LittleEndianBytes(T value) {
  std::array<uint8_t, sizeof(T)> bytes;
  std::memcpy(bytes.data(), &value, sizeof(T));
  if constexpr (std::endian::native == std::endian::big) std::reverse(bytes.begin(), bytes.end());
  return bytes;
}

template <class T>
String Pack(T value) {
  String packed = AnsiToString(LittleEndianBytes(value));
  packed.resize(sizeof(T), u' ');  // a fixed field, should a code page ever decode short
  return packed;
}

// Reads the value from the first bytes of `text` (missing bytes are zero) and writes
// the text back as its ANSI round trip, as callers of these operations expect.
template <class T>
T Unpack(String& text) {
  const std::vector<uint8_t> ansi = StringToAnsi(text);
  text = AnsiToString(ansi);
  std::array<uint8_t, sizeof(T)> bytes{};
  std::copy_n(ansi.begin(), std::min(ansi.size(), bytes.size()), bytes.begin());
  if constexpr (std::endian::native == std::endian::big) std::reverse(bytes.begin(), bytes.end());
  T value;
  std::memcpy(&value, bytes.data(), sizeof(T));
  return value;
}

}  // namespace

String clsZKString::ConvMKD(double Expression) const { return Pack(Expression); }
String clsZKString::ConvMKI(int16_t Expression) const { return Pack(Expression); }
String clsZKString::ConvMKL(int32_t Expression) const { return Pack(Expression); }
String clsZKString::ConvMKS(float Expression) const { return Pack(Expression); }

double clsZKString::ConvCVD(String& Expression) const { return Unpack<double>(Expression); }
int16_t clsZKString::ConvCVI(String& Expression) const { return Unpack<int16_t>(Expression); }
int32_t clsZKString::ConvCVL(String& Expression) const { return Unpack<int32_t>(Expression); }
float clsZKString::ConvCVS(String& Expression) const { return Unpack<float>(Expression); }

bool clsZKString::ConvWin2Dos(String& SourceString, String& DestString) const {
  try {
    const size_t n = SourceString.size();
    DestString.assign(n, u'\0');
    SourceString = AnsiRoundTrip(SourceString);
    std::vector<uint8_t> oem = EncodeBytes(OemCodePage(), SourceString);
    oem.resize(n, 0);
    DestString = AnsiToString(oem);
    // The conversion always loses its last character; hosts were written around that.
    // With nothing converted there is nothing to cut, and that counts as a failure.
    if (n == 0) return false;
    DestString.pop_back();
    return true;
  } catch (const std::exception&) {
    return false;
  }
}

bool clsZKString::IsVarEQ(const Variant& Expression0, const Variant& Expression1) const {
  try {
    if (Expression0.isEmpty()) return Expression1.isEmpty();
    if (Expression0.isNull()) return Expression1.isNull();
    if (Expression0.isString()) {
      return Expression1.isString() && Expression0.asString() == Expression1.asString();
    }
    if (Expression1.isEmpty() || Expression1.isNull()) return false;
    return VariantEquals(Expression0, Expression1, vbBinaryCompare);
  } catch (const std::exception&) {
    return false;
  }
}

Variant clsZKString::StrToVarNull(const Variant& Expression, int32_t TrimLen) const {
  try {
    if (!Expression.isString() || Expression.asString().empty()) return Variant::Null();
    const String& text = Expression.asString();
    if (TrimLen < 1) return Variant(text);
    return Variant(text.substr(0, static_cast<size_t>(TrimLen)));
  } catch (const std::exception&) {
    return Variant::Null();
  }
}

}  // namespace tsruntime
