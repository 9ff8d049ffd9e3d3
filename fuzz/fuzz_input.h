// Turns a fuzzer's bytes into the values the library's entry points take.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <vector>

#include "tsruntime/automation/safearray.h"
#include "tsruntime/automation/string.h"

namespace tsruntime::fuzz {

// The bytes as UTF-16 code units, unpaired surrogates and NULs included: hosts can
// hand the library any code unit sequence.
inline String Utf16(const uint8_t* data, size_t size) {
  String text(size / 2, u'\0');
  if (!text.empty()) std::memcpy(text.data(), data, text.size() * 2);
  return text;
}

// Reads the input front to back; past its end every read gives zeros, so any input
// is a complete program for a target.
class Input {
 public:
  Input(const uint8_t* data, size_t size) : data_(data), size_(size) {}

  bool empty() const { return at_ >= size_; }
  uint8_t Byte() { return at_ < size_ ? data_[at_++] : 0; }
  // A number below `n` (n > 0).
  uint32_t Below(uint32_t n) { return Byte() % n; }
  uint16_t U16() { return static_cast<uint16_t>(Byte() | Byte() << 8); }
  int32_t I32() { return static_cast<int32_t>(U16() | static_cast<uint32_t>(U16()) << 16); }
  int64_t I64() {
    const uint64_t low = static_cast<uint32_t>(I32());
    return static_cast<int64_t>(low | static_cast<uint64_t>(static_cast<uint32_t>(I32())) << 32);
  }
  double F64() { return BitsAs<double>(I64()); }
  float F32() { return BitsAs<float>(I32()); }
  // Up to `max` bytes, their count read first.
  std::vector<uint8_t> Bytes(size_t max) {
    const size_t n = std::min<size_t>(Byte() % (max + 1), size_ - std::min(at_, size_));
    std::vector<uint8_t> out(data_ + at_, data_ + at_ + n);
    at_ += n;
    return out;
  }
  // Up to `max` code units; small alphabets make equal and case-twin texts likely.
  String Text(size_t max) {
    String out;
    const size_t n = Byte() % (max + 1);
    static constexpr char16_t kUnits[] = u"aAbBжЖ0-1. \"\u00A0\xD800\u0130";
    for (size_t i = 0; i < n; ++i) {
      const uint8_t b = Byte();
      out += b < 0xF0 ? kUnits[b % (sizeof kUnits / 2 - 1)] : static_cast<char16_t>(b | U16());
    }
    return out;
  }
  // A bound at either end of the 32-bit range, or near zero.
  int32_t Bound() {
    static constexpr int32_t kBounds[] = {0, 1, -1, 5, INT32_MIN, INT32_MIN + 1, INT32_MAX,
                                          INT32_MAX - 1};
    return Byte() % 2 ? kBounds[Byte() % 8] : static_cast<int8_t>(Byte());
  }

 private:
  template <class T, class Bits>
  static T BitsAs(Bits bits) {
    T value;
    std::memcpy(&value, &bits, sizeof value);
    return value;
  }

  const uint8_t* data_;
  size_t size_;
  size_t at_ = 0;
};

// A Variant of any type the runtime carries, arrays with extreme bounds included;
// `depth` limits nesting.
inline Variant AnyVariant(Input& in, int depth = 2) {
  switch (in.Below(16)) {
    case 0: return Variant();
    case 1: return Variant::Null();
    case 2: return Variant(static_cast<int16_t>(in.U16()));
    case 3: return Variant(in.I32());
    case 4: return Variant(in.F32());
    case 5: return Variant(in.F64());
    case 6: return Variant(Currency::FromRaw(in.I64()));
    case 7: return Variant(Date{in.F64()});
    case 8:
    case 9: return Variant(in.Text(12));
    case 10: return Variant::Missing();
    case 11: return Variant(in.Byte() % 2 == 0);
    case 12: return Variant(in.Byte());
    case 13: return Variant::Nothing();
    default: break;
  }
  // An array: built the ways hosts build them, each of which may refuse the bounds.
  const int32_t lower = in.Bound();
  try {
    switch (in.Below(4)) {
      case 0: return Variant(SafeArray::FromBytes(in.Bytes(8), lower));
      case 1: {
        std::vector<String> items(in.Below(4));
        for (String& s : items) s = in.Text(6);
        return Variant(SafeArray::FromStrings(items, lower));
      }
      case 2: {
        std::vector<Variant> items(depth > 0 ? in.Below(4) : 0);
        for (Variant& v : items) v = AnyVariant(in, depth - 1);
        return Variant(SafeArray::FromVariants(std::move(items), lower));
      }
      default: {
        static constexpr VarType kElements[] = {VarType::kString, VarType::kLong,
                                                VarType::kByte, VarType::kDouble,
                                                VarType::kVariant, VarType::kInteger};
        const VarType element = kElements[in.Below(6)];
        std::vector<Bounds> dims(in.Below(3));  // 0: never dimensioned
        for (Bounds& b : dims) {
          const int64_t upper = std::min<int64_t>(int64_t{lower} + in.Below(4) - 1, INT32_MAX);
          b = {lower, static_cast<int32_t>(std::max<int64_t>(upper, INT32_MIN))};
        }
        if (dims.empty()) return Variant(SafeArray(element));
        return Variant(SafeArray(element, std::move(dims)));
      }
    }
  } catch (const Error&) {
    return Variant(SafeArray(VarType::kVariant));
  }
}

}  // namespace tsruntime::fuzz
