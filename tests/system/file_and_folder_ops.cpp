// Files and folders: existence tests, deletion, renaming, whole paths made at once, long
// names and times, and what each raises: its own code, the runtime failure it wraps, then
// its arguments.
#include <linux/magic.h>
#include <sys/statfs.h>

#include "system/fs_fixture.h"

namespace tsruntime::testing {
namespace {

using FileAndFolderOps = FsTest;

// A folder is empty when it lists nothing but dot-names; a file exists when it opens as one.
TEST_F(FileAndFolderOps, IsPathExistsAndIsDirEmpty) {
  Put("dots/.profile", "");
  MakeFolder("dots/.git");
  Put("full/.a", "");
  Put("full/Отчёт за май.txt", "");
  Link("to-folder", Native("dots"));
  Link("to-file", Native("full/Отчёт за май.txt"));
  Link("dangling", Native("none"));
  // (what, path, IsFileExists, IsPathExists, IsDirEmpty)
  const std::tuple<const char*, String, bool, bool, bool> rows[] = {
      {"a folder holding dot-names only", Path("dots"), false, true, true},
      {"the same with trailing slashes", Path("dots///"), false, true, true},
      {"a link to a folder", Path("to-folder"), false, true, true},
      {"an ordinary file among dot-names", Path("full/"), false, true, false},
      {"the root, however many slashes", u"//", false, true, false},
      {"an empty file", Path("full/Отчёт за май.txt"), true, false, true},
      {"a link to a file", Path("to-file"), true, false, true},
      {"a file named as a folder", Path("full/Отчёт за май.txt/"), false, false, true},
      {"a name holding NUL is refused", Path(std::string("full\0", 5)), false, false, false},
      {"a dangling link", Path("dangling"), false, false, true},
      {"a missing folder lists nothing", Path("none"), false, false, true},
      {"the empty path, whose listing is the root's", u"", false, false, false},
  };
  for (const auto& [what, path, file, exists, empty] : rows) {
    EXPECT_EQ(std::tuple(fs_->IsFileExists(path), fs_->IsPathExists(path), fs_->IsDirEmpty(path)),
              std::tuple(file, exists, empty)) << what;
  }
}

enum Op { kFileKill, kFileRename, kDirsMake, kDirRename, kDirKill };

// The operations that raise, in one scratch folder, in order: each row is True, False, or
// the runtime failure the operation wraps in its own code with its argument lines.
TEST_F(FileAndFolderOps, KillRenameAndMakeDoExactlyWhatIsNamedOrRaiseAndChangeNothing) {
  for (const char* file : {"a.txt", "b.txt", "c.txt", "Мой файл.txt", "target.txt", "kept/k",
                           "tree/a", "par/sub/a", "par2/sub/a", "par2/b", "here/in/a", "mounted/a"}) {
    Put(file, file);
  }
  Put("ro.txt", "x", 0444);
  Put("tree/sub/deeper/ro.txt", "", 0444);
  ::chmod(Native("tree/sub").c_str(), 0555);
  for (const auto& [link, target] : {std::pair{"tree/sub/to-target", "target.txt"}, {"tree/to-kept", "kept"},
                                     {"link", "target.txt"}, {"to-kept", "kept"}}) {
    Link(link, Native(target));
  }
  for (const char* folder : {"folder", "old", "other"}) MakeFolder(folder);
  const bool mounted = MountSmallDisk("mounted/disk", "64k");
  std::filesystem::current_path(Native("here/in"));
  // (what, operation, path, the new name of a rename or "unforced" for a kill that is not,
  // "True", "False" or the description the error wraps)
  const std::tuple<const char*, Op, String, std::string, std::string> rows[] = {
      {"a file is deleted", kFileKill, Path("a.txt"), "", "True"},
      {"read-only without force", kFileKill, Path("ro.txt"), "unforced", "Permission denied"},
      {"read-only by default", kFileKill, Path("ro.txt"), "", "True"},
      {"a missing file", kFileKill, Path("none"), "", "File not found"},
      {"a missing folder", kFileKill, Path("no/a"), "", "Path not found"},
      {"a folder is no file", kFileKill, Path("folder"), "", "File not found"},
      {"a link goes, not its file", kFileKill, Path("link"), "", "True"},
      {"Cyrillic and spaces", kFileRename, Path("Мой файл.txt"), "Новое имя.txt", "True"},
      {"the same name changes nothing", kFileRename, Path("b.txt"), "b.txt", "True"},
      {"a taken name", kFileRename, Path("b.txt"), "c.txt", "File already exists"},
      {"a missing file", kFileRename, Path("none"), "x", "File not found"},
      {"a folder in the new name", kFileRename, Path("b.txt"), "folder/b", "Bad file name or number"},
      {"three missing levels", kDirsMake, Path("a/b/c"), "", "True"},
      {"every level there", kDirsMake, Path("a/b"), "", "True"},
      {"doubled and trailing slashes", kDirsMake, Path("x//y/"), "", "True"},
      {"Cyrillic and spaces", kDirsMake, Path("Новая папка/ещё одна"), "", "True"},
      {"a file in the way", kDirsMake, Path("c.txt/sub"), "", "File already exists"},
      {"no first element", kDirsMake, u"", "", "Subscript out of range"},
      {"a network path under three characters", kDirsMake, u"//", "", "False"},
      {"a network server alone", kDirsMake, u"//server", "", "True"},
      {"a share on no server", kDirsMake, u"//no-such-server-tsrt/share", "", "Path not found"},
      {"a folder is renamed", kDirRename, Path("old/"), "Новая", "True"},
      {"a taken name", kDirRename, Path("Новая"), "other", "File already exists"},
      {"a missing folder", kDirRename, Path("none"), "x", "Path not found"},
      {"a read-only file deep inside stops an unforced delete", kDirKill, Path("tree"), "unforced",
       "Permission denied"},
      {"a link to a folder goes, not the folder", kDirKill, Path("to-kept"), "", "True"},
      {"by default the whole tree goes; links inside are not followed", kDirKill, Path("tree"), "", "True"},
      {"a missing folder", kDirKill, Path("tree"), "", "Path not found"},
      {"a file is no folder", kDirKill, Path("target.txt"), "", "Path not found"},
      {"the folder a path names after \"..\"", kDirKill, Path("par/sub/.."), "", "True"},
      {"a path through \".\"", kDirKill, Path("par2/./sub/."), "", "True"},
      {"the current folder", kDirKill, u".", "", "Permission denied"},
      {"a folder holding the current one", kDirKill, u"..", "", "Permission denied"},
      {"a file system mounted inside", kDirKill, Path("mounted"), "", mounted ? "Permission denied" : ""},
  };
  // Each operation's name, code, argument labels and call, in the order of Op.
  using Call = std::function<bool(const String&, const String&, bool)>;
  const struct { const char* name; int32_t code; const char *first, *second; Call call; } ops[] = {
      {"FileKill", xcZKERR_FS_FILEKILL, "FileFullName", nullptr, [&](auto& p, auto&, bool f) { return fs_->FileKill(p, f); }},
      {"FileRename", xcZKERR_FS_FILERENAME, "FileFullName", "FileShortNameNew", [&](auto& p, auto& n, bool) { return fs_->FileRename(p, n); }},
      {"DirsMake", xcZKERR_FS_DIRSMAKE, "DirFullPath", nullptr, [&](auto& p, auto&, bool) { return fs_->DirsMake(p); }},
      {"DirRename", xcZKERR_FS_DIRRENAME, "DirFullName", "DirShortNameNew", [&](auto& p, auto& n, bool) { return fs_->DirRename(p, n); }},
      {"DirKill", xcZKERR_FS_DIRKILL, "DirFullName", nullptr, [&](auto& p, auto&, bool f) { return fs_->DirKill(p, f); }}};
  for (const auto& [what, id, path, second, outcome] : rows) {
    if (outcome.empty()) continue;
    const auto& op = ops[id];
    const std::string got = Run([&] { return op.call(path, FromUtf8(second), second != "unforced"); });
    std::string shown = U8(path);
    if (shown.starts_with(Native())) shown.replace(0, Native().size(), "~");
    const std::string raised = std::to_string(op.code) + " " + op.name + ": " + outcome + "|" + op.first +
                               " = '" + shown + "'" +
                               (op.second ? std::string("|") + op.second + " = '" + second + "'" : "");
    EXPECT_EQ(got, outcome == "True" || outcome == "False" ? outcome : raised) << op.name << ": " << what;
  }
  // The drive of a relative path, or a letter, is missing: raised in the interface language.
  const std::string drive = std::to_string(xcZKERR_FS_DIRSMAKE) + " DirsMake: ";
  for (const auto& [language, path, text] : {std::tuple{0, u"rel/sub", "Диск не найден rel"},
                                             {1, u"D:/data", "Drive is not found D:"},
                                             {7, u"D:/data", "Drive is not found D:"}}) {
    SetInterfaceLanguage(language);
    EXPECT_EQ(Run([&] { return fs_->DirsMake(path); }), drive + text) << language;
  }
  SetInterfaceLanguage(xcZKLANG_RUS);
  EXPECT_EQ(Listing("here/in"), Names{"a"}) << "in use, and nothing made under a missing drive";
  EXPECT_EQ(Listing(), (Names{"a", "b.txt", "c.txt", "folder", "here", "kept", "mounted", "other", "par2",
                              "target.txt", "x", "Новая", "Новая папка", "Новое имя.txt"}));
  EXPECT_EQ(Get("c.txt") + Get("target.txt"), "c.txttarget.txt") << "nothing overwritten nor followed";
  EXPECT_EQ(Listing("kept"), Names{"k"});
  EXPECT_EQ(Listing("par2"), Names{"b"});
  EXPECT_EQ(Listing("mounted"), (Names{"a", "disk"}));
  // Folders are made as mkdir makes them: every user may enter, as far as the umask allows.
  const mode_t umask = ::umask(0);
  ::umask(umask);
  for (const char* made : {"a", "a/b/c", "x/y", "Новая папка/ещё одна"}) {
    EXPECT_EQ(Info(made).st_mode, S_IFDIR | (0777 & ~umask)) << made;
  }
}

// An ordinary user's tree holding a folder of root's: forced or not, nothing goes.
TEST_F(FileAndFolderOps, DirKillOfATreeTheUserCannotEmptyDeletesNothing) {
  if (InTestChild()) {
    const std::string refused = std::to_string(xcZKERR_FS_DIRKILL) + " DirKill: Permission denied";
    for (bool force : {false, true}) {
      EXPECT_TRUE(Run([&] { return fs_->DirKill(FromUtf8(std::getenv("TSRT_TREE")), force); }).starts_with(refused));
    }
    return;
  }
  if (!CanRunAsOrdinaryUser()) GTEST_SKIP() << "no ordinary user to run as";
  for (const char* file : {"tree/a", "tree/mine/b", "tree/roots/c", "tree/z"}) Put(file, "x");
  ::chmod(Native().c_str(), 0777);
  for (const char* entry : {"tree", "tree/a", "tree/mine", "tree/mine/b", "tree/z"}) {
    ASSERT_EQ(::chown(Native(entry).c_str(), ThrowawayUid(), ThrowawayUid()), 0);
  }
  PassAsOrdinaryUser({{"TSRT_TREE", Native("tree")}});
  EXPECT_EQ(Listing("tree"), (Names{"a", "mine", "roots", "z"}));
  EXPECT_EQ(Listing("tree/mine"), Names{"b"});
}

TEST_F(FileAndFolderOps, PathShort2LongKeepsExistingLevelsAndEmptiesMissingOnes) {
  Put("Длинное имя/file.txt", "");
  const std::pair<String, String> rows[] = {  // (path, result)
      {Path("Длинное имя/file.txt"), Path("Длинное имя/file.txt")},
      {Path("Длинное имя/none"), Path("Длинное имя/")},
      {Path("none/Длинное имя"), Path("/Длинное имя")},
      {Path("Длинное имя/"), Path("Длинное имя/")},
      {u"//server/share/x", u"//server/share/x"},
      {u"", u""},
      {u"relative-none/x", u"relative-none/"},
  };
  for (const auto& [path, result] : rows) EXPECT_EQ(U8(fs_->PathShort2Long(path)), U8(result));
  const std::string long_name(300, 'n');
  EXPECT_EQ(Run([&] { return fs_->PathShort2Long(Path(long_name)).empty(); }),
            std::to_string(xcZKERR_FS_PATHSHORT2LONG) +
                " PathShort2Long: Bad file name or number|PathShortName = '~/" + long_name + "'");
}

TEST_F(FileAndFolderOps, FileSetDateTimeSetsWhatIsGivenAndRefusesWhatIsNot) {
  Put("f.txt", "x");
  Put("ro.txt", "x", 0444);
  MakeFolder("folder");
  const Date july = Date::FromParts({2021, 7, 4, 13, 45, 30});
  const Date march = Date::FromParts({2001, 3, 2, 1, 2, 3});
  const Date old_date = Date::FromParts({1700, 1, 1, 12, 0, 0});
  struct statfs disk;
  const bool ext4 = ::statfs(Native().c_str(), &disk) == 0 && disk.f_type == EXT4_SUPER_MAGIC;
  const Variant none = Variant::Missing();
  ASSERT_TRUE(fs_->FileSetDateTime(Path("f.txt"), none, Variant(march), Variant(march)));
  const time_t last_access = Info("f.txt").st_atim.tv_sec;
  // (what, file, created, accessed, written, result, the date f.txt has then), in order.
  const std::tuple<const char*, std::string, Variant, Variant, Variant, bool, Date> rows[] = {
      {"text that is no date", "f.txt", none, none, Variant(u"abc"), false, march},
      {"Null", "f.txt", none, Variant::Null(), none, false, march},
      {"a bad creation date", "f.txt", Variant(u"abc"), none, Variant(july), false, march},
      {"before 1601", "f.txt", none, none, Variant(Date::FromParts({1600, 12, 31})), false, march},
      {"a missing file", "none", none, none, Variant(july), false, march},
      {"a read-only file", "ro.txt", none, none, Variant(july), false, march},
      {"a folder", "folder", none, none, Variant(july), false, march},
      {"no dates at all", "f.txt", none, none, none, true, march},
      {"a creation date is ignored", "f.txt", Variant(july), none, none, true, march},
      {"a date the file system cannot hold sets nothing (ext4 starts in 1901)", "f.txt", none, none,
       Variant(old_date), !ext4, ext4 ? march : old_date},
      {"a date as text", "f.txt", none, none, Variant(u"2021-07-04 13:45:30"), true, july},
  };
  for (const auto& [what, file, created, accessed, written, ok, then] : rows) {
    EXPECT_EQ(fs_->FileSetDateTime(Path(file), created, accessed, written), ok) << what;
    EXPECT_EQ(FileDateTime(Path("f.txt")), then) << what;
  }
  EXPECT_EQ(Info("f.txt").st_atim.tv_sec, last_access) << "last access untouched throughout";
  EXPECT_EQ(Outcome([&] { return ToUtf8(FileDateTime(Path("none")).ToText()); }), "error 53");
}

}  // namespace
}  // namespace tsruntime::testing
