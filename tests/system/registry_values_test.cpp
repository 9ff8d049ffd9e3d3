// clsZKRegistry values: strings through the ANSI code page and the platform's terminator
// rules, numbers, binary data, type mismatches and the default value.
#include <gtest/gtest.h>

#include "support/outcome.h"
#include "system/registry_support.h"
#include "tsruntime/automation/dispatch.h"
#include "tsruntime/automation/safearray.h"

namespace tsruntime {
namespace {

using namespace std::string_literals;
using testing::Case;
using testing::U8;

constexpr int32_t HKCU = HKEY_CURRENT_USER;
const String kKey = u"Software\\Tessaly\\Values";

// A read's result and whether it reported an error.
std::string Shown(const String& s, bool error) {
  const std::string text = s.size() > 40 ? std::to_string(s.size()) + " characters" : U8(s);
  return "\"" + text + "\"" + (error ? " error" : "");
}
std::string Shown(int32_t n, bool error) { return std::to_string(n) + (error ? " error" : ""); }
std::string Shown(const SafeArray& a, bool error) {
  std::string text = a.isDimensioned()
                         ? std::to_string(a.lbound()) + " to " + std::to_string(a.ubound()) + ":"
                         : "never dimensioned";
  for (uint8_t b : a.bytes()) text += " " + std::to_string(b);
  return text + (error ? " error" : "");
}

class RegistryValues : public testing::RegistryTest {
 protected:
  std::string ReadString(const String& name) {
    bool error = false;
    const String s = reg->GetString(HKCU, kKey, name, u"dflt", &error);
    return Shown(s, error);
  }
  std::string ReadLong(const String& name) {
    bool error = false;
    const int32_t n = reg->GetLong(HKCU, kKey, name, -1, &error);
    return Shown(n, error);
  }
  std::string ReadBinary(const String& name) {
    bool error = false;
    const SafeArray a = reg->GetBinary(HKCU, kKey, name, &error);
    return Shown(a, error);
  }
  std::string WriteThenReadString(const String& name, const String& value) {
    EXPECT_TRUE(reg->SetString(HKCU, kKey, name, value));
    return ReadString(name);
  }
};

TEST_F(RegistryValues, StringsKeepTheTerminatorRulesOfTheAnsiCalls) {
  const Case cases[] = {
      {"a named string reads back as written",
       [&] { return WriteThenReadString(u"Name", u"Привет, мир"); }, "\"Привет, мир\""},
      {"characters the code page lacks come back as question marks",
       [&] { return WriteThenReadString(u"Name", u"日本ё"); }, "\"??ё\""},
      {"a zero at the end is taken for the terminator",
       [&] { return WriteThenReadString(u"Name", u"ab\0"s); }, "\"ab\""},
      {"a zero inside is kept", [&] { return WriteThenReadString(u"Name", u"a\0b"s); },
       "\"a\0b\""s},
      {"an empty named string is stored without bytes and reads as a failure",
       [&] { return WriteThenReadString(u"Name", u""); }, "\"dflt\" error"},
      {"the default value holds the text up to its first zero",
       [&] { return WriteThenReadString(u"", u"ab\0cd"s); }, "\"ab\""},
      {"an empty default value reads back empty", [&] { return WriteThenReadString(u"", u""); },
       "\"\""},
      {"16,383 characters and the terminator fill the buffer exactly",
       [&] { return WriteThenReadString(u"Long", String(16383, u'x')); }, "\"16383 characters\""},
      {"16,384 characters do not fit the buffer",
       [&] { return WriteThenReadString(u"Long", String(16384, u'x')); }, "\"dflt\" error"},
      {"a value name is found in any case, Cyrillic included",
       [&] {
         reg->SetString(HKCU, kKey, u"Ёлка", u"first");
         reg->SetString(HKCU, kKey, u"ёЛКА", u"second");
         return ReadString(u"ЁЛКА");
       },
       "\"second\""},
  };
  for (const Case& c : cases) EXPECT_EQ(c.run(), c.expected) << c.what;
}

TEST_F(RegistryValues, GettersFailOnAnotherTypeAndTheDefaultValueIsReadUntyped) {
  const SafeArray four_bytes = SafeArray::FromBytes(std::vector<uint8_t>{1, 0, 0, 0});
  const Case cases[] = {
      {"a missing key gives the default", [&] { return ReadString(u"Nothing"); }, "\"dflt\" error"},
      {"a number reads back",
       [&] {
         reg->SetLong(HKCU, kKey, u"N", -5);
         return ReadLong(u"N");
       },
       "-5"},
      {"a number read as a string gives the default",
       [&] {
         reg->SetLong(HKCU, kKey, u"N", 5);
         return ReadString(u"N");
       },
       "\"dflt\" error"},
      {"a string read as a number gives the default",
       [&] {
         reg->SetString(HKCU, kKey, u"S", u"5");
         return ReadLong(u"S");
       },
       "-1 error"},
      {"four binary bytes read as a number give the default",
       [&] {
         reg->SetBinary(HKCU, kKey, u"B", four_bytes);
         return ReadLong(u"B");
       },
       "-1 error"},
      {"a number read as binary gives a never-dimensioned array",
       [&] {
         reg->SetLong(HKCU, kKey, u"N", 5);
         return ReadBinary(u"N");
       },
       "never dimensioned error"},
      {"a string read as binary gives a never-dimensioned array",
       [&] {
         reg->SetString(HKCU, kKey, u"S", u"5");
         return ReadBinary(u"S");
       },
       "never dimensioned error"},
      {"a key without a default value reads it as an empty string",
       [&] {
         reg->CreateSubKey(HKCU, kKey);
         return ReadString(u"");
       },
       "\"\""},
      {"a number in the default value reads as a string of its bytes",
       [&] {
         reg->SetLong(HKCU, kKey, u"", 0x00636261);
         return ReadString(u"");
       },
       "\"abc\""},
      {"the default value reads as a number through the empty name",
       [&] {
         reg->SetLong(HKCU, kKey, u"", 7);
         return ReadLong(u"");
       },
       "7"},
  };
  for (const Case& c : cases) EXPECT_EQ(c.run(), c.expected) << c.what;
}

TEST_F(RegistryValues, BinaryValuesKeepEveryByteAndAnEmptyOneReadsAsAFailure) {
  std::vector<uint8_t> all(256);
  for (int i = 0; i < 256; ++i) all[i] = static_cast<uint8_t>(i);
  EXPECT_TRUE(reg->SetBinary(HKCU, kKey, u"All", SafeArray::FromBytes(all, 5)));
  bool error = true;
  const SafeArray back = reg->GetBinary(HKCU, kKey, u"All", &error);
  EXPECT_FALSE(error);
  EXPECT_EQ(back.lbound(), 0) << "the bounds are 0 to size - 1 whatever the written ones were";
  EXPECT_EQ(back.bytes(), all);

  const Case cases[] = {
      {"an array of no elements writes a value of no bytes, which reads as a failure",
       [&] {
         EXPECT_TRUE(
             reg->SetBinary(HKCU, kKey, u"Empty", SafeArray(VarType::kByte, {Bounds{0, -1}})));
         return ReadBinary(u"Empty");
       },
       "never dimensioned error"},
      {"a never-dimensioned array writes a value of no bytes too",
       [&] {
         EXPECT_TRUE(reg->SetBinary(HKCU, kKey, u"Empty", SafeArray(VarType::kByte)));
         return ReadString(u"Empty");
       },
       "\"dflt\" error"},
      {"an array of another element type is a type mismatch",
       [&] {
         return testing::Outcome([&] {
           reg->SetBinary(HKCU, kKey, u"V", SafeArray::FromVariants({Variant(int32_t{1})}));
         });
       },
       "error 13"},
  };
  for (const Case& c : cases) EXPECT_EQ(c.run(), c.expected) << c.what;
  const MemberInfo* get = FindClass(u"clsZKRegistry")->find(u"GetBinary", MemberKind::kMethod);
  EXPECT_EQ(U8(TypeName(get->returnType)), "Byte()") << "what the type information declares";
}

}  // namespace
}  // namespace tsruntime
