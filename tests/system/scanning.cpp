// DirScan and DirScanFiles: what is listed, in which order, and how the tables grow.
#include <functional>

#include "system/fs_fixture.h"

namespace tsruntime::testing {
namespace {

using Scanning = FsTest;

// A (column, row) table as "name|path" rows, or "-1 to -1".
Names Rows(const SafeArray& table) {
  EXPECT_EQ(table.bounds().front().upper, 1) << "two columns";
  if (table.ubound(2) == -1) return {std::to_string(table.lbound(2)) + " to -1"};
  Names rows;
  for (int32_t row = table.lbound(2); row <= table.ubound(2); ++row) {
    rows.push_back(U8(ToString(table.get(0, row))) + "|" + U8(ToString(table.get(1, row))));
  }
  return rows;
}

// Folders and files in the kernel's listing order after its leading run of dot-names, links
// to folders among the folders; the tables start anew or, when asked, grow.
TEST_F(Scanning, DirScanListsInListingOrderAfterTheLeadingDotNamesAndGrowsTheTables) {
  Put("d/Файл один.txt", "");
  MakeFolder("d/Папка");
  MakeFolder("other");
  Link("d/to-other", Native("other"));
  Link("d/to-file", Native("d/Файл один.txt"));
  Link("d/dangling", Native("none"));
  Put("two/b.txt", "");
  MakeFolder("empty");
  // Dot-names and plain names until a dot-name is listed after a plain one, so that
  // both halves of the rule are seen.
  for (int i = 0; i < 64; ++i) {
    Put("d/.dot" + std::to_string(i), "");
    Put("d/plain" + std::to_string(i), "");
    const Names order = Listing("d", false);
    const auto plain = std::find_if(order.begin(), order.end(), [](auto& n) { return n[0] != '.'; });
    if (plain != order.begin() && std::any_of(plain, order.end(), [](auto& n) { return n[0] == '.'; })) break;
  }
  Names d_dirs, d_files;
  for (const std::string& name : Listing("d", false)) {
    if (name[0] == '.' && d_dirs.empty() && d_files.empty()) continue;
    const std::string path = Native("d/" + name);
    (std::filesystem::is_directory(path) ? d_dirs : d_files).push_back(name + "|" + path);
  }
  const Names none{"-1 to -1"}, b{"b.txt|" + Native("two/b.txt")};
  Names d_files_b = d_files;
  d_files_b.push_back(b[0]);
  SafeArray dirs(VarType::kString), files(VarType::kString);
  // (what, folder, AddToArrays, result, folders then, files then)
  const std::tuple<const char*, std::string, bool, bool, Names, Names> rows[] = {
      {"an empty folder gives two empty tables", "empty", false, true, none, none},
      {"appending to empty tables starts at row 0", "d", true, true, d_dirs, d_files},
      {"appending again goes after the rows there", "two", true, true, d_dirs, d_files_b},
      {"a missing folder while appending keeps the tables", "none", true, false, d_dirs, d_files_b},
      {"an empty folder while appending adds nothing", "empty", true, true, d_dirs, d_files_b},
      {"without appending the tables start anew", "two", false, true, none, b},
      {"trailing slashes", "d///", false, true, d_dirs, d_files},
      {"a missing folder empties both tables", "none", false, false, none, none},
  };
  for (const auto& [what, folder, add, result, dirs_then, files_then] : rows) {
    EXPECT_EQ(fs_->DirScan(Path(folder), dirs, files, add), result) << what;
    EXPECT_EQ(std::pair(Rows(dirs), Rows(files)), std::pair(dirs_then, files_then)) << what;
    EXPECT_EQ(files.elementType(), VarType::kString) << what;
  }
  SafeArray list = SafeArray::FromStrings({u"x"});
  EXPECT_EQ(Run([&] { return fs_->DirScan(Path("two"), list, files, true); }),
            std::to_string(xcZKERR_FS_DIRSCAN) + " DirScan: Subscript out of range|DirFullName = '~/two'")
      << "a one-dimensional table has no row bound to continue from";
}

TEST_F(Scanning, DirScanFilesAddsEveryFilePathFolderFilesFirst) {
  for (const char* file : {"t/a.txt", "t/sub/b.txt", "t/sub/deeper/c.txt", "t/Вторая папка/d e",
                           "t/z.txt"}) {
    Put(file, "");
  }
  MakeFolder("t/empty");
  Link("t/loop", Native("t"));
  Link("t/to-file", Native("t/a.txt"));
  Names expected;  // a folder's files in listing order, then its subfolders', links not followed
  std::function<void(const std::string&)> walk = [&](const std::string& folder) {
    Names subfolders;
    for (const std::string& name : Listing(folder, false)) {
      const std::string path = Native(folder + "/" + name);
      if (!std::filesystem::is_directory(path)) expected.push_back(path);
      else if (!std::filesystem::is_symlink(path)) subfolders.push_back(folder + "/" + name);
    }
    for (const auto& sub : subfolders) walk(sub);
  };
  walk("t");
  std::filesystem::current_path(Native());
  for (const String& root : {Path("t"), Path("t/"), Path("t/sub/.."), String(u"t")}) {
    auto found = New<clsZKDictionary>();
    EXPECT_TRUE(fs_->DirScanFiles(root, found)) << U8(root);
    Names keys;
    for (int32_t i = 0; i < found->Count(); ++i) {
      keys.push_back(U8(ToString(found->Key(Variant(i)))));
      EXPECT_EQ(found->Data(Variant(i)), found->Key(Variant(i))) << "data is the path too";
    }
    EXPECT_EQ(keys, expected) << U8(root) << ": absolute paths, a relative root's too";
  }
  EXPECT_FALSE(fs_->DirScanFiles(Path("t"), nullptr)) << "no dictionary";
  EXPECT_FALSE(fs_->DirScanFiles(Path("none"), New<clsZKDictionary>())) << "no folder";
  EXPECT_FALSE(fs_->DirScanFiles(Path("t/a.txt"), New<clsZKDictionary>())) << "a file";
}

}  // namespace
}  // namespace tsruntime::testing
