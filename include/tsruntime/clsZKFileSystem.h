// clsZKFileSystem: files and folders for hosts — tests, times, deletion and renaming,
// whole paths created at once, disk sizes, system folders, one-level and recursive
// listings, and whole-file reading and writing as bytes or as ANSI text.
//
//   auto fs = tsruntime::New<tsruntime::clsZKFileSystem>();
//   fs->DirsMake(u"/tmp/a/b/c");                  // True; every missing level created
//   fs->StringWrite(u"Привет", u"/tmp/a/x.txt");  // six bytes of code page 1251
//   String text;
//   fs->StringRead(text, u"/tmp/a/x.txt");        // True, text == u"Привет"
//
// Paths. Hosts were written for a system whose separator is "\"; here it is "/", and
// every place that appends, strips or splits at a separator does so at "/". The root
// stands for the drive of an absolute path: the empty first element before the leading
// "/", which always exists and is ready. The first element of a relative path is taken
// for a drive name, which does not exist. A path that begins with "//" is a network
// path. Names go to the kernel as UTF-8, except where an operation says that its path
// passes through the ANSI code page (characters the code page lacks become "?").
// "Read-only" means that the owner has no write permission; the class checks that bit
// itself, so the rules hold for root as well. Hidden and system attributes do not
// exist. See docs/filesystem.md.
//
// Failures. The tests and queries (`Is...`, `FileSetDateTime`, `GetDisk...`,
// `GetSysFolderName`, `NormalizePath`, `DirScanFiles` and the file content operations)
// never raise: they return False, -1 or an empty string. `FileKill`, `FileRename`,
// `DirsMake`, `DirRename`, `DirKill`, `PathShort2Long` and `DirScan` raise their own
// code of `xeZK_ERROR_CODES` in the wrapping form, source
// "ZKRuntimeLib.clsZKFileSystem." + operation: the description of the underlying
// failure (the host runtime's number and text: "File not found" 53, "Path not found"
// 76, "Permission denied" 70, "File already exists" 58, "Bad file name or number" 52,
// "Path/File access error" 75, "Disk full" 61...), then CR LF and one line per
// argument, `Name = 'value'`:
//
//   fs->FileKill(u"/tmp/none");
//   // raises xcZKERR_FS_FILEKILL: "File not found\r\nFileFullName = '/tmp/none'"
//
// Replacing a file (`BinaryWrite`, `StringWrite` in replace mode) takes one of two
// routes (docs/filesystem.md has the table). Where a rename keeps what the user sees,
// the new content goes to a copy in the same folder, "." + name + ".tsrt-" + a digit,
// is flushed and renamed over the old file: a crash or a kill leaves the old file or
// the new one, whole, and perhaps the copy, which the next replacement removes.
// Elsewhere the file is written in place, as the interface itself writes it: a device
// or a pipe (never replaced, never waited on: a pipe with no reader fails at once),
// a file with other names (hard links), a file whose owner or group the writer could
// not give back, a writable file in a folder the writer may not write, and a file on a
// disk with room for the new content only in the file itself. Either way the file
// keeps its permissions, owner, group and names, and content that does not fit leaves
// the old one intact. A symbolic link is followed to the file it names (the link stays
// a link).
#pragma once

#include <cstdint>

#include "tsruntime/automation/dispatch.h"
#include "tsruntime/automation/safearray.h"
#include "tsruntime/clsZKDictionary.h"
#include "tsruntime/errors.h"

namespace tsruntime {

// The folders `GetSysFolderName` knows.
enum xeZK_GETSYSFOLDER : int32_t {
  xcZK_GETSYSFOLDER_WINDOWS = 0,
  xcZK_GETSYSFOLDER_SYSTEM = 1,
  xcZK_GETSYSFOLDER_TEMP = 2,
};

// How `StringWrite` writes; a set of bits.
enum xeZK_FILEWRITEMODES : int32_t {
  xcZK_FILEWRITE_IFEXISTS = 1,  // write only when the file exists already
  xcZK_FILEWRITE_REPLACE = 4,   // the new text replaces the file
  xcZK_FILEWRITE_APPEND = 8,    // the new text goes at the end
};

class clsZKFileSystem : public Object {
 public:
  clsZKFileSystem();
  ~clsZKFileSystem() override;
  TSRUNTIME_CLASS_INFO;

  // --- Files ------------------------------------------------------------------------

  // Sets the last access and last write times of a file to the local dates given;
  // a date left out (Missing) keeps its time. The creation date is accepted and
  // ignored: the file system keeps no creation time that could be set. The dates are
  // taken to the second and turned into universal time with the offset from UTC in
  // force now, not the one in force on that date. `FileName` passes through the ANSI
  // code page.
  // False, with nothing changed, for a missing file, a folder, a read-only file, a
  // value that is not a date (Null, "abc"), a date before 1601, or a time the file
  // system cannot hold (ext4: before 1901-12-13), which is found by reading it back.
  // With no dates at all it returns True for a file that could be written, and changes
  // nothing.
  bool FileSetDateTime(const String& FileName, const Variant& DateCreated = Variant::Missing(),
                       const Variant& DateLastAccess = Variant::Missing(),
                       const Variant& DateLastWrite = Variant::Missing());

