// Listings: one folder into two tables, and every file of a tree into a dictionary.
#include <string>
#include <vector>

#include "fs_entries.h"
#include "tsruntime/clsZKFileSystem.h"
#include "tsruntime/errors.h"

namespace tsruntime {
namespace {

using namespace fs_detail;

// A listing table: two columns, rows from 0, and the row the next entry goes to.
class Table {
 public:
  // Starts a table anew, or after the rows it holds when `keep` is set. The table keeps
  // its element type; a kept table without two dimensions is out of range (9).
  Table(SafeArray& array, bool keep) : array_(array) {
    if (keep && array_.isDimensioned() && array_.ubound(2) >= 0) {
      next_ = array_.ubound(2) + 1;
      return;
    }
    array_ = SafeArray(array_.elementType(), {{0, 1}, {0, 0}});
  }

  void Add(const String& name, const String& full_path) {
    // The first row of a table made anew is there already.
    if (next_ > array_.ubound(2)) array_.RedimPreserve(next_);
    array_.set(0, next_, Variant(name));
    array_.set(1, next_, Variant(full_path));
    ++next_;
  }

  // A table that received no row and holds none gets rows -1 to -1.
  void Finish() {
    if (next_ == 0) array_ = SafeArray(array_.elementType(), {{0, 1}, {-1, -1}});
  }

 private:
  SafeArray& array_;
  int32_t next_ = 0;
};

// Adds the files of the open folder `fd` (named `path`, and `text` in UTF-16, both
// ending in "/"), then those below its subfolders, to `into`; takes ownership of `fd`.
// Links to folders are not followed: a loop of links would never end.
void CollectFiles(int fd, std::string& path, String& text, clsZKDictionary& into) {
  std::vector<std::string> subfolders;
  const size_t length = path.size(), text_length = text.size();
  ForEachEntry(fd, path, [&](int, std::string_view name, EntryKind kind) {
    if (kind == EntryKind::kFolder) subfolders.emplace_back(name);
    if (kind != EntryKind::kFile) return;
    text += FromUtf8(name);
    const Variant full(text);
    into.Add(full, full);
    text.resize(text_length);
  });
  for (const std::string& name : subfolders) {
    path.append(name).push_back('/');
    (text += FromUtf8(name)) += kSeparator;
    CollectFiles(OpenFolder(AT_FDCWD, path, path, false), path, text, into);
    path.resize(length);
    text.resize(text_length);
  }
}

}  // namespace

bool clsZKFileSystem::DirScanFiles(const String& RootFolder,
                                   const Ref<clsZKDictionary>& ResultCollection) {
  if (!ResultCollection || !IsPathExists(RootFolder)) return false;
  try {
    // Paths are absolute, without a trailing separator, as a folder object names itself.
    std::string path = AbsolutePath(NativePath(RootFolder));
    const int fd = ::open(path.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (fd < 0) return false;
    if (path != "/") path.push_back('/');
    String text = FromUtf8(path);
    CollectFiles(fd, path, text, *ResultCollection);
    return true;
  } catch (const Error&) {
    return false;  // a folder that could not be read
  }
}

bool clsZKFileSystem::DirScan(const String& DirFullName, SafeArray& DirsArray,
                              SafeArray& FilesArray, bool AddToArrays) {
  return WithErrorTrap(xcZKERR_FS_DIRSCAN, kClassName, "DirScan",
                       {{"DirFullName", DirFullName}}, [&] {
    const String prefix = StripTrailingSeparators(DirFullName) + kSeparator;
    if (!IsPathExists(prefix)) {
      for (SafeArray* a : {&DirsArray, &FilesArray}) {
        if (!AddToArrays || !a->isDimensioned()) Table(*a, false).Finish();
      }
      return false;
    }
    Table dirs(DirsArray, AddToArrays), files(FilesArray, AddToArrays);
    const std::string folder = NativePath(prefix);
    bool leading = true;
    ForEachEntry(OpenFolder(AT_FDCWD, folder, folder, true), folder,
                 [&](int, std::string_view name, EntryKind kind) {
                   // "." and ".." always lead a listing, and are never passed on; any
                   // other dot-name before the first ordinary one goes with them.
                   if (leading && name.starts_with('.')) return;
                   leading = false;
                   const String text = FromUtf8(name);
                   (kind == EntryKind::kFile ? files : dirs).Add(text, prefix + text);
                 });
    dirs.Finish();
    files.Finish();
    return true;
  });
}

}  // namespace tsruntime
