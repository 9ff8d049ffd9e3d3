// Whole-file reading and writing: bytes, ANSI text, write modes, and what a replaced
// file keeps (permissions, links) and never loses (the old content on a failed write).
#include <signal.h>
#include <sys/resource.h>
#include <sys/wait.h>

#include <algorithm>

#include "system/fs_fixture.h"

namespace tsruntime::testing {
namespace {

class FileContent : public FsTest {};

TEST_F(FileContent, IsFileExistsTrueOnlyForWhatOpensAsAFile) {
  Put("plain.txt", "x");
  Put("empty", "");
  Put("Отчёт за май.txt", "x");
  MakeFolder("folder");
  Link("to-plain", Native("plain.txt"));
  Link("dangling", Native("none"));
  Link("to-folder", Native("folder"));
  const struct {
    const char* what;
    String name;
    bool exists;
  } rows[] = {
      {"a file", Path("plain.txt"), true},
      {"an empty file", Path("empty"), true},
      {"a name with Cyrillic letters and spaces", Path("Отчёт за май.txt"), true},
      {"a link to a file", Path("to-plain"), true},
      {"a missing file", Path("none"), false},
      {"a folder", Path("folder"), false},
      {"a link to a folder", Path("to-folder"), false},
      {"a dangling link", Path("dangling"), false},
      {"a file named with a trailing slash", Path("plain.txt/"), false},
      {"a name holding NUL", Path("plain.txt") + String(1, u'\0'), false},
      {"the empty name", u"", false},
  };
  for (const auto& r : rows) EXPECT_EQ(fs_->IsFileExists(r.name), r.exists) << r.what;
}

TEST_F(FileContent, StringReadTakesEachByteAsAnAnsiCharacter) {
  Put("ansi.txt", "\xCF\xF0\xE8\xE2\xE5\xF2\r\n\x01\xFF");  // "Привет" in 1251
  Put("empty.txt", "");
  MakeFolder("folder");
  const struct {
    const char* what;
    std::string name;
    bool ok;
    String text;
  } rows[] = {
      {"bytes become 1251 characters, line breaks kept", "ansi.txt", true,
       u"Привет\r\n\x01я"},
      {"an empty file reads as empty text", "empty.txt", true, u""},
      {"a missing file fails and leaves the buffer alone", "none.txt", false, u"before"},
      {"a folder fails and leaves the buffer alone", "folder", false, u"before"},
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
    const char* before;  // nullptr: no file
    int32_t mode;
    bool ok;
    const char* after;  // nullptr: no file
  } rows[] = {
      {"the default replaces the whole file", "old content", xcZK_FILEWRITE_REPLACE, true, "new"},
      {"replace creates a missing file", nullptr, 4, true, "new"},
      {"append adds at the end", "old", 8, true, "oldnew"},
      {"append creates a missing file", nullptr, 8, true, "new"},
      {"if-exists with append leaves a missing file missing, and succeeds", nullptr, 9, true,
       nullptr},
      {"if-exists with append appends to a file there", "old", 9, true, "oldnew"},
      {"if-exists with replace replaces a file there", "old", 5, true, "new"},
      {"replace wins over append", "old", 12, true, "new"},
      {"if-exists alone opens nothing and fails", "old", 1, false, "old"},
      {"no mode bit at all fails", "old", 0, false, "old"},
      {"if-exists alone on a missing file succeeds without writing", nullptr, 1, true, nullptr},
  };
  for (const auto& r : rows) {
    std::filesystem::remove(Native("f.txt"));
    if (r.before) Put("f.txt", r.before);
    EXPECT_EQ(fs_->StringWrite(u"new", Path("f.txt"), static_cast<xeZK_FILEWRITEMODES>(r.mode)),
              r.ok)
        << r.what;
    EXPECT_EQ(Exists("f.txt"), r.after != nullptr) << r.what;
    if (r.after) {
      EXPECT_EQ(Get("f.txt"), r.after) << r.what;
    }
  }
}

TEST_F(FileContent, StringWriteWritesAnsiBytesWithNothingAdded) {
  ASSERT_TRUE(fs_->StringWrite(u"Ёлка\r\n€漢", Path("Новый файл.ini")));
  EXPECT_EQ(Get("Новый файл.ini"), "\xA8\xEB\xEA\xE0\r\n\x88?")
      << "1251 bytes, no byte-order mark, no line break added, '?' for what 1251 lacks";
  String back;
  ASSERT_TRUE(fs_->StringRead(back, Path("Новый файл.ini")));
  EXPECT_EQ(back, u"Ёлка\r\n€?");
}

TEST_F(FileContent, ReadOnlyFilesRefuseTextButAreReplacedByBytes) {
  Put("ro.txt", "old", 0444);
  EXPECT_FALSE(fs_->StringWrite(u"new", Path("ro.txt"))) << "replace";
  EXPECT_FALSE(fs_->StringWrite(u"new", Path("ro.txt"), xcZK_FILEWRITE_APPEND)) << "append";
  EXPECT_EQ(Get("ro.txt"), "old");
  EXPECT_TRUE(fs_->BinaryWrite(Path("ro.txt"), SafeArray::FromBytes(ToBytes("new"))));
  EXPECT_EQ(Get("ro.txt"), "new");
  EXPECT_EQ(Mode("ro.txt"), 0444) << "the replaced file is still read-only";
}

TEST_F(FileContent, BinaryReadGivesBoundsZeroToLengthLessOne) {
  Put("bytes.bin", std::string("\0\x01\xFF", 3));
  Put("empty.bin", "");
  MakeFolder("folder");
  const struct {
    const char* what;
    std::string name;
    bool ok;
  } rows[] = {
      {"a file of three bytes", "bytes.bin", true},
      {"an empty file has no array to fill", "empty.bin", false},
      {"a missing file", "none.bin", false},
      {"a folder", "folder", false},
  };
  for (const auto& r : rows) {
    SafeArray buffer = SafeArray::FromBytes(ToBytes("keep"), 0);
    EXPECT_EQ(fs_->BinaryRead(Path(r.name), buffer), r.ok) << r.what;
    if (r.ok) {
      EXPECT_EQ(buffer.lbound(), 0) << r.what;
      EXPECT_EQ(buffer.ubound(), 2) << r.what;
      EXPECT_EQ(Text(buffer.bytes()), std::string("\0\x01\xFF", 3)) << r.what;
    } else {
      EXPECT_EQ(Text(buffer.bytes()), "keep") << r.what << ": the array is left alone";
    }
  }
  SafeArray strings(VarType::kString);
  EXPECT_EQ(Outcome([&] { return fs_->BinaryRead(Path("bytes.bin"), strings) ? "T" : "F"; }),
            "error 13");
}

TEST_F(FileContent, BinaryWriteLeavesExactlyTheNewBytes) {
  const struct {
    const char* what;
    const char* before;
    SafeArray data;
    std::string after;
  } rows[] = {
      {"three bytes over a longer file leave three bytes", "a much longer old file",
       SafeArray::FromBytes(ToBytes("abc")), "abc"},
      {"a new file", nullptr, SafeArray::FromBytes(ToBytes(std::string("\0\xFF", 2))),
       std::string("\0\xFF", 2)},
      {"an array never dimensioned leaves an empty file", "old", SafeArray(VarType::kByte), ""},
      {"an array from 5 writes its bytes all the same", "old",
       SafeArray::FromBytes(ToBytes("xy"), 5), "xy"},
  };
  for (const auto& r : rows) {
    std::filesystem::remove(Native("out.bin"));
    if (r.before) Put("out.bin", r.before);
    EXPECT_TRUE(fs_->BinaryWrite(Path("out.bin"), r.data)) << r.what;
    EXPECT_EQ(Get("out.bin"), r.after) << r.what;
  }
  EXPECT_EQ(Listing(), std::vector<std::string>{"out.bin"}) << "no temporary file is left";
}

TEST_F(FileContent, ReplacingKeepsPermissionsAndFollowsLinks) {
  Put("target.txt", "old", 0640);
  Link("link.txt", "target.txt");
  ASSERT_TRUE(fs_->StringWrite(u"via link", Path("link.txt")));
  EXPECT_EQ(Get("target.txt"), "via link");
  EXPECT_TRUE(std::filesystem::is_symlink(Native("link.txt"))) << "the link stays a link";
  EXPECT_EQ(Mode("target.txt"), 0640);
  ASSERT_TRUE(fs_->BinaryWrite(Path("link.txt"), SafeArray::FromBytes(ToBytes("bytes"))));
  EXPECT_EQ(Get("target.txt"), "bytes");
  EXPECT_TRUE(std::filesystem::is_symlink(Native("link.txt")));

  Link("dangling.txt", "made-through-link.txt");
  EXPECT_TRUE(fs_->StringWrite(u"new", Path("dangling.txt")));
  EXPECT_EQ(Get("made-through-link.txt"), "new") << "a dangling link's file is created";
}

TEST_F(FileContent, WritesThatCannotHappenFailAndLoseNothing) {
  MakeFolder("folder");
  Put("folder/inside.txt", "kept");
  const SafeArray data = SafeArray::FromBytes(ToBytes("new"));
  EXPECT_FALSE(fs_->BinaryWrite(Path("folder"), data)) << "a folder is not replaced";
  EXPECT_FALSE(fs_->StringWrite(u"new", Path("folder"))) << "nor by text";
  EXPECT_FALSE(fs_->StringWrite(u"new", Path("folder"), xcZK_FILEWRITE_APPEND));
  EXPECT_FALSE(fs_->BinaryWrite(Path("none/x.bin"), data)) << "a missing folder";
  EXPECT_FALSE(fs_->StringWrite(u"new", Path("none/x.txt")));
  EXPECT_EQ(Get("folder/inside.txt"), "kept");
  EXPECT_EQ(Listing(), std::vector<std::string>{"folder"});
}

// A write that the file system refuses part way (here a file size limit, standing for a
// full disk) fails, and the old file stays whole.
TEST_F(FileContent, AWriteFailingPartWayKeepsTheOldFile) {
  const std::string old(4096, 'o');
  Put("keep.bin", old);
  const pid_t child = ::fork();
  ASSERT_GE(child, 0);
  if (child == 0) {
    ::signal(SIGXFSZ, SIG_IGN);
    const rlimit limit{1024, 1024};
    ::setrlimit(RLIMIT_FSIZE, &limit);
    const bool bytes = fs_->BinaryWrite(Path("keep.bin"), SafeArray::FromBytes(Bytes(8192, 'n')));
    const bool text = fs_->StringWrite(String(8192, u'n'), Path("keep.bin"));
    ::_exit(bytes || text ? 1 : 0);
  }
  int status = 0;
  ::waitpid(child, &status, 0);
  EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0) << "both writes report failure";
  EXPECT_EQ(Get("keep.bin"), old);
  EXPECT_EQ(Listing(), std::vector<std::string>{"keep.bin"}) << "the partial copy is removed";
}

TEST_F(FileContent, FileDateTimeReadsWhatFileSetDateTimeSet) {
  Put("dated.txt", "x");
  const Date when = Date::FromParts({2021, 7, 4, 13, 45, 30});
  ASSERT_TRUE(fs_->FileSetDateTime(Path("dated.txt"), Variant::Missing(), Variant::Missing(),
                                   Variant(when)));
  EXPECT_EQ(FileDateTime(Path("dated.txt")), when);
  EXPECT_EQ(Outcome([&] { return ToUtf8(FileDateTime(Path("none")).ToText()); }), "error 53");
}

}  // namespace
}  // namespace tsruntime::testing
