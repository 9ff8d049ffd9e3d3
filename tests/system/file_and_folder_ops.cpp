// Files and folders: existence tests, deletion, renaming, whole paths made at once, long
// names and times, and what each raises: its own code, the runtime failure it wraps, then
// its arguments.
#include <linux/magic.h>
#include <sys/statfs.h>

#include "support/child_process.h"
#include "system/fs_fixture.h"

namespace tsruntime::testing {
namespace {

struct Row {
  const char* what;
  std::function<bool()> call;
  std::string outcome;  // as FsTest::Run gives it
};

class FileAndFolderOps : public FsTest {
 protected:
  void Check(const std::vector<Row>& rows) {
    for (const Row& r : rows) EXPECT_EQ(Run(r.call), r.outcome) << r.what;
  }
};

TEST_F(FileAndFolderOps, IsPathExistsAndIsDirEmpty) {
  Put("Папка с пробелом/.profile", "");
  MakeFolder("Папка с пробелом/.git");
  Put("full/.a", "");
  Put("full/b", "");
  Link("to-folder", Native("Папка с пробелом"));
  const struct {
    const char* what;
    String path;
    bool exists, empty;
  } rows[] = {
      {"a folder holding dot-names only", Path("Папка с пробелом"), true, true},
      {"the same with trailing slashes", Path("Папка с пробелом///"), true, true},
      {"a link to a folder", Path("to-folder"), true, true},
      {"an ordinary file among dot-names", Path("full/"), true, false},
      {"the root, however many slashes", u"//", true, false},
      {"a file", Path("full/b"), false, true},
      {"a missing folder lists nothing", Path("none"), false, true},
      {"the empty path, whose listing is the root's", u"", false, false},
  };
  for (const auto& r : rows) {
    EXPECT_EQ(fs_->IsPathExists(r.path), r.exists) << r.what;
    EXPECT_EQ(fs_->IsDirEmpty(r.path), r.empty) << r.what;
  }
}

TEST_F(FileAndFolderOps, FileKillAndFileRename) {
  Put("a.txt", "x");
  Put("ro.txt", "x", 0444);
  Put("b.txt", "b");
  Put("c.txt", "c");
  Put("Мой файл.txt", "x");
  MakeFolder("folder");
  Put("target.txt", "kept");
  Link("link", Native("target.txt"));
  const auto kill = [&](const char* name, bool force = true) {
    return [=, this] { return fs_->FileKill(Path(name), force); };
  };
  const auto rename = [&](const char* name, const char16_t* to) {
    return [=, this] { return fs_->FileRename(Path(name), to); };
  };
  const std::string k = std::to_string(xcZKERR_FS_FILEKILL) + " FileKill: ";
  const std::string r = std::to_string(xcZKERR_FS_FILERENAME) + " FileRename: ";
  Check({
      {"a file is deleted", kill("a.txt"), "True"},
      {"read-only without force", kill("ro.txt", false),
       k + "Permission denied|FileFullName = '~/ro.txt'"},
      {"read-only by default", kill("ro.txt"), "True"},
      {"a missing file", kill("none"), k + "File not found|FileFullName = '~/none'"},
      {"a missing folder", kill("no/a"), k + "Path not found|FileFullName = '~/no/a'"},
      {"a folder is no file", kill("folder"), k + "File not found|FileFullName = '~/folder'"},
      {"a link goes, not its file", kill("link"), "True"},
      {"Cyrillic and spaces", rename("Мой файл.txt", u"Новое имя.txt"), "True"},
      {"the same name changes nothing", rename("b.txt", u"b.txt"), "True"},
      {"a taken name", rename("b.txt", u"c.txt"),
       r + "File already exists|FileFullName = '~/b.txt'|FileShortNameNew = 'c.txt'"},
      {"a missing file", rename("none", u"x"),
       r + "File not found|FileFullName = '~/none'|FileShortNameNew = 'x'"},
      {"a folder in the new name", rename("b.txt", u"folder/b"),
       r + "Bad file name or number|FileFullName = '~/b.txt'|FileShortNameNew = 'folder/b'"},
  });
  EXPECT_EQ(Listing(), (std::vector<std::string>{"b.txt", "c.txt", "folder", "target.txt",
                                                 "Новое имя.txt"}));
  EXPECT_EQ(Get("c.txt"), "c") << "a refused rename overwrites nothing";
}

TEST_F(FileAndFolderOps, DirsMakeCreatesEveryMissingLevelAndSpeaksTheInterfaceLanguage) {
  Put("plain", "x");
  const auto make = [&](String path) { return [=, this] { return fs_->DirsMake(path); }; };
  const std::string d = std::to_string(xcZKERR_FS_DIRSMAKE) + " DirsMake: ";
  Check({
      {"three missing levels", make(Path("a/b/c")), "True"},
      {"every level there", make(Path("a/b")), "True"},
      {"doubled and trailing slashes", make(Path("x//y/")), "True"},
      {"Cyrillic and spaces", make(Path("Новая папка/ещё одна")), "True"},
      {"a file in the way", make(Path("plain/sub")),
       d + "File already exists|DirFullPath = '~/plain/sub'"},
      {"a relative path's drive", make(u"rel/sub"), d + "Диск не найден rel"},
      {"no first element", make(u""), d + "Subscript out of range|DirFullPath = ''"},
      {"a network path under three characters", make(u"//"), "False"},
      {"a network server alone", make(u"//server"), "True"},
      {"a share on no server", make(u"//no-such-server-tsrt/share"),
       d + "Path not found|DirFullPath = '//no-such-server-tsrt/share'"},
  });
  for (const char* made : {"a/b/c", "x/y", "Новая папка/ещё одна"}) {
    EXPECT_TRUE(std::filesystem::is_directory(Native(made))) << made;
  }
  EXPECT_FALSE(Exists("rel")) << "nothing is made under a missing drive";
  for (const int32_t language : {1, 7}) {
    SetInterfaceLanguage(language);
    EXPECT_EQ(Run(make(u"D:/data")), d + "Drive is not found D:") << language;
  }
  SetInterfaceLanguage(xcZKLANG_RUS);
}

TEST_F(FileAndFolderOps, DirRenameAndDirKill) {
  MakeFolder("old");
  MakeFolder("other");
  Put("tree/a.txt", "");
  Put("tree/sub/deeper/ro.txt", "", 0444);
  ::chmod(Native("tree/sub").c_str(), 0555);
  Put("outside.txt", "kept");
  Link("tree/sub/to-outside", Native("outside.txt"));
  Link("tree/to-other", Native("other"));
  Put("target/kept.txt", "");
  Link("link", Native("target"));
  const auto kill = [&](const char* name, bool force = true) {
    return [=, this] { return fs_->DirKill(Path(name), force); };
  };
  const std::string r = std::to_string(xcZKERR_FS_DIRRENAME) + " DirRename: ";
  const std::string k = std::to_string(xcZKERR_FS_DIRKILL) + " DirKill: ";
  Check({
      {"a folder is renamed", [&] { return fs_->DirRename(Path("old/"), u"Новая"); }, "True"},
      {"a taken name", [&] { return fs_->DirRename(Path("Новая"), u"other"); },
       r + "File already exists|DirFullName = '~/Новая'|DirShortNameNew = 'other'"},
      {"a missing folder", [&] { return fs_->DirRename(Path("none"), u"x"); },
       r + "Path not found|DirFullName = '~/none'|DirShortNameNew = 'x'"},
      {"a read-only file deep inside stops an unforced delete", kill("tree", false),
       k + "Permission denied|DirFullName = '~/tree'"},
      {"a link to a folder goes, not the folder", kill("link"), "True"},
      {"by default the whole tree goes", kill("tree"), "True"},
      {"a missing folder", kill("tree"), k + "Path not found|DirFullName = '~/tree'"},
      {"a file is no folder", kill("outside.txt"),
       k + "Path not found|DirFullName = '~/outside.txt'"},
  });
  EXPECT_EQ(Listing(), (std::vector<std::string>{"other", "outside.txt", "target", "Новая"}));
  EXPECT_EQ(Get("outside.txt"), "kept") << "links inside are removed, not followed";
  EXPECT_EQ(Listing("target"), std::vector<std::string>{"kept.txt"});
}

// "." and ".." are resolved before anything is deleted, and whatever would stop the
// deletion part way stops it before it starts.
TEST_F(FileAndFolderOps, DirKillDeletesExactlyTheFolderNamedOrNothing) {
  for (const char* file : {"par/sub/a", "par2/sub/a", "par2/b", "here/in/a", "mounted/a"}) {
    Put(file, "x");
  }
  const SmallDisk disk(Native("mounted/disk"), "64k");
  const std::string cwd = std::filesystem::current_path();
  std::filesystem::current_path(Native("here/in"));
  const auto kill = [&](String name) { return [=, this] { return fs_->DirKill(name, true); }; };
  const std::string k = std::to_string(xcZKERR_FS_DIRKILL) + " DirKill: Permission denied|";
  Check({
      {"the folder a path names after \"..\"", kill(Path("par/sub/..")), "True"},
      {"a path through \".\"", kill(Path("par2/./sub/.")), "True"},
      {"the current folder", kill(u"."), k + "DirFullName = '.'"},
      {"a folder holding the current one", kill(u".."), k + "DirFullName = '..'"},
  });
  std::filesystem::current_path(cwd);
  if (disk.mounted()) {
    EXPECT_EQ(Run(kill(Path("mounted"))), k + "DirFullName = '~/mounted'")
        << "a file system mounted inside";
  }
  EXPECT_EQ(Listing(), (std::vector<std::string>{"here", "mounted", "par2"}));
  EXPECT_EQ(Listing("par2"), std::vector<std::string>{"b"});
  EXPECT_EQ(Listing("here/in"), std::vector<std::string>{"a"});
  EXPECT_EQ(Listing("mounted"), (std::vector<std::string>{"a", "disk"}));
}

// An ordinary user's tree holding a folder of root's: forced or not, nothing goes.
TEST_F(FileAndFolderOps, DirKillOfATreeTheUserCannotEmptyDeletesNothing) {
  if (InTestChild()) {
    const String tree = FromUtf8(std::getenv("TSRT_TREE"));
    const std::string refused = std::to_string(xcZKERR_FS_DIRKILL) + " DirKill: Permission denied";
    for (bool force : {false, true}) {
      EXPECT_EQ(Run([&] { return fs_->DirKill(tree, force); }).substr(0, refused.size()), refused);
    }
    return;
  }
  if (!CanRunAsOrdinaryUser()) GTEST_SKIP() << "no ordinary user to run as";
  const uid_t user = ThrowawayUid();
  for (const char* file : {"tree/a", "tree/mine/b", "tree/roots/c", "tree/z"}) Put(file, "x");
  ::chmod(Native().c_str(), 0777);
  for (const char* entry : {"tree", "tree/a", "tree/mine", "tree/mine/b", "tree/z"}) {
    ASSERT_EQ(::chown(Native(entry).c_str(), user, user), 0);
  }
  const ChildResult child = RunTestInChild(
      "FileAndFolderOps.DirKillOfATreeTheUserCannotEmptyDeletesNothing",
      {{"TSRT_TREE", Native("tree")}}, user);
  EXPECT_EQ(child.exit_code, 0) << child.output;
  EXPECT_NE(child.output.find("[  PASSED  ] 1 test"), std::string::npos) << child.output;
  EXPECT_EQ(Listing("tree"), (std::vector<std::string>{"a", "mine", "roots", "z"}));
  EXPECT_EQ(Listing("tree/mine"), std::vector<std::string>{"b"});
}

TEST_F(FileAndFolderOps, PathShort2LongKeepsExistingLevelsAndEmptiesMissingOnes) {
  Put("Длинное имя/file.txt", "");
  const struct {
    String path, result;
  } rows[] = {
      {Path("Длинное имя/file.txt"), Path("Длинное имя/file.txt")},
      {Path("Длинное имя/none"), Path("Длинное имя/")},
      {Path("none/Длинное имя"), Path("/Длинное имя")},
      {Path("Длинное имя/"), Path("Длинное имя/")},
      {u"//server/share/x", u"//server/share/x"},
      {u"", u""},
      {u"relative-none/x", u"relative-none/"},
  };
  for (const auto& r : rows) EXPECT_EQ(U8(fs_->PathShort2Long(r.path)), U8(r.result));
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
  struct stat before;
  ::stat(Native("f.txt").c_str(), &before);
  const struct {
    const char* what;
    std::string file;
    Variant created, accessed, written;
    bool ok;
    Date written_after;
  } rows[] = {
      {"no dates at all", "f.txt", none, none, none, true, march},
      {"a creation date is taken and ignored", "f.txt", Variant(july), none, none, true, march},
      {"text that is no date", "f.txt", none, none, Variant(u"abc"), false, march},
      {"Null", "f.txt", none, Variant::Null(), none, false, march},
      {"a bad creation date", "f.txt", Variant(u"abc"), none, Variant(july), false, march},
      {"before 1601", "f.txt", none, none, Variant(Date::FromParts({1600, 12, 31})), false, march},
      {"a missing file", "none", none, none, Variant(july), false, march},
      {"a read-only file", "ro.txt", none, none, Variant(july), false, march},
      {"a folder", "folder", none, none, Variant(july), false, march},
      {"a date the file system cannot hold sets nothing (ext4 starts in 1901)", "f.txt", none,
       none, Variant(old_date), !ext4, ext4 ? march : old_date},
      {"a date as text", "f.txt", none, none, Variant(u"2021-07-04 13:45:30"), true, july},
  };
  for (const auto& r : rows) {
    EXPECT_EQ(fs_->FileSetDateTime(Path(r.file), r.created, r.accessed, r.written), r.ok)
        << r.what;
    EXPECT_EQ(FileDateTime(Path("f.txt")), r.written_after) << r.what;
  }
  struct stat after;
  ::stat(Native("f.txt").c_str(), &after);
  EXPECT_EQ(after.st_atim.tv_sec, before.st_atim.tv_sec) << "last access untouched throughout";
  EXPECT_EQ(Outcome([&] { return ToUtf8(FileDateTime(Path("none")).ToText()); }), "error 53");
}

}  // namespace
}  // namespace tsruntime::testing
