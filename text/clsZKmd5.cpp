#include "tsruntime/clsZKmd5.h"

#include <bit>
#include <string>
#include <vector>

#include "md5_core.h"
#include "tsruntime/automation/codepage.h"

namespace tsruntime {

clsZKmd5::clsZKmd5() : state_(std::make_unique<md5_detail::Md5State>()) {}
clsZKmd5::~clsZKmd5() = default;

String clsZKmd5::Register(int i) const {
  return FromAscii(std::to_string(static_cast<int32_t>(state_->registers[i])));
}
String clsZKmd5::RegisterA() const { return Register(0); }
String clsZKmd5::RegisterB() const { return Register(1); }
String clsZKmd5::RegisterC() const { return Register(2); }
String clsZKmd5::RegisterD() const { return Register(3); }

void clsZKmd5::MD5Init() { state_->Init(); }

void clsZKmd5::MD5Update(int32_t InputLen, const SafeArray& InputBuffer) {
  InputBuffer.RequireElementType(VarType::kByte);
  if (InputBuffer.dimensions() != 1) {
    // Nothing can be read from it; a call that reads nothing still counts.
    state_->Update(InputLen, nullptr, 1, 0);
    return;
  }
  state_->Update(InputLen, InputBuffer.bytes().data(), InputBuffer.lbound(),
                 InputBuffer.ubound());
}

void clsZKmd5::MD5Final() { state_->Final(); }

String clsZKmd5::GetValues() const { return state_->Hex(); }

String clsZKmd5::DigestStrToHexStr(const String& SourceString) {
  state_->Init();
  // Characters are counted in 16 bits on the way to bytes.
  if (SourceString.size() > 32767) RaiseRuntime(RuntimeError::kOverflow);
  std::vector<uint8_t> bytes = StringToAnsi(SourceString);
  const int32_t length = static_cast<int32_t>(bytes.size());
  bytes.push_back(0);  // the array carries one spare element
  state_->Update(length, bytes.data(), 0, length);
  state_->Final();
  return state_->Hex();
}

String clsZKmd5::DigestFileToHexStr(const String& FileName) {
  state_->HashFile(ToUtf8(FileName));
  return state_->Hex();
}

int32_t clsZKmd5::LongLeftRotate(int32_t& value, int32_t& bits) const {
  bits %= 32;
  if (bits <= 0) return value;
  value = static_cast<int32_t>(std::rotl(static_cast<uint32_t>(value), bits));
  return value;
}

TSRUNTIME_DEFINE_CLASS(clsZKmd5) {
  static const ClassInfo info =
      ClassBuilder<clsZKmd5>("clsZKmd5")
          .Help(u"MD5 digests of strings and files as 32 upper-case hexadecimal digits, with the "
                u"padding rules older hosts stored digests by.")
          .Get("RegisterA", &clsZKmd5::RegisterA)
          .Help(u"Register A as signed decimal text (\"1732584193\" after MD5Init).")
          .Get("RegisterB", &clsZKmd5::RegisterB)
          .Help(u"Register B as signed decimal text (\"-271733879\" after MD5Init).")
          .Get("RegisterC", &clsZKmd5::RegisterC)
          .Help(u"Register C as signed decimal text.")
          .Get("RegisterD", &clsZKmd5::RegisterD)
          .Help(u"Register D as signed decimal text.")
          .Method("MD5Init", &clsZKmd5::MD5Init)
          .Help(u"Sets the registers to their initial values and the byte count to 0.")
          .Method("MD5Update", &clsZKmd5::MD5Update,
                  {"InputLen", Typed("InputBuffer", ArrayOf(VarType::kByte))})
          .Help(u"Takes in the first InputLen bytes of the byte array InputBuffer, at most 32,767 "
                u"from a block boundary.")
          .Method("MD5Final", &clsZKmd5::MD5Final)
          .Help(u"Appends the padding and the bit length and transforms the last block.")
          .Method("GetValues", &clsZKmd5::GetValues)
          .Help(u"The digest so far as 32 upper-case hexadecimal digits.")
          .Method("DigestStrToHexStr", &clsZKmd5::DigestStrToHexStr, {"SourceString"})
          .Help(u"The digest of SourceString, one byte per character in the ANSI code page.")
          .Method("DigestFileToHexStr", &clsZKmd5::DigestFileToHexStr, {"FileName"})
          .Help(u"The digest of the bytes of the regular file FileName; errors 53, 76, 70, 75 or "
                u"52 when it cannot be read.")
          .Method("LongLeftRotate", &clsZKmd5::LongLeftRotate, {"value", "bits"})
          .Help(u"Rotates value left by bits Mod 32 when that is positive and returns it; value "
                u"and bits come back as reduced and rotated.")
          .Build();
  return info;
}

}  // namespace tsruntime