  // True when `FileFullName` opens for reading: a file, or a link to one. A folder, a
  // missing or unreadable file gives False.
  bool IsFileExists(const String& FileFullName);

  // Deletes a file (a symbolic link: the link itself). Without `ForceRemove` a
  // read-only file is not deleted. True on success; raises xcZKERR_FS_FILEKILL
  // wrapping 53 (missing, or a folder), 76 (a missing folder on the way), 70
  // (read-only without force). Argument line: FileFullName.
  bool FileKill(const String& FileFullName, bool ForceRemove = true);

  // Renames a file within its folder to `FileShortNameNew` (a name, no folder). True on
  // success, also when the name does not change; raises xcZKERR_FS_FILERENAME wrapping
  // 53 (no such file), 58 (the new name is taken) or 52 (a new name that is empty,
  // "." or "..", or holds "/"). Argument lines: FileFullName, FileShortNameNew.
  bool FileRename(const String& FileFullName, const String& FileShortNameNew);

  // --- Folders ----------------------------------------------------------------------

  // True when the path, with its trailing "/" stripped, names a folder (or a link to
  // one). "/", "//" ... stand for the root and give True; "" gives False.
  bool IsPathExists(const String& DirFullPath);

  // True when the folder lists no entry other than those whose name begins with ".":
  // a folder holding only ".profile" counts as empty. A missing folder lists nothing
  // and is empty too.
  bool IsDirEmpty(const String& DirFullPath);

  // Creates every missing level of a path and returns True (also when all exist).
  //   - "/a/b/c": the drive is the root; "/a", "/a/b", "/a/b/c" are made as needed.
  //     Doubled or trailing "/" make empty levels, which are skipped.
  //   - "a/b": "a" is taken for a drive, which does not exist: raises
  //     xcZKERR_FS_DIRSMAKE with "Диск не найден a" (Russian interface) or "Drive is not
  //     found a" (any other language), no argument line.
  //   - "//server/share/dir" (network path): no drive check; the levels after the server
  //     ("//server/share", then "//server/share/dir") are made as needed. A text of
  //     fewer than three characters ("//") returns False.
  //   - "" raises xcZKERR_FS_DIRSMAKE wrapping "Subscript out of range" (9).
  // A level that cannot be made raises xcZKERR_FS_DIRSMAKE wrapping 58 (a file of that
  // name exists), 76 (a missing level it could not reach) or 70. Argument line:
  // DirFullPath.
  bool DirsMake(const String& DirFullPath);

  // Renames a folder within its parent. True on success (also when the name does not
  // change); raises xcZKERR_FS_DIRRENAME wrapping 76 (no such folder), 58 (the name is
  // taken) or 52 (a bad new name, as in `FileRename`). Argument lines: DirFullName,
  // DirShortNameNew.
  bool DirRename(const String& DirFullName, const String& DirShortNameNew);

  // Deletes a folder with everything in it (a link to a folder: the link itself; links
  // inside are removed, never followed). "." and ".." are resolved in the text first:
  // DirKill(u"par/sub/..") deletes par. Either the whole folder goes and the result is
  // True, or nothing is deleted: raises xcZKERR_FS_DIRKILL wrapping 76 (no such folder)
  // or 70 before deleting anything when something in the way would stop it part way —
  // a read-only entry without `ForceRemove`, an entry the user may not remove, a file
  // system mounted inside, a parent that does not let it go, the current folder or one
  // holding it, the root. Argument line: DirFullName.
  bool DirKill(const String& DirFullName, bool ForceRemove = true);

  // There are no short names: every existing level is its own long name, and a level
  // that does not exist becomes an empty one:
  //   PathShort2Long(u"/tmp/none/x")  ==  u"/tmp//"
  // A network path ("//...") and "" come back unchanged. Raises
  // xcZKERR_FS_PATHSHORT2LONG when a level cannot be looked at (52 for a name holding
  // NUL or too long, 70 ...). Argument line: PathShortName.
  String PathShort2Long(const String& PathShortName);

  // --- Disks, system folders, normalising -------------------------------------------

  // Size and free space (for an unprivileged user) in bytes of the file system holding
  // `DiskName` (any path on it; "/" for the root), computed in 32 signed bits: -1 when
  // it is 2 GiB or more, and when the path cannot be examined. `DiskName` passes
  // through the ANSI code page.
  int32_t GetDiskSpaceAll(const String& DiskName);
  int32_t GetDiskSpaceFree(const String& DiskName);

