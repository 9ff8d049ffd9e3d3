// clsZKmd5: digests of strings and files against md5sum and against the final blocks the
// class's padding and file reader lay out; the incremental steps, registers and rotation.
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <bit>
#include <climits>
#include <cmath>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <future>
#include <numeric>
#include <tuple>

#include "text/text_test_util.h"
#include "tsruntime/automation/codepage.h"
#include "tsruntime/clsZKmd5.h"

namespace tsruntime {
namespace {

using Bytes = std::vector<uint8_t>;
using testing::ExpectRuntimeError;

// Deterministic bytes covering all 256 values.
Bytes Pattern(size_t n, uint32_t seed) {
  Bytes out(n);
  uint32_t x = seed * 2654435761u + 1;
  for (uint8_t& b : out) b = static_cast<uint8_t>((x = x * 1103515245u + 12345u) >> 16);
  return out;
}

// The digest of whole 64-byte `blocks` compressed from the initial registers, written from
// RFC 1321 so that a test can lay out the final block itself.
std::string DigestOfBlocks(const Bytes& blocks) {
  static const int kShifts[4][4] = {{7, 12, 17, 22}, {5, 9, 14, 20}, {4, 11, 16, 23},
                                    {6, 10, 15, 21}};
  uint32_t h[4] = {0x67452301u, 0xEFCDAB89u, 0x98BADCFEu, 0x10325476u};
  for (size_t at = 0; at + 64 <= blocks.size(); at += 64) {
    uint32_t m[16] = {}, a = h[0], b = h[1], c = h[2], d = h[3];
    for (int i = 0; i < 64; ++i) m[i / 4] |= uint32_t{blocks[at + i]} << (8 * (i % 4));
    for (int i = 0; i < 64; ++i) {
      const int r = i / 16, g[] = {i, (5 * i + 1) % 16, (3 * i + 5) % 16, 7 * i % 16};
      const uint32_t f[] = {(b & c) | (~b & d), (d & b) | (~d & c), b ^ c ^ d, c ^ (b | ~d)};
      const auto k = static_cast<uint32_t>(std::floor(std::fabs(std::sin(i + 1.0)) * 0x1p32));
      const uint32_t next = b + std::rotl(a + f[r] + k + m[g[r]], kShifts[r][i % 4]);
      a = d, d = c, c = b, b = next;
    }
    h[0] += a, h[1] += b, h[2] += c, h[3] += d;
  }
  char hex[33];
  for (int i = 0; i < 16; ++i) {
    std::snprintf(hex + 2 * i, 3, "%02X", (h[i / 4] >> (8 * (i % 4))) & 0xFF);
  }
  return hex;
}

// `blocks`, then `length` in bits as the final 8 bytes.
Bytes WithLength(Bytes blocks, size_t length) {
  for (int i = 0; i < 8; ++i) blocks.push_back(static_cast<uint8_t>((length * 8) >> (8 * i)));
  return blocks;
}

// Lengths padded unlike RFC 1321: 56 mod 64 gets no 0x80 byte; from 64 bytes on, 57 to 63
// mod 64 get no padding, and the length overwrites the final block's bytes 56 to 63.
bool OwnPadding(size_t n) { return n % 64 == 56 || (n >= 64 && n % 64 > 56); }

// `message` padded as the class pads it.
Bytes Padded(Bytes message) {
  const size_t n = message.size();
  if (!OwnPadding(n)) message.push_back(0x80);
  message.resize(OwnPadding(n) ? n / 64 * 64 + 56 : (n + 8) / 64 * 64 + 56);
  return WithLength(message, n);
}

class Md5 : public ::testing::Test {
 protected:
  ~Md5() override { std::filesystem::remove(file_); }

  // Writes `bytes` to the test's file and returns md5sum's digest of it, in upper case.
  std::string Md5sum(const Bytes& bytes) {
    std::ofstream(file_, std::ios::binary).write(reinterpret_cast<const char*>(bytes.data()),
                                                 static_cast<std::streamsize>(bytes.size()));
    FILE* p = ::popen(("md5sum '" + file_ + "'").c_str(), "r");
    std::string hex(32, ' ');
    EXPECT_TRUE(p && std::fread(hex.data(), 1, 32, p) == 32) << "md5sum of " << file_;
    if (p) ::pclose(p);
    for (char& c : hex) c = static_cast<char>(std::toupper(c));
    return hex;
  }
  std::string DigestOfFile(const std::string& file) {
    return ToUtf8(New<clsZKmd5>()->DigestFileToHexStr(FromUtf8(file)));
  }

