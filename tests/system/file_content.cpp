// Whole-file reading and writing: bytes, ANSI text, write modes, and what a replaced
// file keeps (permissions, links) and never loses (the old content on a failed write).
#include <signal.h>
#include <sys/resource.h>
#include <sys/wait.h>

#include <optional>

#include "system/fs_fixture.h"

namespace tsruntime::testing {
namespace {

using FileContent = FsTest;

TEST_F(FileContent, IsFileExistsTrueOnlyForWhatOpensAsAFile) {
  Put("empty", "");
  Put("Отчёт за май.txt", "x");
  MakeFolder("folder");
  Link("to-file", Native("empty"));
  Link("dangling", Native("none"));
  Link("to-folder", Native("folder"));
  for (const std::string& name : Names{"empty", "Отчёт за май.txt", "to-file"}) {
    EXPECT_TRUE(fs_->IsFileExists(Path(name))) << name;
  }
  for (const std::string& name :
       Names{"none", "folder", "to-folder", "dangling", "empty/", std::string("empty\0", 6)}) {
    EXPECT_FALSE(fs_->IsFileExists(Path(name))) << name;
  }
  EXPECT_FALSE(fs_->IsFileExists(u""));
}

TEST_F(FileContent, TextIsOneAnsiByteACharacterWithNothingAdded) {
  ASSERT_TRUE(fs_->StringWrite(u"Ёлка\r\n€漢\x01я", Path("Новый файл.ini")));
  EXPECT_EQ(Get("Новый файл.ini"), "\xA8\xEB\xEA\xE0\r\n\x88?\x01\xFF")
      << "1251 bytes, no byte-order mark, no line break added, '?' for what 1251 lacks";
  Put("empty.txt", "");
  MakeFolder("folder");
  const struct {
    const char* what;
    std::string name;
    bool ok;
    String text;
  } rows[] = {
      {"what was written reads back", "Новый файл.ini", true, u"Ёлка\r\n€?\x01я"},
      {"an empty file reads as empty text", "empty.txt", true, u""},
      {"a missing file fails, the buffer left alone", "none.txt", false, u"before"},
      {"a folder fails, the buffer left alone", "folder", false, u"before"},
  };
  for (const auto& r : rows) {
    String buffer = u"before";
    EXPECT_EQ(fs_->StringRead(buffer, Path(r.name)), r.ok) << r.what;
    EXPECT_EQ(buffer, r.text) << r.what;
    EXPECT_EQ(fs_->StringReadAsString(Variant(Path(r.name))), r.ok ? r.text : u"") << r.what;
  }
  EXPECT_EQ(fs_->StringReadAsString(Variant::Null()), u"") << "Null is no file name";
}

TEST_F(FileContent, BinaryReadGivesBoundsZeroToLengthLessOne) {
  Put("bytes.bin", std::string("\0\x01\xFF", 3));
  Put("empty.bin", "");
  MakeFolder("folder");
  for (const std::string name : {"bytes.bin", "empty.bin", "none.bin", "folder"}) {
    SafeArray buffer = ByteArray("keep");
    const bool ok = fs_->BinaryRead(Path(name), buffer);
    EXPECT_EQ(ok, name == "bytes.bin") << name << ": an empty file has no array to fill";
    EXPECT_EQ(Text(buffer.bytes()), ok ? std::string("\0\x01\xFF", 3) : "keep") << name;
    EXPECT_EQ(buffer.ubound(), ok ? 2 : 3) << name;
  }
  SafeArray strings(VarType::kString);
  EXPECT_EQ(Outcome([&] { return fs_->BinaryRead(Path("bytes.bin"), strings) ? "T" : "F"; }),
            "error 13");
}

// StringWrite("new", mode) or BinaryWrite(bytes) over a file holding `before`, read-only
// or not: a read-only file refuses text, and bytes replace it and leave it read-only.
TEST_F(FileContent, WritesLeaveExactlyTheNewContentOrTheOldOne) {
  const struct {
    const char* what;
    const char* before;  // nullptr: no file
    bool read_only;
    int32_t mode;
    bool ok;
    std::optional<std::string> after;  // nullopt: no file
    std::optional<SafeArray> bytes = std::nullopt;  // BinaryWrite's, when given
  } rows[] = {
      {"replace, the default, replaces the whole file", "old content", false, 4, true, "new"},
      {"replace creates a missing file", nullptr, false, 4, true, "new"},
      {"append adds at the end", "old", false, 8, true, "oldnew"},
      {"append creates a missing file", nullptr, false, 8, true, "new"},
      {"if-exists + append: a missing file stays missing, and that succeeds", nullptr, false, 9,
       true, std::nullopt},
      {"if-exists + append appends to a file there", "old", false, 9, true, "oldnew"},
      {"replace wins over append", "old", false, 12, true, "new"},
      {"if-exists alone opens nothing and fails", "old", false, 1, false, "old"},
      {"no mode bit fails", "old", false, 0, false, "old"},
      {"a read-only file refuses replace", "old", true, 4, false, "old"},
      {"a read-only file refuses append", "old", true, 8, false, "old"},
      {"bytes over a longer read-only file", "a longer old file", true, 0, true, "abc",
       ByteArray("abc")},
      {"bytes make a new file", nullptr, false, 0, true, std::string("\0\xFF", 2),
       SafeArray::FromBytes(Bytes{0, 0xFF})},
      {"an array never dimensioned", "old", true, 0, true, "", SafeArray(VarType::kByte)},
      {"an array from 5", "old", true, 0, true, "xy", SafeArray::FromBytes(ToBytes("xy"), 5)},
  };
  for (const auto& r : rows) {
    std::filesystem::remove(Native("f.txt"));
    if (r.before) Put("f.txt", r.before, r.read_only ? 0444 : 0644);
    const auto mode = static_cast<xeZK_FILEWRITEMODES>(r.mode);
    EXPECT_EQ(r.bytes ? fs_->BinaryWrite(Path("f.txt"), *r.bytes) : fs_->StringWrite(u"new", Path("f.txt"), mode),
              r.ok)
        << r.what;
    EXPECT_EQ(Exists("f.txt") ? std::optional(Get("f.txt")) : std::nullopt, r.after) << r.what;
    EXPECT_EQ(Mode("f.txt"), r.after ? (r.read_only ? 0444u : 0644u) : 0u) << r.what;
    EXPECT_EQ(Listing().size(), r.after ? 1u : 0u) << r.what << ": no copy is left";
  }
}

// A link is followed and stays a link; a file with a second name is written in place,
// so both names see the new content, cut to its length; permission bits stay.
TEST_F(FileContent, ReplacingKeepsLinksNamesAndPermissions) {
  Put("target.txt", "old", 0640);
  Link("link.txt", "target.txt");
  Link("dangling.txt", "made.txt");
  Put("a.txt", "a longer old text");
  ASSERT_EQ(::link(Native("a.txt").c_str(), Native("b.txt").c_str()), 0);
  const struct {
    const char *what, *written, *read;
  } rows[] = {{"through a link", "link.txt", "target.txt"},
              {"through a dangling link its file is made", "dangling.txt", "made.txt"},
              {"a file with two names", "a.txt", "b.txt"},
              {"the same by its other name", "b.txt", "a.txt"}};
  for (const auto& r : rows) {
    ASSERT_TRUE(fs_->StringWrite(u"text", Path(r.written))) << r.what;
    EXPECT_EQ(Get(r.read), "text") << r.what;
    ASSERT_TRUE(fs_->BinaryWrite(Path(r.written), ByteArray("by"))) << r.what;
    EXPECT_EQ(Get(r.read), "by") << r.what;
  }
  EXPECT_TRUE(S_ISLNK(Info("link.txt").st_mode) && S_ISLNK(Info("dangling.txt").st_mode));
  EXPECT_EQ(Mode("target.txt"), 0640u);
  EXPECT_EQ(Info("a.txt").st_nlink, 2u);
  EXPECT_EQ(Listing(), (Names{"a.txt", "b.txt", "dangling.txt", "link.txt", "made.txt", "target.txt"}));
}

TEST_F(FileContent, WritesThatCannotHappenFailAndLoseNothing) {
  Put("folder/inside.txt", "kept");
  for (const char* name : {"folder", "none/x"}) {
    EXPECT_FALSE(fs_->BinaryWrite(Path(name), ByteArray("new"))) << name;
    EXPECT_FALSE(fs_->StringWrite(u"new", Path(name))) << name;
    EXPECT_FALSE(fs_->StringWrite(u"new", Path(name), xcZK_FILEWRITE_APPEND)) << name;
  }
  EXPECT_EQ(Get("folder/inside.txt"), "kept");
  // A write the file system refuses part way (a size limit, standing for a full disk).
  const std::string old(4096, 'o');
  Put("keep.bin", old);
  const pid_t child = ::fork();
  ASSERT_GE(child, 0);
  if (child == 0) {
    ::signal(SIGXFSZ, SIG_IGN);
    const rlimit limit{1024, 1024};
    ::setrlimit(RLIMIT_FSIZE, &limit);
    const bool bytes = fs_->BinaryWrite(Path("keep.bin"), SafeArray::FromBytes(Bytes(8192, 'n')));
    ::_exit(bytes || fs_->StringWrite(String(8192, u'n'), Path("keep.bin")) ? 1 : 0);
  }
  int status = 0;
  ::waitpid(child, &status, 0);
  EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0) << "both writes report failure";
  EXPECT_EQ(Get("keep.bin"), old);
  EXPECT_EQ(Listing(), (Names{"folder", "keep.bin"})) << "no partial copy";
}

}  // namespace
}  // namespace tsruntime::testing
