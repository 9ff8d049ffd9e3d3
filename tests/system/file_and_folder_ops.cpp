// Files and folders: existence tests, deletion, renaming, whole paths made at once, long
// names, and the errors each raises (the wrapped runtime failure, then its arguments).
#include "system/fs_fixture.h"

namespace tsruntime::testing {
namespace {

// The five fields of an error raised by the class, as RaisedFields shows them.
std::string Raised(int32_t code, const char* operation, const std::string& description) {
  return std::to_string(code) + "\nZKRuntimeLib.clsZKFileSystem." + operation + "\n" +
         description + "\n\n0";
}

class FileAndFolderOps : public FsTest {
 protected:
  // Wraps a call so that table rows can hold its outcome: "True", "False" or the fields
  // of what it raised.
  template <class F>
  std::string Run(F&& call) {
    std::string raised = RaisedFields([&] { result_ = call(); });
    return raised == "nothing raised" ? (result_ ? "True" : "False") : raised;
  }
  bool result_ = false;
};

TEST_F(FileAndFolderOps, IsPathExistsWithOrWithoutTrailingSeparators) {
  MakeFolder("Папка с пробелом");
  Put("file.txt", "x");
  Link("to-folder", Native("Папка с пробелом"));
  const struct {
    const char* what;
    String path;
    bool exists;
  } rows[] = {
      {"a folder", Path("Папка с пробелом"), true},
      {"the same with one trailing slash", Path("Папка с пробелом/"), true},
      {"the same with three", Path("Папка с пробелом///"), true},
      {"a link to a folder", Path("to-folder"), true},
      {"the root", u"/", true},
      {"the root written twice", u"//", true},
      {"the current folder", u".", true},
      {"a file", Path("file.txt"), false},
      {"a missing folder", Path("none"), false},
      {"the empty path", u"", false},
  };
  for (const auto& r : rows) EXPECT_EQ(fs_->IsPathExists(r.path), r.exists) << r.what;
}

TEST_F(FileAndFolderOps, IsDirEmptyIgnoresEveryDotName) {
  const struct {
    const char* what;
    std::vector<std::string> files, folders;
    bool empty;
  } rows[] = {
      {"nothing in it", {}, {}, true},
      {"only a file whose name begins with a full stop", {".profile"}, {}, true},
      {"only dot-names, a folder among them", {".a"}, {".git"}, true},
      {"one ordinary file", {"a.txt"}, {}, false},
      {"one ordinary subfolder", {}, {"sub"}, false},
      {"an ordinary file among dot-names", {".a", "b", ".c"}, {}, false},
  };
  for (const auto& r : rows) {
    std::filesystem::remove_all(Native("d"));
    MakeFolder("d");
    for (const auto& f : r.files) Put("d/" + f, "");
    for (const auto& f : r.folders) MakeFolder("d/" + f);
    EXPECT_EQ(fs_->IsDirEmpty(Path("d")), r.empty) << r.what;
    EXPECT_EQ(fs_->IsDirEmpty(Path("d//")), r.empty) << r.what << ", trailing slashes";
  }
  EXPECT_TRUE(fs_->IsDirEmpty(Path("none"))) << "a missing folder lists nothing";
}

TEST_F(FileAndFolderOps, FileKillAndFileRename) {
  const std::string root = Native();
  const struct {
    const char* what;
    std::function<bool()> call;
    std::string outcome;
  } rows[] = {
      {"a file is deleted", [&] { return fs_->FileKill(Path("a.txt")); }, "True"},
      {"a read-only file without force is refused",
       [&] { return fs_->FileKill(Path("ro.txt"), false); },
       Raised(xcZKERR_FS_FILEKILL, "FileKill",
              "Permission denied\r\nFileFullName = '" + root + "/ro.txt'")},
      {"a read-only file is deleted by default",
       [&] { return fs_->FileKill(Path("ro.txt")); }, "True"},
      {"a missing file", [&] { return fs_->FileKill(Path("none.txt")); },
       Raised(xcZKERR_FS_FILEKILL, "FileKill",
              "File not found\r\nFileFullName = '" + root + "/none.txt'")},
      {"a file in a missing folder", [&] { return fs_->FileKill(Path("none/a.txt")); },
       Raised(xcZKERR_FS_FILEKILL, "FileKill",
              "Path not found\r\nFileFullName = '" + root + "/none/a.txt'")},
      {"a folder is no file", [&] { return fs_->FileKill(Path("folder")); },
       Raised(xcZKERR_FS_FILEKILL, "FileKill",
              "File not found\r\nFileFullName = '" + root + "/folder'")},
      {"a link goes, not its file", [&] { return fs_->FileKill(Path("link")); }, "True"},
      {"a Cyrillic name with spaces is renamed",
       [&] { return fs_->FileRename(Path("Мой файл.txt"), u"Новое имя.txt"); }, "True"},
      {"renaming to the same name changes nothing",
       [&] { return fs_->FileRename(Path("b.txt"), u"b.txt"); }, "True"},
      {"a taken name is refused", [&] { return fs_->FileRename(Path("b.txt"), u"c.txt"); },
       Raised(xcZKERR_FS_FILERENAME, "FileRename",
              "File already exists\r\nFileFullName = '" + root +
                  "/b.txt'\r\nFileShortNameNew = 'c.txt'")},
      {"a missing file is not renamed",
       [&] { return fs_->FileRename(Path("none.txt"), u"x.txt"); },
       Raised(xcZKERR_FS_FILERENAME, "FileRename",
              "File not found\r\nFileFullName = '" + root +
                  "/none.txt'\r\nFileShortNameNew = 'x.txt'")},
      {"a new name with a folder in it is a bad name",
       [&] { return fs_->FileRename(Path("b.txt"), u"folder/b.txt"); },
       Raised(xcZKERR_FS_FILERENAME, "FileRename",
              "Bad file name or number\r\nFileFullName = '" + root +
                  "/b.txt'\r\nFileShortNameNew = 'folder/b.txt'")},
  };
  Put("a.txt", "x");
  Put("ro.txt", "x", 0444);
  Put("b.txt", "b");
  Put("c.txt", "c");
  Put("Мой файл.txt", "x");
  MakeFolder("folder");
  Put("target.txt", "kept");
  Link("link", Native("target.txt"));
  for (const auto& r : rows) EXPECT_EQ(Run(r.call), r.outcome) << r.what;
  EXPECT_EQ(Listing(), (std::vector<std::string>{"b.txt", "c.txt", "folder", "target.txt",
                                                 "Новое имя.txt"}));
  EXPECT_EQ(Get("b.txt"), "b");
  EXPECT_EQ(Get("c.txt"), "c") << "a refused rename overwrites nothing";
}

TEST_F(FileAndFolderOps, DirsMakeCreatesEveryMissingLevel) {
  const std::string root = Native();
  Put("plain", "x");
  const struct {
    const char* what;
    String path;
    std::string outcome;
    const char* made;  // a folder that must exist afterwards
  } rows[] = {
      {"three missing levels", Path("a/b/c"), "True", "a/b/c"},
      {"every level there already", Path("a/b"), "True", "a/b"},
      {"doubled and trailing slashes", Path("x//y/"), "True", "x/y"},
      {"Cyrillic letters and spaces", Path("Новая папка/ещё одна"), "True",
       "Новая папка/ещё одна"},
      {"a file in the way", Path("plain/sub"),
       Raised(xcZKERR_FS_DIRSMAKE, "DirsMake",
              "File already exists\r\nDirFullPath = '" + root + "/plain/sub'"),
       nullptr},
      {"a relative path names a drive that does not exist", u"rel/sub",
       Raised(xcZKERR_FS_DIRSMAKE, "DirsMake", "Диск не найден rel"), nullptr},
      {"the empty path has no first element", u"",
       Raised(xcZKERR_FS_DIRSMAKE, "DirsMake", "Subscript out of range\r\nDirFullPath = ''"),
       nullptr},
      {"a network path shorter than three characters", u"//", "False", nullptr},
      {"a network path of a server alone makes nothing", u"//server", "True", nullptr},
      {"a network share on no server", u"//no-such-server-tsrt/share",
       Raised(xcZKERR_FS_DIRSMAKE, "DirsMake",
              "Path not found\r\nDirFullPath = '//no-such-server-tsrt/share'"),
       nullptr},
  };
  for (const auto& r : rows) {
    EXPECT_EQ(Run([&] { return fs_->DirsMake(r.path); }), r.outcome) << r.what;
    if (r.made) {
      EXPECT_TRUE(std::filesystem::is_directory(Native(r.made))) << r.what;
    }
  }
  EXPECT_FALSE(Exists("rel")) << "nothing is made under a missing drive";
}

TEST_F(FileAndFolderOps, DirsMakeSpeaksTheInterfaceLanguage) {
  const struct {
    int32_t language;
    std::string description;
  } rows[] = {{xcZKLANG_RUS, "Диск не найден D:"},
              {xcZKLANG_ENG, "Drive is not found D:"},
              {7, "Drive is not found D:"}};
  for (const auto& r : rows) {
    SetInterfaceLanguage(r.language);
    EXPECT_EQ(Run([&] { return fs_->DirsMake(u"D:/data"); }),
              Raised(xcZKERR_FS_DIRSMAKE, "DirsMake", r.description))
        << "language " << r.language;
  }
  SetInterfaceLanguage(xcZKLANG_RUS);
}

TEST_F(FileAndFolderOps, DirRenameAndDirKill) {
  const std::string root = Native();
  const struct {
    const char* what;
    std::function<bool()> call;
    std::string outcome;
  } rows[] = {
      {"a folder is renamed, trailing slash and all",
       [&] { return fs_->DirRename(Path("old/"), u"Новая"); }, "True"},
      {"a taken name is refused", [&] { return fs_->DirRename(Path("Новая"), u"other"); },
       Raised(xcZKERR_FS_DIRRENAME, "DirRename",
              "File already exists\r\nDirFullName = '" + root +
                  "/Новая'\r\nDirShortNameNew = 'other'")},
      {"a missing folder", [&] { return fs_->DirRename(Path("none"), u"x"); },
       Raised(xcZKERR_FS_DIRRENAME, "DirRename",
              "Path not found\r\nDirFullName = '" + root + "/none'\r\nDirShortNameNew = 'x'")},
      {"without force a read-only file deep inside stops everything",
       [&] { return fs_->DirKill(Path("tree"), false); },
       Raised(xcZKERR_FS_DIRKILL, "DirKill",
              "Permission denied\r\nDirFullName = '" + root + "/tree'")},
      {"a link to a folder goes, not the folder", [&] { return fs_->DirKill(Path("link")); },
       "True"},
      {"by default the whole tree goes, read-only entries too",
       [&] { return fs_->DirKill(Path("tree")); }, "True"},
      {"a missing folder", [&] { return fs_->DirKill(Path("tree")); },
       Raised(xcZKERR_FS_DIRKILL, "DirKill",
              "Path not found\r\nDirFullName = '" + root + "/tree'")},
      {"a file is no folder", [&] { return fs_->DirKill(Path("outside.txt")); },
       Raised(xcZKERR_FS_DIRKILL, "DirKill",
              "Path not found\r\nDirFullName = '" + root + "/outside.txt'")},
  };
  MakeFolder("old");
  MakeFolder("other");
  Put("tree/a.txt", "");
  Put("tree/sub/deeper/ro.txt", "", 0444);
  ::chmod(Native("tree/sub").c_str(), 0555);
  Put("outside.txt", "kept");
  Link("tree/sub/to-outside", Native("outside.txt"));
  Link("tree/to-other", Native("other"));
  MakeFolder("target");
  Put("target/kept.txt", "");
  Link("link", Native("target"));
  for (const auto& r : rows) EXPECT_EQ(Run(r.call), r.outcome) << r.what;
  EXPECT_EQ(Listing(), (std::vector<std::string>{"other", "outside.txt", "target", "Новая"}));
  EXPECT_EQ(Get("outside.txt"), "kept") << "links inside are removed, not followed";
  EXPECT_EQ(Listing("target"), std::vector<std::string>{"kept.txt"});
}

TEST_F(FileAndFolderOps, PathShort2LongKeepsExistingLevelsAndEmptiesMissingOnes) {
  Put("Длинное имя/file.txt", "");
  const std::string root = Native();
  const struct {
    const char* what;
    String path;
    String result;
  } rows[] = {
      {"every level exists", Path("Длинное имя/file.txt"), Path("Длинное имя/file.txt")},
      {"a missing last level becomes empty", Path("Длинное имя/none"), Path("Длинное имя/")},
      {"a missing middle level becomes empty", Path("none/Длинное имя"), Path("/Длинное имя")},
      {"a trailing slash stays", Path("Длинное имя/"), Path("Длинное имя/")},
      {"a network path comes back unchanged", u"//server/share/x", u"//server/share/x"},
      {"the empty path comes back unchanged", u"", u""},
      {"a relative path keeps its first element", u"relative-none/x", u"relative-none/"},
  };
  for (const auto& r : rows) EXPECT_EQ(U8(fs_->PathShort2Long(r.path)), U8(r.result)) << r.what;
  EXPECT_EQ(Run([&] { return fs_->PathShort2Long(Path(std::string(300, 'n'))).empty(); }),
            Raised(xcZKERR_FS_PATHSHORT2LONG, "PathShort2Long",
                   "Bad file name or number\r\nPathShortName = '" + root + "/" +
                       std::string(300, 'n') + "'"))
      << "a name longer than the file system allows";
}

TEST_F(FileAndFolderOps, FileSetDateTimeSetsWhatIsGivenAndRefusesWhatIsNot) {
  Put("f.txt", "x");
  Put("ro.txt", "x", 0444);
  MakeFolder("folder");
  const Date july = Date::FromParts({2021, 7, 4, 13, 45, 30});
  const Date march = Date::FromParts({2001, 3, 2, 1, 2, 3});
  const Variant none = Variant::Missing();
  struct stat info;
  const auto times = [&] {
    ::stat(Native("f.txt").c_str(), &info);
    return std::make_pair(info.st_atim.tv_sec, info.st_mtim.tv_sec);
  };
  ASSERT_TRUE(fs_->FileSetDateTime(Path("f.txt"), none, Variant(march), Variant(march)));
  const auto march_times = times();
  const struct {
    const char* what;
    std::string file;
    Variant created, accessed, written;
    bool ok;
    bool write_is_july;
  } rows[] = {
      {"no dates at all changes nothing", "f.txt", none, none, none, true, false},
      {"a creation date alone is taken and ignored", "f.txt", Variant(july), none, none, true,
       false},
      {"text that is no date", "f.txt", none, none, Variant(u"abc"), false, false},
      {"Null", "f.txt", none, Variant::Null(), none, false, false},
      {"a bad creation date fails as well", "f.txt", Variant(u"abc"), none, Variant(july),
       false, false},
      {"a date before 1601", "f.txt", none, none, Variant(Date::FromParts({1600, 12, 31})),
       false, false},
      {"a missing file", "none.txt", none, none, Variant(july), false, false},
      {"a read-only file", "ro.txt", none, none, Variant(july), false, false},
      {"a folder", "folder", none, none, Variant(july), false, false},
      {"a date given as text", "f.txt", none, none, Variant(u"2021-07-04 13:45:30"), true, true},
  };
  for (const auto& r : rows) {
    EXPECT_EQ(fs_->FileSetDateTime(Path(r.file), r.created, r.accessed, r.written), r.ok)
        << r.what;
    EXPECT_EQ(times().first, march_times.first) << r.what << ": last access untouched";
    EXPECT_EQ(FileDateTime(Path("f.txt")), r.write_is_july ? july : march) << r.what;
  }
}

}  // namespace
}  // namespace tsruntime::testing
