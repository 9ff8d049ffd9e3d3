// The class, its enumerations and its type library entry.
#include "tsruntime/clsZKFileSystem.h"

namespace tsruntime {
namespace {

const EnumInfo kSysFolders{u"xeZK_GETSYSFOLDER",
                           {{u"xcZK_GETSYSFOLDER_WINDOWS", xcZK_GETSYSFOLDER_WINDOWS,
                             u"Where system-wide settings live: \"/etc/\"."},
                            {u"xcZK_GETSYSFOLDER_SYSTEM", xcZK_GETSYSFOLDER_SYSTEM,
                             u"The system libraries: \"/usr/lib/\"."},
                            {u"xcZK_GETSYSFOLDER_TEMP", xcZK_GETSYSFOLDER_TEMP,
                             u"The temporary folder: $TMPDIR, else \"/tmp/\"."}},
                           u"The folders clsZKFileSystem.GetSysFolderName names."};

const EnumInfo kWriteModes{u"xeZK_FILEWRITEMODES",
                           {{u"xcZK_FILEWRITE_IFEXISTS", xcZK_FILEWRITE_IFEXISTS,
                             u"Write only when the file exists already; added to another mode."},
                            {u"xcZK_FILEWRITE_REPLACE", xcZK_FILEWRITE_REPLACE,
                             u"The new text replaces the file."},
                            {u"xcZK_FILEWRITE_APPEND", xcZK_FILEWRITE_APPEND,
                             u"The new text goes at the end of the file."}},
                           u"How clsZKFileSystem.StringWrite writes, as bits."};

[[maybe_unused]] const bool registered = RegisterEnum(kSysFolders) && RegisterEnum(kWriteModes);

// A written-back array that a late-bound host may pass as Empty: it then starts as a
// never-dimensioned array of `element`. Any other value that is no array is a type
// mismatch.
SafeArray& ArrayArgument(Variant& slot, VarType element) {
  if (slot.isEmpty()) slot = Variant(SafeArray(element));
  if (!slot.isArray()) RaiseRuntime(RuntimeError::kTypeMismatch);
  return slot.asArray();
}

}  // namespace

clsZKFileSystem::clsZKFileSystem() = default;
clsZKFileSystem::~clsZKFileSystem() = default;

TSRUNTIME_DEFINE_CLASS(clsZKFileSystem) {
  using Fs = clsZKFileSystem;
  static const ClassInfo info =
      ClassBuilder<Fs>("clsZKFileSystem")
          .Help(u"Files and folders: existence, deleting, renaming, making paths, disk space, "
                u"system folders, listings and whole-file reads and writes.")
          .Method("FileSetDateTime", &Fs::FileSetDateTime,
                  {"FileName", Opt("DateCreated"), Opt("DateLastAccess"), Opt("DateLastWrite")})
          .Help(u"Sets the last access and last write times of FileName to local dates, each left "
                u"out kept; DateCreated is ignored. False when it cannot.")
          .Method("IsFileExists", &Fs::IsFileExists, {"FileFullName"})
          .Help(u"True when FileFullName is a file (or a link to one) that opens for reading.")
          .Method("FileKill", &Fs::FileKill, {"FileFullName", Opt("ForceRemove", true)})
          .Help(u"Deletes the file FileFullName, a read-only one only with ForceRemove; True, or "
                u"raises xcZKERR_FS_FILEKILL.")
          .Method("FileRename", &Fs::FileRename, {"FileFullName", "FileShortNameNew"})
          .Help(u"Renames the file FileFullName within its folder to FileShortNameNew; True, or "
                u"raises xcZKERR_FS_FILERENAME.")
          .Method("IsPathExists", &Fs::IsPathExists, {"DirFullPath"})
          .Help(u"True when DirFullPath, trailing \"/\" stripped, names a folder or a link to one.")
          .Method("IsDirEmpty", &Fs::IsDirEmpty, {"DirFullPath"})
          .Help(u"True when the folder DirFullPath lists nothing but names beginning with \".\", "
                u"or does not exist.")
          .Method("DirsMake", &Fs::DirsMake, {"DirFullPath"})
          .Help(u"Creates every missing level of DirFullPath and returns True; raises "
                u"xcZKERR_FS_DIRSMAKE when a level cannot be made.")
          .Method("DirRename", &Fs::DirRename, {"DirFullName", "DirShortNameNew"})
          .Help(u"Renames the folder DirFullName within its parent to DirShortNameNew; True, or "
                u"raises xcZKERR_FS_DIRRENAME.")
          .Method("DirKill", &Fs::DirKill, {"DirFullName", Opt("ForceRemove", true)})
          .Help(u"Deletes the folder DirFullName with everything in it, read-only entries only "
                u"with ForceRemove; True, or raises xcZKERR_FS_DIRKILL.")
          .Method("PathShort2Long", &Fs::PathShort2Long, {"PathShortName"})
          .Help(u"PathShortName with each existing level as its long name and each missing one "
                u"empty; raises xcZKERR_FS_PATHSHORT2LONG.")
          .Method("GetDiskSpaceAll", &Fs::GetDiskSpaceAll, {"DiskName"})
          .Help(u"The size in bytes of the file system holding DiskName; -1 from 2 GiB up or when "
                u"it cannot be examined.")
          .Method("GetDiskSpaceFree", &Fs::GetDiskSpaceFree, {"DiskName"})
          .Help(u"The free space in bytes of the file system holding DiskName; -1 from 2 GiB up "
                u"or when it cannot be examined.")
          .Method("GetSysFolderName", &Fs::GetSysFolderName, {"FolderType"})
          .Help(u"The system folder FolderType names (xeZK_GETSYSFOLDER), ending in \"/\"; \"\" "
                u"for another type.")
          .Method("NormalizePath", &Fs::NormalizePath,
                  {"Expression", "ExpressionIsFolder", "BaseFolder"})
          .Help(u"The absolute form of Expression, \".\" and \"..\" resolved, \"/\" added when "
                u"ExpressionIsFolder; a BaseFolder becomes the current directory.")
          .Method("DirScan",
                  [](Fs& fs, const String& name, Variant& dirs, Variant& files, bool add) {
                    return fs.DirScan(name, ArrayArgument(dirs, VarType::kString),
                                      ArrayArgument(files, VarType::kString), add);
                  },
                  {"DirFullName", Typed("DirsArray", ArrayOf(VarType::kString)),
                   Typed("FilesArray", ArrayOf(VarType::kString)), Opt("AddToArrays", false)})
          .Help(u"Lists the folder DirFullName into the tables DirsArray and FilesArray (name, "
                u"full path), or after their rows with AddToArrays; False when it is missing.")
          .Method("DirScanFiles", &Fs::DirScanFiles, {"RootFolder", "ResultCollection"})
          .Help(u"Adds the path of every file below RootFolder to the dictionary ResultCollection "
                u"as key and data, depth first; False when it cannot.")
          .Method("BinaryRead",
                  [](Fs& fs, const String& name, Variant& buffer) {
                    return fs.BinaryRead(name, ArrayArgument(buffer, VarType::kByte));
                  },
                  {"FileFullName", Typed("DataArrayBuf", ArrayOf(VarType::kByte))})
          .Help(u"Reads the whole file FileFullName into the byte array DataArrayBuf (bounds 0 to "
                u"length - 1); False for a missing or empty file.")
          .Method("BinaryWrite",
                  [](Fs& fs, const String& name, const Variant& data) {
                    if (data.isEmpty()) return fs.BinaryWrite(name, SafeArray(VarType::kByte));
                    if (!data.isArray()) RaiseRuntime(RuntimeError::kTypeMismatch);
                    return fs.BinaryWrite(name, data.asArray());
                  },
                  {"FileFullName", Typed("DataArray", ArrayOf(VarType::kByte))})
          .Help(u"Replaces the file FileFullName with the bytes of DataArray; False, the old file "
                u"intact, when it cannot be written.")
          .Method("StringRead", &Fs::StringRead, {"DataBuf", "FileFullName"})
          .Help(u"Reads the whole file FileFullName as ANSI text into DataBuf; False, DataBuf "
                u"unchanged, when it cannot be read.")
          .Method("StringReadAsString", &Fs::StringReadAsString, {"FileFullName"})
          .Help(u"The whole file FileFullName as ANSI text, or \"\" when it cannot be read.")
          .Method("StringWrite", &Fs::StringWrite,
                  {"DataString", "FileFullName", Opt("WriteMode", int32_t{xcZK_FILEWRITE_REPLACE})})
          .Help(u"Writes DataString as ANSI text to FileFullName as WriteMode says "
                u"(xeZK_FILEWRITEMODES); False when it cannot.")
          .Build();
  return info;
}

}  // namespace tsruntime
