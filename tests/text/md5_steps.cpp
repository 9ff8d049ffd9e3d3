// clsZKmd5's incremental steps, registers and rotation, early and late bound.
#include <gtest/gtest.h>

#include <climits>
#include <functional>
#include <string>
#include <vector>

#include "text/md5_reference.h"
#include "tsruntime/clsZKmd5.h"

namespace tsruntime {
namespace {

using namespace testing;

SafeArray ByteArray(const Bytes& bytes) { return SafeArray::FromBytes(bytes); }

Bytes Slice(const Bytes& b, size_t from, size_t n) {
  return Bytes(b.begin() + static_cast<long>(from), b.begin() + static_cast<long>(from + n));
}
Bytes Join(Bytes a, const Bytes& b) {
  a.insert(a.end(), b.begin(), b.end());
  return a;
}

void ExpectError(const std::function<void()>& action, RuntimeError error, const char* what) {
  try {
    action();
    ADD_FAILURE() << what << ": no error";
  } catch (const Error& e) {
    EXPECT_EQ(e.number(), static_cast<int32_t>(error)) << what;
  }
}

TEST(Md5Registers, ShowTheInitialValuesAsSignedDecimals) {
  auto md5 = New<clsZKmd5>();
  md5->MD5Init();
  EXPECT_EQ(md5->RegisterA(), u"1732584193");
  EXPECT_EQ(md5->RegisterB(), u"-271733879");
  EXPECT_EQ(md5->RegisterC(), u"-1732584194");
  EXPECT_EQ(md5->RegisterD(), u"271733878");
  md5->MD5Final();
  EXPECT_EQ(md5->GetValues(), u"D41D8CD98F00B204E9800998ECF8427E");
  EXPECT_EQ(md5->RegisterA(), u"-645128748") << "0xD98C1DD4, the first digest word";
}

TEST(Md5Update, PiecesStartingOnBlockBoundariesGiveTheRfcDigest) {
  TempFolder folder;
  const Bytes m = Pattern(64 * 3 + 20, 5);
  auto md5 = New<clsZKmd5>();
  md5->MD5Init();
  md5->MD5Update(64, ByteArray(Slice(m, 0, 64)));
  md5->MD5Update(128, ByteArray(Slice(m, 64, 128)));
  md5->MD5Update(20, ByteArray(Join(Slice(m, 192, 20), Pattern(30))));  // only 20 taken
  md5->MD5Final();
  EXPECT_EQ(ToUtf8(md5->GetValues()), Md5sum(folder, m));
}

TEST(Md5Update, FromInsideABlockTheLoopBoundDecidesWhatIsHashed) {
  const Bytes first = Pattern(40, 1), second = Pattern(100, 2);
  {
    // 40 bytes in, then 70: partLen 24, the bound lets a block start at 24 although it
    // runs to 87, past the 70 bytes given. The array is long enough, so those bytes are
    // hashed; what stays for the final block is second[24..69].
    auto md5 = New<clsZKmd5>();
    md5->MD5Init();
    md5->MD5Update(40, ByteArray(first));
    md5->MD5Update(70, ByteArray(second));
    md5->MD5Final();
    Bytes blocks = Join(first, Slice(second, 0, 24));
    blocks = Join(blocks, Slice(second, 24, 64));
    Bytes last = Slice(second, 24, 46);
    last.push_back(0x80);
    last.resize(56, 0);
    blocks = Join(blocks, last);
    AppendBitLength(blocks, 110);
    EXPECT_EQ(ToUtf8(md5->GetValues()), DigestOfBlocks(blocks));
  }
  {
    // 10 bytes in, then 118: no whole block is taken after the first, and the 64 bytes
    // left fill the buffer without being hashed; the padding then overwrites them.
    auto md5 = New<clsZKmd5>();
    md5->MD5Init();
    md5->MD5Update(10, ByteArray(first));
    const Bytes taken = Pattern(118, 2);
    md5->MD5Update(118, ByteArray(taken));
    md5->MD5Final();
    Bytes blocks = Join(Slice(first, 0, 10), Slice(taken, 0, 54));
    Bytes last{0x80};
    last.resize(56, 0);
    blocks = Join(blocks, last);
    AppendBitLength(blocks, 128);
    EXPECT_EQ(ToUtf8(md5->GetValues()), DigestOfBlocks(blocks));
  }
}

TEST(Md5Update, RaisesWithoutTakingAnythingIn) {
  TempFolder folder;
  const struct {
    const char* what;
    int32_t before;  // bytes taken in first
    int32_t length;
    size_t array_size;
    RuntimeError error;
  } cases[] = {
      {"the block running past a short array", 40, 70, 70, RuntimeError::kSubscriptOutOfRange},
      {"more left over than the buffer holds", 10, 120, 120,
       RuntimeError::kSubscriptOutOfRange},
      {"a length beyond the array", 0, 10, 5, RuntimeError::kSubscriptOutOfRange},
      {"32,768 bytes from a block boundary", 0, 32768, 32768, RuntimeError::kOverflow},
      {"40,000 bytes from inside a block", 1, 40000, 40000, RuntimeError::kOverflow},
  };
  for (const auto& c : cases) {
    const Bytes start = Pattern(static_cast<size_t>(c.before), 3);
    auto md5 = New<clsZKmd5>();
    md5->MD5Init();
    md5->MD5Update(c.before, ByteArray(start));
    ExpectError([&] { md5->MD5Update(c.length, ByteArray(Pattern(c.array_size, 4))); },
                c.error, c.what);
    md5->MD5Final();
    EXPECT_EQ(ToUtf8(md5->GetValues()), Md5sum(folder, start)) << c.what << ": state changed";
  }
}

TEST(Md5Update, TakesUpTo32767BytesFromABlockBoundary) {
  const Bytes m = Pattern(32767, 6);
  auto md5 = New<clsZKmd5>();
  md5->MD5Init();
  md5->MD5Update(32767, ByteArray(m));
  md5->MD5Final();
  const auto tail = m.end() - 63;  // 32,767 is 63 mod 64: the class's own final block
  EXPECT_EQ(ToUtf8(md5->GetValues()), DigestOfBlocks(BlocksEndingWith(m, Bytes(tail, tail + 56))));
}

TEST(Md5Update, ANegativeLengthOnlyLowersTheCount) {
  TempFolder folder;
  const Bytes m = Pattern(30, 8);
  auto md5 = New<clsZKmd5>();
  md5->MD5Init();
  md5->MD5Update(30, ByteArray(m));
  md5->MD5Update(-10, ByteArray(m));
  md5->MD5Final();
  // 20 counted, 30 in the buffer: padding from position 20 overwrites the last ten.
  EXPECT_EQ(ToUtf8(md5->GetValues()), Md5sum(folder, Slice(m, 0, 20)));

  md5->MD5Init();
  md5->MD5Update(-3, ByteArray(m));
  ExpectError([&] { md5->MD5Final(); }, RuntimeError::kSubscriptOutOfRange,
              "padding at a negative position");
  md5->MD5Init();
  md5->MD5Update(-64, ByteArray(m));
  ExpectError([&] { md5->MD5Final(); }, RuntimeError::kOverflow, "a negative bit length");
}

TEST(Md5Update, RejectsArraysThatAreNotBytes) {
  auto md5 = New<clsZKmd5>();
  md5->MD5Init();
  ExpectError([&] { md5->MD5Update(1, SafeArray::FromStrings({u"a"})); },
              RuntimeError::kTypeMismatch, "a string array");
  md5->MD5Update(0, SafeArray(VarType::kByte));  // nothing to read: nothing happens
  ExpectError([&] { md5->MD5Update(1, SafeArray(VarType::kByte)); },
              RuntimeError::kSubscriptOutOfRange, "a never-dimensioned array");
}

TEST(Md5Rotate, ReducesBitsAndRotatesOneBitAtATime) {
  const struct {
    int32_t value, bits;
    int32_t result, value_after, bits_after;
  } cases[] = {
      {1, 33, 2, 2, 1},
      {5, -1, 5, 5, -1},
      {5, -33, 5, 5, -1},
      {7, 0, 7, 7, 0},
      {7, 32, 7, 7, 0},
      {1, 31, INT_MIN, INT_MIN, 31},
      {INT_MIN, 1, 1, 1, 1},
      {0x12345678, 4, 0x23456781, 0x23456781, 4},
      {-2, 1, -3, -3, 1},
  };
  auto md5 = New<clsZKmd5>();
  for (const auto& c : cases) {
    int32_t value = c.value, bits = c.bits;
    EXPECT_EQ(md5->LongLeftRotate(value, bits), c.result) << c.value << " by " << c.bits;
    EXPECT_EQ(value, c.value_after) << c.value << " by " << c.bits;
    EXPECT_EQ(bits, c.bits_after) << c.value << " by " << c.bits;
  }
}

TEST(Md5LateBound, WritesBackRotateArgumentsAndDigestsByName) {
  Ref<Object> md5 = CreateObject(u"TSRuntimeLib.clsZKmd5");
  std::vector<Argument> rotate{{u"", Variant(int32_t{1})}, {u"", Variant(int16_t{33})}};
  EXPECT_EQ(Invoke(*md5, u"LongLeftRotate", InvokeKind::kCall, rotate), Variant(int32_t{2}));
  EXPECT_EQ(rotate[0].value, Variant(int32_t{2}));
  EXPECT_EQ(rotate[1].value, Variant(int32_t{1}));

  std::vector<Argument> none;
  Invoke(*md5, u"MD5Init", InvokeKind::kCall, none);
  std::vector<Argument> update{{u"InputLen", Variant(int32_t{3})},
                               {u"InputBuffer", Variant(ByteArray({'a', 'b', 'c', 'd'}))}};
  Invoke(*md5, u"MD5Update", InvokeKind::kCall, update);
  Invoke(*md5, u"MD5Final", InvokeKind::kCall, none);
  EXPECT_EQ(Invoke(*md5, u"GetValues", InvokeKind::kCall, none),
            Variant(u"900150983CD24FB0D6963F7D28E17F72"));
  std::vector<Argument> text{{u"SourceString", Variant(u"")}};
  EXPECT_EQ(Invoke(*md5, u"DigestStrToHexStr", InvokeKind::kCall, text),
            Variant(u"D41D8CD98F00B204E9800998ECF8427E"));
  // Digest bytes 5 to 8 (8F 00 B2 04) are register B, least significant first.
  EXPECT_EQ(Invoke(*md5, u"RegisterB", InvokeKind::kCall, none), Variant(u"78774415"));
}

}  // namespace
}  // namespace tsruntime
