// The record packing and StrToVarNull on any input. ConvCV* read any string and write
// back its trip through the ANSI code page, which reads the same again; a number
// packed by ConvMK* reads back bit for bit. StrToVarNull never raises and gives Null or
// a leading part of the string it was given.
#include <cstdlib>
#include <cstring>

#include "fuzz_input.h"
#include "tsruntime/clsZKString.h"

using namespace tsruntime;

namespace {

template <class T>
bool SameBits(T a, T b) {
  return std::memcmp(&a, &b, sizeof a) == 0;
}

// Reading `text` twice (the second time what the first wrote back) gives the same bits.
template <class Read>
void ReadsTheSameAfterItsWriteBack(const String& text, Read read) {
  String once = text;
  const auto first = read(once);
  String twice = once;
  if (!SameBits(first, read(twice)) || twice != once) std::abort();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  static const Ref<clsZKString> s = New<clsZKString>();
  fuzz::Input in(data, size);
  const String text = in.Text(12);
  ReadsTheSameAfterItsWriteBack(text, [&](String& t) { return s->ConvCVD(t); });
  ReadsTheSameAfterItsWriteBack(text, [&](String& t) { return s->ConvCVI(t); });
  ReadsTheSameAfterItsWriteBack(text, [&](String& t) { return s->ConvCVL(t); });
  ReadsTheSameAfterItsWriteBack(text, [&](String& t) { return s->ConvCVS(t); });

  const double d = in.F64();
  const float f = in.F32();
  const int32_t l = in.I32();
  const auto i = static_cast<int16_t>(in.U16());
  String packed = s->ConvMKD(d);
  if (!SameBits(s->ConvCVD(packed), d)) std::abort();
  packed = s->ConvMKS(f);
  if (!SameBits(s->ConvCVS(packed), f)) std::abort();
  packed = s->ConvMKL(l);
  if (s->ConvCVL(packed) != l) std::abort();
  packed = s->ConvMKI(i);
  if (s->ConvCVI(packed) != i) std::abort();

  const Variant value = fuzz::AnyVariant(in);
  const int32_t trim = in.Byte() % 2 ? in.I32() : static_cast<int8_t>(in.Byte());
  const Variant stored = s->StrToVarNull(value, trim);
  if (stored.isNull()) return 0;
  if (!stored.isString() || !value.isString() || stored.asString().empty() ||
      !value.asString().starts_with(stored.asString())) {
    std::abort();
  }
  return 0;
}
