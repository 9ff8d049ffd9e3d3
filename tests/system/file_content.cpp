// Whole-file reading and writing: bytes, ANSI text, write modes, and what a replaced
// file keeps (permissions, links) and never loses (the old content on a failed write).
#include <signal.h>
#include <sys/resource.h>
#include <sys/wait.h>

#include "system/fs_fixture.h"

namespace tsruntime::testing {
namespace {

class FileContent : public FsTest {};

TEST_F(FileContent, IsFileExistsTrueOnlyForWhatOpensAsAFile) {
  Put("empty", "");
  Put("Отчёт за май.txt", "x");
  MakeFolder("folder");
  Link("to-file", Native("empty"));
  Link("dangling", Native("none"));
  Link("to-folder", Native("folder"));
  const struct {
    std::string name;
    bool exists;
  } rows[] = {{"empty", true},   {"Отчёт за май.txt", true}, {"to-file", true},
              {"none", false},   {"folder", false},          {"to-folder", false},
              {"dangling", false}, {"empty/", false},        {std::string("empty\0", 6), false}};
  for (const auto& r : rows) EXPECT_EQ(fs_->IsFileExists(Path(r.name)), r.exists) << r.name;
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

TEST_F(FileContent, StringWriteModes) {
  const struct {
    const char* what;
    const char* before;  // nullptr: no file, before or after
    int32_t mode;
    bool ok;
    const char* after;
  } rows[] = {
      {"replace, the default, replaces the whole file", "old content", 4, true, "new"},
      {"replace creates a missing file", nullptr, 4, true, "new"},
      {"append adds at the end", "old", 8, true, "oldnew"},
      {"append creates a missing file", nullptr, 8, true, "new"},
      {"if-exists + append: a missing file stays missing, and that succeeds", nullptr, 9, true,
       nullptr},
      {"if-exists + append appends to a file there", "old", 9, true, "oldnew"},
      {"replace wins over append", "old", 12, true, "new"},
      {"if-exists alone opens nothing and fails", "old", 1, false, "old"},
      {"no mode bit fails", "old", 0, false, "old"},
      {"a read-only file refuses replace", "old", -4, false, "old"},
      {"a read-only file refuses append", "old", -8, false, "old"},
  };
  for (const auto& r : rows) {
    std::filesystem::remove(Native("f.txt"));
    if (r.before) Put("f.txt", r.before, r.mode < 0 ? 0444 : 0644);
    const auto mode = static_cast<xeZK_FILEWRITEMODES>(r.mode < 0 ? -r.mode : r.mode);
    EXPECT_EQ(fs_->StringWrite(u"new", Path("f.txt"), mode), r.ok) << r.what;
    EXPECT_EQ(r.after ? Get("f.txt") : std::to_string(Exists("f.txt")), r.after ? r.after : "0")
        << r.what;
  }
}

TEST_F(FileContent, BinaryReadGivesBoundsZeroToLengthLessOne) {
  Put("bytes.bin", std::string("\0\x01\xFF", 3));
  Put("empty.bin", "");
  MakeFolder("folder");
  for (const std::string name : {"bytes.bin", "empty.bin", "none.bin", "folder"}) {
    SafeArray buffer = SafeArray::FromBytes(ToBytes("keep"));
    const bool ok = fs_->BinaryRead(Path(name), buffer);
    EXPECT_EQ(ok, name == "bytes.bin") << name << ": an empty file has no array to fill";
    EXPECT_EQ(Text(buffer.bytes()), ok ? std::string("\0\x01\xFF", 3) : "keep") << name;
    EXPECT_EQ(buffer.ubound(), ok ? 2 : 3) << name;
  }
  SafeArray strings(VarType::kString);
  EXPECT_EQ(Outcome([&] { return fs_->BinaryRead(Path("bytes.bin"), strings) ? "T" : "F"; }),
            "error 13");
}

TEST_F(FileContent, BinaryWriteLeavesExactlyTheNewBytesAndReplacesReadOnlyFiles) {
  const struct {
    const char* what;
    const char* before;
    SafeArray data;
    std::string after;
  } rows[] = {
      {"three bytes over a longer file", "a longer old file", SafeArray::FromBytes(ToBytes("abc")),
       "abc"},
      {"a new file", nullptr, SafeArray::FromBytes(Bytes{0, 0xFF}), std::string("\0\xFF", 2)},
      {"an array never dimensioned", "old", SafeArray(VarType::kByte), ""},
      {"an array from 5", "old", SafeArray::FromBytes(ToBytes("xy"), 5), "xy"},
  };
  for (const auto& r : rows) {
    std::filesystem::remove(Native("out.bin"));
    if (r.before) Put("out.bin", r.before, 0444);
    EXPECT_TRUE(fs_->BinaryWrite(Path("out.bin"), r.data)) << r.what;
    EXPECT_EQ(Get("out.bin"), r.after) << r.what;
    EXPECT_TRUE(!r.before || Mode("out.bin") == 0444u) << r.what << ": read-only stays so";
  }
  EXPECT_EQ(Listing(), std::vector<std::string>{"out.bin"}) << "no temporary file is left";
}

TEST_F(FileContent, ReplacingFollowsLinksAndKeepsPermissions) {
  Put("target.txt", "old", 0640);
  Link("link.txt", "target.txt");
  Link("dangling.txt", "made-through-link.txt");
  ASSERT_TRUE(fs_->StringWrite(u"text", Path("link.txt")));
  EXPECT_EQ(Get("target.txt"), "text");
  ASSERT_TRUE(fs_->BinaryWrite(Path("link.txt"), SafeArray::FromBytes(ToBytes("bytes"))));
  EXPECT_EQ(Get("target.txt"), "bytes");
  EXPECT_TRUE(std::filesystem::is_symlink(Native("link.txt"))) << "the link stays a link";
  EXPECT_EQ(Mode("target.txt"), 0640u);
  EXPECT_TRUE(fs_->StringWrite(u"new", Path("dangling.txt")));
  EXPECT_EQ(Get("made-through-link.txt"), "new") << "a dangling link's file is created";
}

TEST_F(FileContent, WritesThatCannotHappenFailAndLoseNothing) {
  Put("folder/inside.txt", "kept");
  const SafeArray data = SafeArray::FromBytes(ToBytes("new"));
  EXPECT_FALSE(fs_->BinaryWrite(Path("folder"), data)) << "a folder is not replaced";
  EXPECT_FALSE(fs_->StringWrite(u"new", Path("folder"))) << "nor by text";
  EXPECT_FALSE(fs_->StringWrite(u"new", Path("folder"), xcZK_FILEWRITE_APPEND));
  EXPECT_FALSE(fs_->BinaryWrite(Path("none/x.bin"), data)) << "a missing folder";
  EXPECT_FALSE(fs_->StringWrite(u"new", Path("none/x.txt")));
  EXPECT_EQ(Get("folder/inside.txt"), "kept");
  EXPECT_EQ(Listing(), std::vector<std::string>{"folder"});

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
  EXPECT_EQ(Listing(), (std::vector<std::string>{"folder", "keep.bin"})) << "no partial copy";
}

}  // namespace
}  // namespace tsruntime::testing
