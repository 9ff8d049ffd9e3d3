// DirScan and DirScanFiles: what is listed, in which order, and how the tables grow.
#include "system/fs_fixture.h"

namespace tsruntime::testing {
namespace {

class Scanning : public FsTest {
 protected:
  // The names of a folder in the kernel's listing order.
  std::vector<std::string> KernelOrder(const std::string& relative) const {
    std::vector<std::string> names;
    for (const auto& e : std::filesystem::directory_iterator(Native(relative))) {
      names.push_back(e.path().filename().string());
    }
    return names;
  }
};

// A table as "name|path" rows, or "rows -1 to -1".
std::vector<std::string> Rows(const SafeArray& table) {
  std::vector<std::string> rows;
  EXPECT_EQ(table.dimensions(), 2);
  EXPECT_EQ(table.lbound(1), 0);
  EXPECT_EQ(table.ubound(1), 1);
  if (table.ubound(2) == -1) {
    EXPECT_EQ(table.lbound(2), -1);
    return {"rows -1 to -1"};
  }
  for (int32_t row = table.lbound(2); row <= table.ubound(2); ++row) {
    rows.push_back(U8(ToString(table.get(0, row))) + "|" + U8(ToString(table.get(1, row))));
  }
  return rows;
}

TEST_F(Scanning, DirScanListsFoldersAndFilesInListingOrder) {
  Put("d/Файл один.txt", "");
  Put("d/b.bin", "");
  MakeFolder("d/Папка");
  MakeFolder("other");
  Link("d/to-other", Native("other"));
  Link("d/to-file", Native("d/b.bin"));
  Link("d/dangling", Native("none"));
  Put("d/.hidden", "");
  std::vector<std::string> dirs, files;
  bool leading = true;
  for (const std::string& name : KernelOrder("d")) {
    if (leading && name[0] == '.') continue;
    leading = false;
    const bool folder = name == "Папка" || name == "to-other";
    (folder ? dirs : files).push_back(name + "|" + Native("d/" + name));
  }
  SafeArray dir_table(VarType::kString), file_table(VarType::kString);
  for (const String& path : {Path("d"), Path("d///")}) {
    ASSERT_TRUE(fs_->DirScan(path, dir_table, file_table));
    EXPECT_EQ(Rows(dir_table), dirs) << "folders, links to folders among them";
    EXPECT_EQ(Rows(file_table), files) << "files, links to files and dangling links";
    EXPECT_EQ(dir_table.elementType(), VarType::kString);
  }
}

TEST_F(Scanning, DirScanSkipsOnlyTheLeadingRunOfDotNames) {
  // Created until a dot-name is listed after an ordinary name, so that both parts of
  // the rule are seen.
  MakeFolder("d");
  std::vector<std::string> order;
  for (int i = 0; i < 64; ++i) {
    Put("d/.dot" + std::to_string(i), "");
    Put("d/plain" + std::to_string(i), "");
    order = KernelOrder("d");
    const auto first_plain = std::find_if(order.begin(), order.end(),
                                          [](const std::string& n) { return n[0] != '.'; });
    if (std::any_of(first_plain, order.end(), [](const std::string& n) { return n[0] == '.'; }) &&
        first_plain != order.begin()) {
      break;
    }
  }
  std::vector<std::string> expected;
  bool leading = true;
  for (const std::string& name : order) {
    if (leading && name[0] == '.') continue;
    leading = false;
    expected.push_back(name + "|" + Native("d/" + name));
  }
  SafeArray dirs(VarType::kString), files(VarType::kString);
  ASSERT_TRUE(fs_->DirScan(Path("d"), dirs, files));
  EXPECT_EQ(Rows(files), expected);
  EXPECT_EQ(Rows(dirs), std::vector<std::string>{"rows -1 to -1"});
}

TEST_F(Scanning, DirScanTablesStartAnewOrGrow) {
  Put("one/a.txt", "");
  MakeFolder("one/sub");
  Put("two/b.txt", "");
  MakeFolder("empty");
  const std::vector<std::string> empty{"rows -1 to -1"};
  SafeArray dirs(VarType::kString), files(VarType::kString);
  const struct {
    const char* what;
    std::string folder;
    bool add;
    bool result;
    std::vector<std::string> dirs, files;
  } rows[] = {
      {"an empty folder gives two empty tables", "empty", false, true, empty, empty},
      {"appending to empty tables starts at row 0", "one", true, true,
       {"sub|" + Native("one/sub")}, {"a.txt|" + Native("one/a.txt")}},
      {"appending again goes after the rows there", "two", true, true,
       {"sub|" + Native("one/sub")},
       {"a.txt|" + Native("one/a.txt"), "b.txt|" + Native("two/b.txt")}},
      {"a missing folder while appending keeps dimensioned tables", "none", true, false,
       {"sub|" + Native("one/sub")},
       {"a.txt|" + Native("one/a.txt"), "b.txt|" + Native("two/b.txt")}},
      {"an empty folder while appending adds nothing", "empty", true, true,
       {"sub|" + Native("one/sub")},
       {"a.txt|" + Native("one/a.txt"), "b.txt|" + Native("two/b.txt")}},
      {"without appending the tables start anew", "two", false, true, empty,
       {"b.txt|" + Native("two/b.txt")}},
      {"a missing folder empties both tables", "none", false, false, empty, empty},
  };
  for (const auto& r : rows) {
    EXPECT_EQ(fs_->DirScan(Path(r.folder), dirs, files, r.add), r.result) << r.what;
    EXPECT_EQ(Rows(dirs), r.dirs) << r.what;
    EXPECT_EQ(Rows(files), r.files) << r.what;
  }

  SafeArray never(VarType::kString), kept = SafeArray(VarType::kString, {{0, 1}, {0, 0}});
  kept.set(1, 0, Variant(u"kept"));
  EXPECT_FALSE(fs_->DirScan(Path("none"), never, kept, true));
  EXPECT_EQ(Rows(never), empty) << "a table never dimensioned becomes empty";
  EXPECT_EQ(Rows(kept), std::vector<std::string>{"|kept"}) << "a table with rows is kept";
}

TEST_F(Scanning, DirScanRaisesWhatGoesWrongWithTheFolderNamed) {
  Put("d/a.txt", "");
  SafeArray list = SafeArray::FromStrings({u"x"}), files(VarType::kString);
  EXPECT_EQ(RaisedFields([&] { fs_->DirScan(Path("d"), list, files, true); }),
            std::to_string(xcZKERR_FS_DIRSCAN) +
                "\nZKRuntimeLib.clsZKFileSystem.DirScan\nSubscript out of range\r\n"
                "DirFullName = '" + Native("d") + "'\n\n0")
      << "a one-dimensional table has no row bound to continue from";
}

TEST_F(Scanning, DirScanFilesAddsEveryFilePathFolderFilesFirst) {
  Put("t/a.txt", "");
  Put("t/sub/b.txt", "");
  Put("t/sub/deeper/c.txt", "");
  Put("t/Вторая папка/d e.txt", "");
  Put("t/z.txt", "");
  MakeFolder("t/empty");
  Link("t/loop", Native("t"));
  Link("t/to-file", Native("t/a.txt"));
  // The expected order: a folder's files in listing order, then each subfolder's.
  std::vector<std::string> expected;
  std::function<void(const std::string&)> walk = [&](const std::string& folder) {
    std::vector<std::string> subfolders;
    for (const auto& e : std::filesystem::directory_iterator(Native(folder))) {
      const std::string name = e.path().filename().string();
      if (e.is_symlink() && e.is_directory()) continue;
      if (e.is_directory()) {
        subfolders.push_back(folder + "/" + name);
      } else {
        expected.push_back(Native(folder + "/" + name));
      }
    }
    for (const auto& sub : subfolders) walk(sub);
  };
  walk("t");

  for (const String& root : {Path("t"), Path("t/"), Path("t/sub/..")}) {
    auto found = New<clsZKDictionary>();
    ASSERT_TRUE(fs_->DirScanFiles(root, found)) << U8(root);
    std::vector<std::string> keys;
    for (int32_t i = 0; i < found->Count(); ++i) {
      keys.push_back(U8(ToString(found->Key(Variant(i)))));
      EXPECT_EQ(found->Data(Variant(i)), found->Key(Variant(i))) << "data is the path too";
    }
    EXPECT_EQ(keys, expected) << U8(root);
  }

  std::filesystem::current_path(Native());
  auto relative = New<clsZKDictionary>();
  ASSERT_TRUE(fs_->DirScanFiles(u"t/sub/deeper", relative));
  EXPECT_EQ(U8(ToString(relative->Key(Variant(0)))), Native("t/sub/deeper/c.txt"))
      << "a relative root gives absolute paths";
  std::filesystem::current_path("/");

  EXPECT_FALSE(fs_->DirScanFiles(Path("t"), nullptr)) << "no dictionary";
  EXPECT_FALSE(fs_->DirScanFiles(Path("none"), New<clsZKDictionary>())) << "no folder";
  EXPECT_FALSE(fs_->DirScanFiles(Path("t/a.txt"), New<clsZKDictionary>())) << "a file";
}

}  // namespace
}  // namespace tsruntime::testing