  // The folder, ending in exactly one "/": WINDOWS "/etc/" (where system-wide
  // settings live), SYSTEM "/usr/lib/" (system libraries), TEMP $TMPDIR or else "/tmp/".
  // Any other type gives "". The text passes through the ANSI code page.
  String GetSysFolderName(xeZK_GETSYSFOLDER FolderType);

  // The absolute form of `Expression`: relative to the current directory, "." and ".."
  // resolved, doubled and trailing "/" dropped, links not followed, existence not
  // checked; with `ExpressionIsFolder` one "/" is appended, even to "/" ("//").
  // A non-empty `BaseFolder` first becomes the process's current directory and stays
  // so after the call; a base folder that cannot be entered is ignored. `BaseFolder`
  // passes through the ANSI code page. "" on failure.
  //   NormalizePath(u"../x", false, u"/tmp/a")  ==  u"/tmp/x"   // and cwd is /tmp/a
  String NormalizePath(const String& Expression, bool ExpressionIsFolder,
                       const String& BaseFolder);

  // --- Listings ---------------------------------------------------------------------

  // Lists one folder into two tables indexed (column, row): column 0 the name, column
  // 1 the folder + "/" + name; `DirsArray` gets the folders (and links to folders),
  // `FilesArray` everything else. Rows come in the file system's listing order, with
  // "." and ".." and the leading run of names beginning with "." left out (a dot-name
  // listed after an ordinary name is kept). An empty table has rows -1 to -1.
  //   - AddToArrays False: both tables are made anew.
  //   - AddToArrays True: rows go after those the tables hold; a table never
  //     dimensioned, or with rows -1 to -1, starts at row 0. The tables keep their
  //     element type.
  // A folder that does not exist returns False with both tables empty (AddToArrays
  // True: only the tables never dimensioned become empty). Raises xcZKERR_FS_DIRSCAN
  // when the folder cannot be read, wrapping the failure; argument line DirFullName.
  bool DirScan(const String& DirFullName, SafeArray& DirsArray, SafeArray& FilesArray,
               bool AddToArrays = false);

  // Adds the absolute path of every file below `RootFolder` to the dictionary, as key
  // and as data: a folder's files (in listing order) before the files of its
  // subfolders, depth first. Links to files are files; links to folders are not
  // followed. False for a null dictionary, a folder that does not exist or cannot be
  // read; True otherwise. What the dictionary does with a key it holds is its own
  // affair.
  bool DirScanFiles(const String& RootFolder, const Ref<clsZKDictionary>& ResultCollection);

  // --- Whole-file content -----------------------------------------------------------

  // Reads a whole file into a byte array with bounds 0 to length - 1 and returns True.
  // False, with the array unchanged, for a missing or unreadable file, a folder, an
  // empty file (no array has bounds 0 to -1) or one of 2 GiB or more. Type mismatch
  // (13) when the array is not a byte array.
  bool BinaryRead(const String& FileFullName, SafeArray& DataArrayBuf);

  // Replaces the file with every byte of `DataArray` (a read-only file too) and returns
  // True; an array never dimensioned or without elements leaves an empty file. A device
  // or a pipe is written into. False, with the old file intact, when it cannot be
  // written (missing folder, a folder of that name, a pipe with no reader, a disk without
  // room for the new content). Type mismatch (13) for an array that is not of bytes.
  bool BinaryWrite(const String& FileFullName, const SafeArray& DataArray);

  // Reads a whole file as ANSI text, one character per byte, into `DataBuf` and returns
  // True; an empty file gives "". False, with `DataBuf` unchanged, for a missing or
  // unreadable file, a folder, or a file of 2 GiB or more.
  bool StringRead(String& DataBuf, const String& FileFullName);

  // The content `StringRead` reads, or "" when it fails (or `FileFullName` is not text).
  String StringReadAsString(const Variant& FileFullName);

  // Writes `DataString` as ANSI text (characters the code page lacks become "?"), with
  // no byte-order mark and nothing added after it:
  //   - REPLACE (4, the default) replaces the whole file;
  //   - otherwise APPEND (8) adds the text at the end, creating the file when missing;
  //   - with IFEXISTS (1) a file that does not exist is left alone and the result is
  //     True: StringWrite(t, missing, 9) creates nothing.
  // A device or a pipe is written into, and has nothing to flush. False when neither
  // REPLACE nor APPEND is set, when the file is read-only, when a pipe has no reader,
  // and when it cannot be written; the old file is then intact (an append that fails
  // part way is cut back).
  bool StringWrite(const String& DataString, const String& FileFullName,
                   xeZK_FILEWRITEMODES WriteMode = xcZK_FILEWRITE_REPLACE);
};

// The host runtime's `FileDateTime`: the local date and time, to the second, at which
// the file or folder was last written (through the offset from UTC in force now, as
// `FileSetDateTime` takes it). File not found (53) when there is no such entry.
// `clsZKIniFile` uses it to notice that its file changed.
Date FileDateTime(const String& PathName);

}  // namespace tsruntime
