// clsZKmd5's digests of strings and files against md5sum and against the final blocks
// the class's padding and file reader lay out.
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <string>
#include <vector>

#include "text/md5_reference.h"
#include "tsruntime/automation/codepage.h"
#include "tsruntime/clsZKmd5.h"

namespace tsruntime {
namespace {

using namespace testing;

std::string DigestOfString(const Bytes& bytes) {
  return ToUtf8(New<clsZKmd5>()->DigestStrToHexStr(AnsiToString(bytes)));
}
std::string DigestOfFile(const std::string& file) {
  return ToUtf8(New<clsZKmd5>()->DigestFileToHexStr(FromUtf8(file)));
}

// Lengths whose padding differs from RFC 1321.
bool PaddedOwnWay(size_t n) { return n % 64 == 56 || (n >= 64 && n % 64 > 56); }

// What the class hashes last for such a length: the last 56 bytes of the message when
// it is 56 mod 64, else the first 56 of the final partial block; then the length.
std::string OwnPaddingDigest(const Bytes& message) {
  const size_t tail = message.size() % 64;
  const auto from = message.end() - static_cast<long>(tail);
  return DigestOfBlocks(BlocksEndingWith(message, Bytes(from, from + 56)));
}

TEST(Md5Reference, AgreesWithMd5sum) {
  // The test's own compression must be right before it judges anything.
  TempFolder folder;
  for (size_t n : {0, 1, 55, 56, 63, 64, 65, 119, 120, 200}) {
    const Bytes m = Pattern(n, 9);
    EXPECT_EQ(DigestOfBlocks(RfcBlocks(m)), Md5sum(folder, m)) << n << " bytes";
  }
}

TEST(Md5Digests, KnownTextsGiveTheirRfcDigests) {
  auto md5 = New<clsZKmd5>();
  EXPECT_EQ(md5->DigestStrToHexStr(u""), u"D41D8CD98F00B204E9800998ECF8427E");
  EXPECT_EQ(md5->DigestStrToHexStr(u"abc"), u"900150983CD24FB0D6963F7D28E17F72");
  EXPECT_EQ(md5->GetValues(), u"900150983CD24FB0D6963F7D28E17F72");
}

TEST(Md5Digests, StringsUpTo200BytesMatchMd5sumOrTheClassesPadding) {
  TempFolder folder;
  std::vector<Bytes> messages;
  std::vector<std::string> files;
  for (size_t n = 0; n <= 200; ++n) {
    messages.push_back(Pattern(n, static_cast<uint32_t>(n)));
    files.push_back(folder.Write("s" + std::to_string(n), messages.back()));
  }
  const std::vector<std::string> rfc = Md5sumOfFiles(files);
  for (size_t n = 0; n <= 200; ++n) {
    const std::string got = DigestOfString(messages[n]);
    if (PaddedOwnWay(n)) {
      EXPECT_EQ(got, OwnPaddingDigest(messages[n])) << n << " bytes";
      EXPECT_NE(got, rfc[n]) << n << " bytes: must differ from RFC 1321";
    } else {
      EXPECT_EQ(got, rfc[n]) << n << " bytes";
    }
  }
}

TEST(Md5Digests, FilesUpTo200BytesMatchMd5sumOrTheReadersRules) {
  TempFolder folder;
  std::vector<Bytes> messages;
  std::vector<std::string> files, hashed;
  for (size_t n = 0; n <= 200; ++n) {
    messages.push_back(Pattern(n, static_cast<uint32_t>(n) + 500));
    files.push_back(folder.Write("f" + std::to_string(n), messages.back()));
    // The last whole record of a file is never hashed: the digest is that of the rest.
    const Bytes& m = messages.back();
    const Bytes counted = n > 0 && n % 64 == 0 ? Bytes(m.begin(), m.end() - 64) : m;
    hashed.push_back(folder.Write("h" + std::to_string(n), counted));
  }
  const std::vector<std::string> rfc = Md5sumOfFiles(hashed);
  for (size_t n = 0; n <= 200; ++n) {
    const std::string expected = PaddedOwnWay(n) ? OwnPaddingDigest(messages[n]) : rfc[n];
    EXPECT_EQ(DigestOfFile(files[n]), expected) << n << " bytes";
  }
}

TEST(Md5Digests, LargeFilesAcrossTheReadChunksFollowTheSameRules) {
  TempFolder folder;
  const size_t mib = size_t{1} << 20;
  for (size_t n : {mib - 1, mib, mib + 1, mib + 56, mib + 60, mib + 64, 3 * mib + 13,
                   2 * mib - 64}) {
    const Bytes m = Pattern(n, static_cast<uint32_t>(n));
    const std::string file = folder.Write("big", m);
    std::string expected;
    if (n % 64 == 0) {
      expected = Md5sum(folder, Bytes(m.begin(), m.end() - 64));
    } else if (PaddedOwnWay(n)) {
      expected = OwnPaddingDigest(m);
    } else {
      expected = Md5sumOfFile(file);
    }
    EXPECT_EQ(DigestOfFile(file), expected) << n << " bytes";
  }
}

TEST(Md5Digests, CharactersGoThroughTheAnsiCodePage) {
  TempFolder folder;
  auto md5 = New<clsZKmd5>();
  // 1251: 'П' is 0xCF, 'р' 0xF0, '€' 0x88; a character 1251 lacks becomes '?'.
  EXPECT_EQ(ToUtf8(md5->DigestStrToHexStr(u"При€")),
            Md5sum(folder, Bytes{0xCF, 0xF0, 0xE8, 0x88}));
  EXPECT_EQ(md5->DigestStrToHexStr(u"中"), md5->DigestStrToHexStr(u"?"));
}

TEST(Md5Limits, StringsStopAt32767Characters) {
  TempFolder folder;
  auto md5 = New<clsZKmd5>();
  const Bytes longest = Pattern(32767, 2);  // 63 mod 64: the class's own padding
  EXPECT_EQ(ToUtf8(md5->DigestStrToHexStr(AnsiToString(longest))), OwnPaddingDigest(longest));
  try {
    md5->DigestStrToHexStr(String(32768, u'a'));
    ADD_FAILURE() << "32,768 characters must overflow";
  } catch (const Error& e) {
    EXPECT_EQ(e.number(), static_cast<int32_t>(RuntimeError::kOverflow));
  }
}

TEST(Md5Limits, FilesPastTheBitLengthOverflowWithoutBeingRead) {
  TempFolder folder;
  const int64_t limit = int64_t{1} << 28;
  // 2^28 + 64 is a multiple of 64: 2^28 bytes counted, one too many.
  for (int64_t size : {limit + 1, limit + 64, int64_t{1} << 30}) {
    const std::string file = folder.Write("sparse", {});
    ASSERT_EQ(::truncate(file.c_str(), size), 0);
    try {
      DigestOfFile(file);
      ADD_FAILURE() << size << " bytes must overflow";
    } catch (const Error& e) {
      EXPECT_EQ(e.number(), static_cast<int32_t>(RuntimeError::kOverflow)) << size << " bytes";
    }
  }
}

TEST(Md5Limits, TheLongestFileStillGetsADigest) {
#ifndef NDEBUG
  GTEST_SKIP() << "hashes 256 MiB; the optimised build runs it";
#endif
  // Exactly 2^28 bytes is a multiple of 64: its last record is not counted, so it fits.
  TempFolder folder;
  const int64_t limit = int64_t{1} << 28;
  const std::string file = folder.Write("longest", {});
  const std::string counted = folder.Write("counted", {});
  ASSERT_EQ(::truncate(file.c_str(), limit), 0);
  ASSERT_EQ(::truncate(counted.c_str(), limit - 64), 0);
  EXPECT_EQ(DigestOfFile(file), Md5sumOfFile(counted));
}

TEST(Md5Limits, UnreadableFilesRaiseTheRuntimesFileErrors) {
  TempFolder folder;
  const struct {
    const char* what;
    std::string path;
    RuntimeError error;
  } cases[] = {
      {"a missing file", folder.Path("missing"), RuntimeError::kFileNotFound},
      {"a file in a missing folder", folder.Path("nowhere/file"), RuntimeError::kPathNotFound},
      {"a folder", folder.Path(""), RuntimeError::kPathFileAccessError},
      {"a name with a NUL in it", folder.Write("named", Pattern(3)) + std::string(1, '\0') + "x",
       RuntimeError::kBadFileNameOrNumber},
  };
  for (const auto& c : cases) {
    try {
      DigestOfFile(c.path);
      ADD_FAILURE() << c.what << ": no error";
    } catch (const Error& e) {
      EXPECT_EQ(e.number(), static_cast<int32_t>(c.error)) << c.what;
    }
  }
  if (::geteuid() != 0) {  // root reads anything
    const std::string locked = folder.Write("locked", Pattern(10));
    ::chmod(locked.c_str(), 0);
    try {
      DigestOfFile(locked);
      ADD_FAILURE() << "an unreadable file: no error";
    } catch (const Error& e) {
      EXPECT_EQ(e.number(), static_cast<int32_t>(RuntimeError::kPermissionDenied));
    }
  }
}

}  // namespace
}  // namespace tsruntime
