#include "tsruntime/errors.h"

#include "tsruntime/automation/dispatch.h"

namespace tsruntime {
namespace {

thread_local int32_t interface_language = xcZKLANG_RUS;

const EnumInfo kErrorCodes{
    u"xeZK_ERROR_CODES",
    {
        {u"xcZKERR_START_CLASS_STRING", xcZKERR_START_CLASS_STRING},
        {u"xcZKERR_STRING_INSTRRIGHT", xcZKERR_STRING_INSTRRIGHT},
        {u"xcZKERR_START_CLASS_SYSTEM", xcZKERR_START_CLASS_SYSTEM},
        {u"xcZKERR_SYSTEM_KBDL", xcZKERR_SYSTEM_KBDL},
        {u"xcZKERR_START_CLASS_FS", xcZKERR_START_CLASS_FS},
        {u"xcZKERR_FS_DIRSMAKE", xcZKERR_FS_DIRSMAKE},
        {u"xcZKERR_FS_DIRRENAME", xcZKERR_FS_DIRRENAME},
        {u"xcZKERR_FS_PATHSHORT2LONG", xcZKERR_FS_PATHSHORT2LONG},
        {u"xcZKERR_FS_DIRKILL", xcZKERR_FS_DIRKILL},
        {u"xcZKERR_FS_FILEKILL", xcZKERR_FS_FILEKILL},
        {u"xcZKERR_FS_FILERENAME", xcZKERR_FS_FILERENAME},
        {u"xcZKERR_FS_DIRSCAN", xcZKERR_FS_DIRSCAN},
        {u"xcZKERR_START_CLASS_ARRAY", xcZKERR_START_CLASS_ARRAY},
        {u"xcZKERR_ARRAY_SORTBUBBLE", xcZKERR_ARRAY_SORTBUBBLE},
        {u"xcZKERR_ARRAY_SORTQUICK", xcZKERR_ARRAY_SORTQUICK},
        {u"xcZKERR_ARRAY_SORTSEL", xcZKERR_ARRAY_SORTSEL},
        {u"xcZKERR_START_CLASS_REG", xcZKERR_START_CLASS_REG},
        {u"xcZKERR_START_CLASS_INI", xcZKERR_START_CLASS_INI},
        {u"xcZKERR_INI_NOFILE", xcZKERR_INI_NOFILE},
        {u"xcZKERR_INI_NOSTRING", xcZKERR_INI_NOSTRING},
        {u"xcZKERR_INI_KEYMISSING", xcZKERR_INI_KEYMISSING},
        {u"xcZKERR_INI_FILELOAD", xcZKERR_INI_FILELOAD},
        {u"xcZKERR_INI_FILESAVE", xcZKERR_INI_FILESAVE},
        {u"xcZKERR_START_CLASS_STORAGE", xcZKERR_START_CLASS_STORAGE},
        {u"xcZKERR_STORAGE_DATATYPE", xcZKERR_STORAGE_DATATYPE},
        {u"xcZKERR_STORAGE_INDEX", xcZKERR_STORAGE_INDEX},
        {u"xcZKERR_STORAGE_NOITEMS", xcZKERR_STORAGE_NOITEMS},
        {u"xcZKERR_STORAGE_NAMEREQ", xcZKERR_STORAGE_NAMEREQ},
        {u"xcZKERR_STORAGE_ISROOT", xcZKERR_STORAGE_ISROOT},
    }};

const EnumInfo kLanguages{u"xeZK_INTERFACE_LANGUAGE",
                          {{u"xcZKLANG_RUS", xcZKLANG_RUS}, {u"xcZKLANG_ENG", xcZKLANG_ENG}}};

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
