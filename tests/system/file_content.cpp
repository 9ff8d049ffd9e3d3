// Whole-file reading and writing: bytes, ANSI text, write modes, and what a replaced
// file keeps (permissions, links) and never loses (the old content on a failed write).
#include <optional>

#include "system/fs_fixture.h"

namespace tsruntime::testing {
namespace {

using FileContent = FsTest;

// Text is one ANSI (1251) byte a character, with nothing added; a read gives the whole
// file or fails and leaves the buffer as it was, and bytes come from index 0. What cannot
// be read (a folder, a file in a missing folder) cannot be written either, and loses nothing.
TEST_F(FileContent, ReadsGiveTheWholeFileOrLeaveTheBufferAloneAndWhatCannotBeReadIsNotWritten) {
  ASSERT_TRUE(fs_->StringWrite(u"Ёлка\r\n€漢\x01я", Path("Новый файл.ini")));
  EXPECT_EQ(Get("Новый файл.ini"), "\xA8\xEB\xEA\xE0\r\n\x88?\x01\xFF")
      << "1251 bytes, no byte-order mark, no line break added, '?' for what 1251 lacks";
  Put("bytes.bin", std::string("\0\x01\xFF", 3));
  Put("empty.txt", "");
  Put("folder/inside.txt", "kept");
  const std::tuple<std::string, bool, String> rows[] = {  // (name, read, text then)
      {"Новый файл.ini", true, u"Ёлка\r\n€?\x01я"},
      {"bytes.bin", true, String(u"\0\x01я", 3)},
      {"empty.txt", true, u""},
      {"none/x.txt", false, u"before"},
      {"folder", false, u"before"},
  };
  for (const auto& [name, ok, text] : rows) {
    String buffer = u"before";
    EXPECT_EQ(fs_->StringRead(buffer, Path(name)), ok) << name;
    EXPECT_EQ(buffer, text) << name;
    EXPECT_EQ(fs_->StringReadAsString(Variant(Path(name))), ok ? text : u"") << name;
    const bool has_bytes = ok && !text.empty();  // an empty file has no array to fill
    SafeArray bytes = ByteArray("keep");
    EXPECT_EQ(fs_->BinaryRead(Path(name), bytes), has_bytes) << name;
    EXPECT_EQ(Text(bytes.bytes()), has_bytes ? Get(name) : "keep") << name;
    EXPECT_EQ(bytes.lbound(), 0) << name;
    EXPECT_TRUE(ok || !(fs_->BinaryWrite(Path(name), ByteArray("new")) || fs_->StringWrite(u"new", Path(name)) ||
                        fs_->StringWrite(u"new", Path(name), xcZK_FILEWRITE_APPEND))) << name;
  }
  EXPECT_EQ(Get("folder/inside.txt"), "kept");
  EXPECT_EQ(Listing(), (Names{"bytes.bin", "empty.txt", "folder", "Новый файл.ini"}));
  EXPECT_EQ(fs_->StringReadAsString(Variant::Null()), u"") << "Null is no file name";
  SafeArray strings(VarType::kString);
  EXPECT_EQ(Outcome([&] { return fs_->BinaryRead(Path("bytes.bin"), strings) ? "T" : "F"; }),
            "error 13");
}

// StringWrite("new", mode) or BinaryWrite(bytes) over a file holding `before`, read-only
// or not: a read-only file refuses text, and bytes replace it and leave it read-only.
TEST_F(FileContent, WritesLeaveExactlyTheNewContentOrTheOldOne) {
  // No file `before` or `after` is nullptr or nullopt; `bytes`, when given, are BinaryWrite's.
  const struct { const char* what; const char* before; bool read_only; int32_t mode; bool ok;
                 std::optional<std::string> after; std::optional<SafeArray> bytes = std::nullopt; } rows[] = {
      {"replace, the default, replaces the whole file", "old content", false, 4, true, "new"},
      {"replace creates a missing file", nullptr, false, 4, true, "new"},
      {"append adds at the end", "old", false, 8, true, "oldnew"},
      {"append creates a missing file", nullptr, false, 8, true, "new"},
      {"if-exists + append: no file is made, and that succeeds", nullptr, false, 9, true, std::nullopt},
      {"if-exists + append appends to a file there", "old", false, 9, true, "oldnew"},
      {"replace wins over append", "old", false, 12, true, "new"},
      {"if-exists alone opens nothing and fails", "old", false, 1, false, "old"},
      {"no mode bit fails", "old", false, 0, false, "old"},
      {"a read-only file refuses replace", "old", true, 4, false, "old"},
      {"a read-only file refuses append", "old", true, 8, false, "old"},
      {"bytes over a longer read-only file", "a longer old file", true, 0, true, "abc", ByteArray("abc")},
      {"bytes make a new file", nullptr, false, 0, true, std::string("\0\xFF", 2), ByteArray({"\0\xFF", 2})},
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
  // (the name written, the name read): a link and the file it names, a dangling link and
  // the file it makes, one name of a file and the other.
  for (const auto& [written, read] : {std::pair{"link.txt", "target.txt"}, {"dangling.txt", "made.txt"},
                                      {"a.txt", "b.txt"}, {"b.txt", "a.txt"}}) {
    ASSERT_TRUE(fs_->StringWrite(u"text", Path(written))) << written;
    EXPECT_EQ(Get(read), "text") << written;
    ASSERT_TRUE(fs_->BinaryWrite(Path(written), ByteArray("by"))) << written;
    EXPECT_EQ(Get(read), "by") << written;
  }
  EXPECT_TRUE(S_ISLNK(Info("link.txt").st_mode) && S_ISLNK(Info("dangling.txt").st_mode));
  EXPECT_EQ(Mode("target.txt"), 0640u);
  EXPECT_EQ(Info("a.txt").st_nlink, 2u);
  EXPECT_EQ(Listing(), (Names{"a.txt", "b.txt", "dangling.txt", "link.txt", "made.txt", "target.txt"}));
}

}  // namespace
}  // namespace tsruntime::testing
