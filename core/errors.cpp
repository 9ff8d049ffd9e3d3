#include "tsruntime/errors.h"

#include "tsruntime/automation/dispatch.h"

namespace tsruntime {
namespace {

thread_local int32_t interface_language = xcZKLANG_RUS;

const EnumInfo kErrorCodes{
    u"xeZK_ERROR_CODES",
    {
        {u"xcZKERR_START_CLASS_STRING", xcZKERR_START_CLASS_STRING,
         u"The base of clsZKString's error numbers; not raised."},
        {u"xcZKERR_STRING_INSTRRIGHT", xcZKERR_STRING_INSTRRIGHT,
         u"clsZKString.InstrRight was given a SearchLen below -1."},
        {u"xcZKERR_START_CLASS_SYSTEM", xcZKERR_START_CLASS_SYSTEM,
         u"The base of clsZKSystem's error numbers; not raised."},
        {u"xcZKERR_SYSTEM_KBDL", xcZKERR_SYSTEM_KBDL,
         u"clsZKSystem.SetKeyboardLayout failed on the way."},
        {u"xcZKERR_START_CLASS_FS", xcZKERR_START_CLASS_FS,
         u"The base of clsZKFileSystem's error numbers; not raised."},
        {u"xcZKERR_FS_DIRSMAKE", xcZKERR_FS_DIRSMAKE,
         u"clsZKFileSystem.DirsMake could not make a level of the path."},
        {u"xcZKERR_FS_DIRRENAME", xcZKERR_FS_DIRRENAME,
         u"clsZKFileSystem.DirRename could not rename the folder."},
        {u"xcZKERR_FS_PATHSHORT2LONG", xcZKERR_FS_PATHSHORT2LONG,
         u"clsZKFileSystem.PathShort2Long could not look at a level of the path."},
        {u"xcZKERR_FS_DIRKILL", xcZKERR_FS_DIRKILL,
         u"clsZKFileSystem.DirKill could not delete the folder."},
        {u"xcZKERR_FS_FILEKILL", xcZKERR_FS_FILEKILL,
         u"clsZKFileSystem.FileKill could not delete the file."},
        {u"xcZKERR_FS_FILERENAME", xcZKERR_FS_FILERENAME,
         u"clsZKFileSystem.FileRename could not rename the file."},
        {u"xcZKERR_FS_DIRSCAN", xcZKERR_FS_DIRSCAN,
         u"clsZKFileSystem.DirScan could not read the folder."},
        {u"xcZKERR_START_CLASS_ARRAY", xcZKERR_START_CLASS_ARRAY,
         u"The base of clsZKArray's error numbers; not raised."},
        {u"xcZKERR_ARRAY_SORTBUBBLE", xcZKERR_ARRAY_SORTBUBBLE,
         u"clsZKArray.SortBubble failed; the array is left as it was."},
        {u"xcZKERR_ARRAY_SORTQUICK", xcZKERR_ARRAY_SORTQUICK,
         u"clsZKArray.SortQuick failed; the array is left as it was."},
        {u"xcZKERR_ARRAY_SORTSEL", xcZKERR_ARRAY_SORTSEL,
         u"clsZKArray.SortSelection failed; the array is left as it was."},
        {u"xcZKERR_START_CLASS_REG", xcZKERR_START_CLASS_REG,
         u"The base of clsZKRegistry's error numbers; not raised."},
        {u"xcZKERR_START_CLASS_INI", xcZKERR_START_CLASS_INI,
         u"The base of clsZKIniFile's error numbers; not raised."},
        {u"xcZKERR_INI_NOFILE", xcZKERR_INI_NOFILE,
         u"clsZKIniFile was given a file that does not exist, or an empty SourceString."},
        {u"xcZKERR_INI_NOSTRING", xcZKERR_INI_NOSTRING,
         u"Declared for clsZKIniFile; never raised."},
        {u"xcZKERR_INI_KEYMISSING", xcZKERR_INI_KEYMISSING,
         u"clsZKIniFile.PutData found no such key."},
        {u"xcZKERR_INI_FILELOAD", xcZKERR_INI_FILELOAD,
         u"clsZKIniFile could not load its INI text."},
        {u"xcZKERR_INI_FILESAVE", xcZKERR_INI_FILESAVE,
         u"clsZKIniFile.PutData could not write the file."},
        {u"xcZKERR_START_CLASS_STORAGE", xcZKERR_START_CLASS_STORAGE,
         u"The base of the storage classes' error numbers; not raised."},
        {u"xcZKERR_STORAGE_DATATYPE", xcZKERR_STORAGE_DATATYPE,
         u"clsZKStorageItems.Item met a value type it cannot read."},
        {u"xcZKERR_STORAGE_INDEX", xcZKERR_STORAGE_INDEX,
         u"clsZKStorageItems.Item was given an index past the last value."},
        {u"xcZKERR_STORAGE_NOITEMS", xcZKERR_STORAGE_NOITEMS,
         u"clsZKStorageItems.Item was given a negative index."},
        {u"xcZKERR_STORAGE_NAMEREQ", xcZKERR_STORAGE_NAMEREQ,
         u"Declared for the storage classes; never raised."},
        {u"xcZKERR_STORAGE_ISROOT", xcZKERR_STORAGE_ISROOT,
         u"Declared for the storage classes; never raised."},
    },
    u"The library's own error numbers, by class; each is raised with the source "
    u"\"ZKRuntimeLib.\" + class + \".\" + operation."};

const EnumInfo kLanguages{u"xeZK_INTERFACE_LANGUAGE",
                          {{u"xcZKLANG_RUS", xcZKLANG_RUS, u"Russian texts."},
                           {u"xcZKLANG_ENG", xcZKLANG_ENG,
                            u"English texts, where a text has both."}},
                          u"The thread's interface language, clsZKRunTimeLib.Language."};

[[maybe_unused]] const bool registered = RegisterEnum(kErrorCodes) && RegisterEnum(kLanguages);

}  // namespace

int32_t InterfaceLanguage() { return interface_language; }
void SetInterfaceLanguage(int32_t language) { interface_language = language; }

String LanguageText(StringView russian, StringView english) {
  return String(interface_language == xcZKLANG_RUS ? russian : english);
}

String ErrorSource(std::string_view class_name, std::string_view operation) {
  return u"ZKRuntimeLib." + FromAscii(class_name) + u"." + FromAscii(operation);
}

void RaiseOwn(int32_t code, std::string_view class_name, std::string_view operation,
              String description) {
  throw Error(code, ErrorSource(class_name, operation), std::move(description));
}

void RaiseWrapped(int32_t code, std::string_view class_name, std::string_view operation,
                  const Error& caught, std::initializer_list<ArgumentText> arguments) {
  String description = caught.description();
  for (const ArgumentText& a : arguments) {
    description += u"\r\n" + FromAscii(a.name) + u" = '" + a.value + u"'";
  }
  throw Error(code, ErrorSource(class_name, operation), std::move(description),
              caught.helpFile(), caught.helpContext());
}

}  // namespace tsruntime