  const std::string file_ = std::filesystem::temp_directory_path() /
                            ("tsruntime-md5-" + std::to_string(::getpid()));
};

TEST_F(Md5, StringsAndFilesMatchMd5sumOrTheClassesOwnPadding) {
  std::vector<size_t> lengths(201);  // 0 to 200, and files across the reader's 1 MiB chunks
  std::iota(lengths.begin(), lengths.end(), size_t{0});
  lengths.insert(lengths.end(), {(1 << 20) + 56, (1 << 20) + 60, (2 << 20) - 64, (3 << 20) + 13});
  auto md5 = New<clsZKmd5>();
  for (size_t n : lengths) {
    const Bytes m = Pattern(n, n);
    const std::string expected = DigestOfBlocks(Padded(m));
    // The reference agrees with md5sum exactly where the class pads as RFC 1321 does.
    EXPECT_EQ(expected == Md5sum(m), !OwnPadding(n)) << n << " bytes: the padding rule";
    if (n <= 200) {
      EXPECT_EQ(ToUtf8(md5->DigestStrToHexStr(AnsiToString(m))), expected) << n << " bytes";
    }
    // A file's last whole record is never hashed: the digest is that of the rest.
    EXPECT_EQ(DigestOfFile(file_),
              n > 0 && n % 64 == 0 ? DigestOfBlocks(Padded({m.begin(), m.end() - 64})) : expected)
        << n << "-byte file";
  }
  // Text goes through the ANSI code page, up to 32,767 characters. 1251: 'П' is 0xCF, 'р' 0xF0, '€' 0x88; a character 1251 lacks becomes '?'.
  EXPECT_EQ(ToUtf8(md5->DigestStrToHexStr(u"При€")), Md5sum(Bytes{0xCF, 0xF0, 0xE8, 0x88}));
  EXPECT_EQ(md5->DigestStrToHexStr(u"中"), md5->DigestStrToHexStr(u"?"));
  EXPECT_EQ(md5->DigestStrToHexStr(String(32767, u'a')).size(), 32u) << "the longest text";
  ExpectRuntimeError([&] { md5->DigestStrToHexStr(String(32768, u'a')); },
                     RuntimeError::kOverflow, "32,768 characters");
}

// Only regular files are read. A FIFO with no writer and a device are refused at once,
// never waited on nor read on and on; a folder and a missing file keep their own errors.
TEST_F(Md5, FilesThatAreMissingOrNotRegularAreRefusedWithoutWaiting) {
  const std::string fifo = file_ + ".fifo";
  std::filesystem::remove(fifo);  // left by a run that was killed
  ASSERT_EQ(::mkfifo(fifo.c_str(), 0600), 0);
  const struct { const char* what; std::string path; RuntimeError error; } cases[] = {
      {"a FIFO with no writer", fifo, RuntimeError::kBadFileNameOrNumber},
      {"a device without end", "/dev/zero", RuntimeError::kBadFileNameOrNumber},
      {"a folder", std::filesystem::temp_directory_path(), RuntimeError::kPathFileAccessError},
      {"a missing file", file_ + ".missing", RuntimeError::kFileNotFound}};
  for (const auto& c : cases) {
    auto digest = std::async(std::launch::async, [&] {
      ExpectRuntimeError([&] { DigestOfFile(c.path); }, c.error, c.what);
    });
    if (digest.wait_for(std::chrono::seconds(10)) == std::future_status::timeout) {
      ADD_FAILURE() << c.what << ": still waiting after 10 s";
      const int writer = ::open(fifo.c_str(), O_WRONLY | O_NONBLOCK);  // lets a blocked open go
      if (writer >= 0) ::close(writer);
    }
    digest.get();
  }
  std::filesystem::remove(fifo);
}

TEST_F(Md5, UpdateTakesBytesAsItsLoopBoundSays) {
  const Bytes m = Pattern(212, 5), first = Pattern(40, 1), second = Pattern(100, 2);
  auto md5 = New<clsZKmd5>();
  md5->MD5Init();
  EXPECT_EQ(md5->RegisterB(), u"-271733879");
  md5->MD5Update(64, SafeArray::FromBytes(m));  // the first 64 of 212 bytes
  md5->MD5Update(148, SafeArray::FromBytes({m.data() + 64, 148}));
  md5->MD5Final();
  EXPECT_EQ(ToUtf8(md5->GetValues()), Md5sum(m)) << "pieces starting on block boundaries";

  // 40 bytes in, then 70: partLen 24, and the loop bound lets a block start at 24 though it
  // runs to 87, past the 70 given; the bytes are there, so they are hashed, and
  // second[24..69] stays for the final block. Without them the array is too short.
  md5->MD5Init();
  md5->MD5Update(40, SafeArray::FromBytes(first));
  ExpectRuntimeError([&] { md5->MD5Update(70, SafeArray::FromBytes({second.data(), 70})); },
                     RuntimeError::kSubscriptOutOfRange, "a block past the array");
  md5->MD5Update(70, SafeArray::FromBytes(second));
  md5->MD5Final();
  Bytes blocks = first;
  blocks.insert(blocks.end(), second.begin(), second.begin() + 88);
  blocks.insert(blocks.end(), second.begin() + 24, second.begin() + 70);
  blocks.push_back(0x80);
  blocks.resize(2 * 64 + 56);
  EXPECT_EQ(ToUtf8(md5->GetValues()), DigestOfBlocks(WithLength(blocks, 110)));

  ExpectRuntimeError([&] { md5->MD5Update(32768, SafeArray::FromBytes(Pattern(32768, 4))); },
                     RuntimeError::kOverflow, "32,768 bytes in one call");
}

TEST(Md5Rotate, ReducesBitsAndRotatesWritingBothBack) {
  const struct { int32_t value, bits, result, bits_after; } cases[] = {
      {1, 33, 2, 1},      {5, -1, 5, -1},       {5, -33, 5, -1},   {7, 32, 7, 0},
      {1, 31, INT_MIN, 31}, {INT_MIN, 1, 1, 1}, {0x12345678, 4, 0x23456781, 4}};
  auto md5 = New<clsZKmd5>();
  for (const auto& c : cases) {
    int32_t value = c.value, bits = c.bits;
    const int32_t result = md5->LongLeftRotate(value, bits);
    EXPECT_EQ(std::tuple(result, value, bits), std::tuple(c.result, c.result, c.bits_after))
        << c.value << " by " << c.bits << ": the result, and value and bits written back";
  }
}

}  // namespace
}  // namespace tsruntime
