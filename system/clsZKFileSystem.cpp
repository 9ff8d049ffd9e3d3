// The class, its enumerations and its type library entry.
#include "tsruntime/clsZKFileSystem.h"

namespace tsruntime {
namespace {

const EnumInfo kSysFolders{u"xeZK_GETSYSFOLDER",
                           {{u"xcZK_GETSYSFOLDER_WINDOWS", xcZK_GETSYSFOLDER_WINDOWS},
                            {u"xcZK_GETSYSFOLDER_SYSTEM", xcZK_GETSYSFOLDER_SYSTEM},
                            {u"xcZK_GETSYSFOLDER_TEMP", xcZK_GETSYSFOLDER_TEMP}}};

const EnumInfo kWriteModes{u"xeZK_FILEWRITEMODES",
                           {{u"xcZK_FILEWRITE_IFEXISTS", xcZK_FILEWRITE_IFEXISTS},
                            {u"xcZK_FILEWRITE_REPLACE", xcZK_FILEWRITE_REPLACE},
                            {u"xcZK_FILEWRITE_APPEND", xcZK_FILEWRITE_APPEND}}};

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
          .Method("FileSetDateTime", &Fs::FileSetDateTime,
                  {"FileName", Opt("DateCreated"), Opt("DateLastAccess"), Opt("DateLastWrite")})
          .Method("IsFileExists", &Fs::IsFileExists, {"FileFullName"})
          .Method("FileKill", &Fs::FileKill, {"FileFullName", Opt("ForceRemove", true)})
          .Method("FileRename", &Fs::FileRename, {"FileFullName", "FileShortNameNew"})
          .Method("IsPathExists", &Fs::IsPathExists, {"DirFullPath"})
          .Method("IsDirEmpty", &Fs::IsDirEmpty, {"DirFullPath"})
          .Method("DirsMake", &Fs::DirsMake, {"DirFullPath"})
          .Method("DirRename", &Fs::DirRename, {"DirFullName", "DirShortNameNew"})
          .Method("DirKill", &Fs::DirKill, {"DirFullName", Opt("ForceRemove", true)})
          .Method("PathShort2Long", &Fs::PathShort2Long, {"PathShortName"})
          .Method("GetDiskSpaceAll", &Fs::GetDiskSpaceAll, {"DiskName"})
          .Method("GetDiskSpaceFree", &Fs::GetDiskSpaceFree, {"DiskName"})
          .Method("GetSysFolderName", &Fs::GetSysFolderName, {"FolderType"})
          .Method("NormalizePath", &Fs::NormalizePath,
                  {"Expression", "ExpressionIsFolder", "BaseFolder"})
          .Method("DirScan",
                  [](Fs& fs, const String& name, Variant& dirs, Variant& files, bool add) {
                    return fs.DirScan(name, ArrayArgument(dirs, VarType::kString),
                                      ArrayArgument(files, VarType::kString), add);
                  },
                  {"DirFullName", Typed("DirsArray", ArrayOf(VarType::kString)),
                   Typed("FilesArray", ArrayOf(VarType::kString)), Opt("AddToArrays", false)})
          .Method("DirScanFiles", &Fs::DirScanFiles, {"RootFolder", "ResultCollection"})
          .Method("BinaryRead",
                  [](Fs& fs, const String& name, Variant& buffer) {
                    return fs.BinaryRead(name, ArrayArgument(buffer, VarType::kByte));
                  },
                  {"FileFullName", Typed("DataArrayBuf", ArrayOf(VarType::kByte))})
          .Method("BinaryWrite",
                  [](Fs& fs, const String& name, const Variant& data) {
                    if (data.isEmpty()) return fs.BinaryWrite(name, SafeArray(VarType::kByte));
                    if (!data.isArray()) RaiseRuntime(RuntimeError::kTypeMismatch);
                    return fs.BinaryWrite(name, data.asArray());
                  },
                  {"FileFullName", Typed("DataArray", ArrayOf(VarType::kByte))})
          .Method("StringRead", &Fs::StringRead, {"DataBuf", "FileFullName"})
          .Method("StringReadAsString", &Fs::StringReadAsString, {"FileFullName"})
          .Method("StringWrite", &Fs::StringWrite,
                  {"DataString", "FileFullName", Opt("WriteMode", int32_t{xcZK_FILEWRITE_REPLACE})})
          .Build();
  return info;
}

}  // namespace tsruntime
