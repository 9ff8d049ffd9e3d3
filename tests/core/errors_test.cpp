// The library's error codes and the two forms in which every class raises them.
#include <gtest/gtest.h>

#include <new>

#include "support/outcome.h"
#include "tsruntime/automation/dispatch.h"
#include "tsruntime/errors.h"

namespace tsruntime {
namespace {

using testing::U8;

const EnumInfo* FindEnum(StringView name) {
  for (const EnumInfo* e : RegisteredEnums()) {
    if (e->name == name) return e;
  }
  return nullptr;
}

struct CodeRow {
  const char* name;
  int32_t constant;  // the C++ enumerator
  int32_t value;     // the published value
};

TEST(ErrorCodes, PublishAll29MembersWithTheirValues) {
  const CodeRow rows[] = {
      {"xcZKERR_START_CLASS_STRING", xcZKERR_START_CLASS_STRING, -2147220804},
      {"xcZKERR_STRING_INSTRRIGHT", xcZKERR_STRING_INSTRRIGHT, -2147220803},
      {"xcZKERR_START_CLASS_SYSTEM", xcZKERR_START_CLASS_SYSTEM, -2147220704},
      {"xcZKERR_SYSTEM_KBDL", xcZKERR_SYSTEM_KBDL, -2147220703},
      {"xcZKERR_START_CLASS_FS", xcZKERR_START_CLASS_FS, -2147220604},
      {"xcZKERR_FS_DIRSMAKE", xcZKERR_FS_DIRSMAKE, -2147220603},
      {"xcZKERR_FS_DIRRENAME", xcZKERR_FS_DIRRENAME, -2147220602},
      {"xcZKERR_FS_PATHSHORT2LONG", xcZKERR_FS_PATHSHORT2LONG, -2147220601},
      {"xcZKERR_FS_DIRKILL", xcZKERR_FS_DIRKILL, -2147220600},
      {"xcZKERR_FS_FILEKILL", xcZKERR_FS_FILEKILL, -2147220599},
      {"xcZKERR_FS_FILERENAME", xcZKERR_FS_FILERENAME, -2147220598},
      {"xcZKERR_FS_DIRSCAN", xcZKERR_FS_DIRSCAN, -2147220597},
      {"xcZKERR_START_CLASS_ARRAY", xcZKERR_START_CLASS_ARRAY, -2147220504},
      {"xcZKERR_ARRAY_SORTBUBBLE", xcZKERR_ARRAY_SORTBUBBLE, -2147220503},
      {"xcZKERR_ARRAY_SORTQUICK", xcZKERR_ARRAY_SORTQUICK, -2147220502},
      {"xcZKERR_ARRAY_SORTSEL", xcZKERR_ARRAY_SORTSEL, -2147220501},
      {"xcZKERR_START_CLASS_REG", xcZKERR_START_CLASS_REG, -2147220404},
      {"xcZKERR_START_CLASS_INI", xcZKERR_START_CLASS_INI, -2147220304},
      {"xcZKERR_INI_NOFILE", xcZKERR_INI_NOFILE, -2147220303},
      {"xcZKERR_INI_NOSTRING", xcZKERR_INI_NOSTRING, -2147220302},
      {"xcZKERR_INI_KEYMISSING", xcZKERR_INI_KEYMISSING, -2147220301},
      {"xcZKERR_INI_FILELOAD", xcZKERR_INI_FILELOAD, -2147220300},
      {"xcZKERR_INI_FILESAVE", xcZKERR_INI_FILESAVE, -2147220299},
      {"xcZKERR_START_CLASS_STORAGE", xcZKERR_START_CLASS_STORAGE, -2147220204},
      {"xcZKERR_STORAGE_DATATYPE", xcZKERR_STORAGE_DATATYPE, -2147220203},
      {"xcZKERR_STORAGE_INDEX", xcZKERR_STORAGE_INDEX, -2147220202},
      {"xcZKERR_STORAGE_NOITEMS", xcZKERR_STORAGE_NOITEMS, -2147220201},
      {"xcZKERR_STORAGE_NAMEREQ", xcZKERR_STORAGE_NAMEREQ, -2147220200},
      {"xcZKERR_STORAGE_ISROOT", xcZKERR_STORAGE_ISROOT, -2147220199},
  };
  const EnumInfo* codes = FindEnum(u"xeZK_ERROR_CODES");
  ASSERT_NE(codes, nullptr);
  ASSERT_EQ(codes->members.size(), std::size(rows));
  for (size_t i = 0; i < std::size(rows); ++i) {
    EXPECT_EQ(rows[i].constant, rows[i].value) << rows[i].name;
    EXPECT_EQ(U8(codes->members[i].first), rows[i].name) << "member " << i;
    EXPECT_EQ(codes->members[i].second, rows[i].value) << rows[i].name;
  }
}

TEST(ErrorCodes, PublishTheInterfaceLanguages) {
  const EnumInfo* languages = FindEnum(u"xeZK_INTERFACE_LANGUAGE");
  ASSERT_NE(languages, nullptr);
  const std::vector<std::pair<String, int32_t>> expected = {{u"xcZKLANG_RUS", 0},
                                                            {u"xcZKLANG_ENG", 1}};
  EXPECT_EQ(languages->members, expected);
}

// The five fields of the error `body` raised, one per line.
template <class F>
std::string RaisedFields(F&& body) {
  try {
    body();
  } catch (const Error& e) {
    return std::to_string(e.number()) + "\n" + U8(e.source()) + "\n" + U8(e.description()) +
           "\n" + U8(e.helpFile()) + "\n" + std::to_string(e.helpContext());
  }
  return "nothing raised";
}

TEST(RaiseConvention, SourceIsTheLibraryClassAndOperation) {
  EXPECT_EQ(U8(ErrorSource("clsZKFileSystem", "FileKill")), "ZKRuntimeLib.clsZKFileSystem.FileKill");
  EXPECT_EQ(U8(ErrorSource("clsZKStorageItems", "Item")), "ZKRuntimeLib.clsZKStorageItems.Item");
}

TEST(RaiseConvention, OwnFormCarriesTheTextAndNoHelp) {
  EXPECT_EQ(RaisedFields([] {
              RaiseOwn(xcZKERR_INI_KEYMISSING, "clsZKIniFile", "GetData", u"Ключ не найден: a.b");
            }),
            "-2147220301\nZKRuntimeLib.clsZKIniFile.GetData\nКлюч не найден: a.b\n\n0");
}

TEST(RaiseConvention, WrappingFormAppendsOneLinePerArgumentAndKeepsTheHelp) {
  const Error caught(53, u"ZKRuntimeLib", u"File not found", u"runtime.chm", 1000053);
  const std::pair<const char*, std::function<void()>> rows[] = {
      {"-2147220599\nZKRuntimeLib.clsZKFileSystem.FileKill\n"
       "File not found\r\nFileFullName = '/tmp/нет.txt'\nruntime.chm\n1000053",
       [&] {
         RaiseWrapped(xcZKERR_FS_FILEKILL, "clsZKFileSystem", "FileKill", caught,
                      {{"FileFullName", u"/tmp/нет.txt"}});
       }},
      {"-2147220598\nZKRuntimeLib.clsZKFileSystem.FileRename\n"
       "File not found\r\nOldName = 'a'\r\nNewName = ''\nruntime.chm\n1000053",
       [&] {
         RaiseWrapped(xcZKERR_FS_FILERENAME, "clsZKFileSystem", "FileRename", caught,
                      {{"OldName", u"a"}, {"NewName", u""}});
       }},
      {"-2147220597\nZKRuntimeLib.clsZKFileSystem.DirScan\nFile not found\nruntime.chm\n1000053",
       [&] { RaiseWrapped(xcZKERR_FS_DIRSCAN, "clsZKFileSystem", "DirScan", caught); }},
  };
  for (const auto& [fields, body] : rows) EXPECT_EQ(RaisedFields(body), fields);
}

TEST(RaiseConvention, ErrorTrapWrapsEveryFailureOfTheBody) {
  EXPECT_EQ(WithErrorTrap(xcZKERR_FS_DIRKILL, "clsZKFileSystem", "DirKill", [] { return 5; }), 5);
  const std::pair<const char*, std::function<void()>> rows[] = {
      {"-2147220600\nZKRuntimeLib.clsZKFileSystem.DirKill\nType mismatch\n\n0",
       [] { RaiseRuntime(RuntimeError::kTypeMismatch); }},
      {"-2147220600\nZKRuntimeLib.clsZKFileSystem.DirKill\nOut of memory\n\n0",
       [] { throw std::bad_alloc(); }},
      {"-2147220600\nZKRuntimeLib.clsZKFileSystem.DirKill\ninner\nx.hlp\n7",
       [] { throw Error(70, u"elsewhere", u"inner", u"x.hlp", 7); }},
  };
  for (const auto& [fields, body] : rows) {
    EXPECT_EQ(RaisedFields([&] {
                WithErrorTrap(xcZKERR_FS_DIRKILL, "clsZKFileSystem", "DirKill", body);
              }),
              fields);
  }
}

TEST(RaiseConvention, RuntimeErrorsCarryTheRuntimesNumberAndText) {
  const std::pair<RuntimeError, const char*> rows[] = {
      {RuntimeError::kInvalidCall, "5\nZKRuntimeLib\nInvalid procedure call or argument\n\n0"},
      {RuntimeError::kOverflow, "6\nZKRuntimeLib\nOverflow\n\n0"},
      {RuntimeError::kSubscriptOutOfRange, "9\nZKRuntimeLib\nSubscript out of range\n\n0"},
      {RuntimeError::kTypeMismatch, "13\nZKRuntimeLib\nType mismatch\n\n0"},
      {RuntimeError::kFileNotFound, "53\nZKRuntimeLib\nFile not found\n\n0"},
      {RuntimeError::kPermissionDenied, "70\nZKRuntimeLib\nPermission denied\n\n0"},
      {RuntimeError::kInvalidUseOfNull, "94\nZKRuntimeLib\nInvalid use of Null\n\n0"},
      {RuntimeError::kCannotCreateObject,
       "429\nZKRuntimeLib\nActiveX component can't create object\n\n0"},
      {RuntimeError::kNotSupported,
       "438\nZKRuntimeLib\nObject doesn't support this property or method\n\n0"},
  };
  for (auto [code, fields] : rows) EXPECT_EQ(RaisedFields([&] { RaiseRuntime(code); }), fields);
  EXPECT_EQ(U8(RuntimeErrorText(12345)), "Application-defined or object-defined error");
  const Error e(xcZKERR_FS_FILEKILL, u"src", u"Ошибка");
  EXPECT_STREQ(e.what(), "Error -2147220599 (src): Ошибка");
}

}  // namespace
}  // namespace tsruntime
