// The library's error codes and the forms in which every class raises them.
#include <gtest/gtest.h>

#include <new>

#include "support/outcome.h"
#include "tsruntime/automation/dispatch.h"
#include "tsruntime/errors.h"

namespace tsruntime {
namespace {

using testing::RaisedFields;
using testing::U8;

const EnumInfo* FindEnum(StringView name) {
  for (const EnumInfo* e : RegisteredEnums()) {
    if (e->name == name) return e;
  }
  return nullptr;
}

TEST(ErrorCodes, PublishAll29MembersInOrderWithTheirValues) {
  struct Row {
    const char* name;
    int32_t constant, value;
  };
#define CODE(name, value) {#name, name, value}
  const Row rows[] = {
      CODE(xcZKERR_START_CLASS_STRING, -2147220804), CODE(xcZKERR_STRING_INSTRRIGHT, -2147220803),
      CODE(xcZKERR_START_CLASS_SYSTEM, -2147220704), CODE(xcZKERR_SYSTEM_KBDL, -2147220703),
      CODE(xcZKERR_START_CLASS_FS, -2147220604),     CODE(xcZKERR_FS_DIRSMAKE, -2147220603),
      CODE(xcZKERR_FS_DIRRENAME, -2147220602),       CODE(xcZKERR_FS_PATHSHORT2LONG, -2147220601),
      CODE(xcZKERR_FS_DIRKILL, -2147220600),         CODE(xcZKERR_FS_FILEKILL, -2147220599),
      CODE(xcZKERR_FS_FILERENAME, -2147220598),      CODE(xcZKERR_FS_DIRSCAN, -2147220597),
      CODE(xcZKERR_START_CLASS_ARRAY, -2147220504),  CODE(xcZKERR_ARRAY_SORTBUBBLE, -2147220503),
      CODE(xcZKERR_ARRAY_SORTQUICK, -2147220502),    CODE(xcZKERR_ARRAY_SORTSEL, -2147220501),
      CODE(xcZKERR_START_CLASS_REG, -2147220404),    CODE(xcZKERR_START_CLASS_INI, -2147220304),
      CODE(xcZKERR_INI_NOFILE, -2147220303),         CODE(xcZKERR_INI_NOSTRING, -2147220302),
      CODE(xcZKERR_INI_KEYMISSING, -2147220301),     CODE(xcZKERR_INI_FILELOAD, -2147220300),
      CODE(xcZKERR_INI_FILESAVE, -2147220299),       CODE(xcZKERR_START_CLASS_STORAGE, -2147220204),
      CODE(xcZKERR_STORAGE_DATATYPE, -2147220203),   CODE(xcZKERR_STORAGE_INDEX, -2147220202),
      CODE(xcZKERR_STORAGE_NOITEMS, -2147220201),    CODE(xcZKERR_STORAGE_NAMEREQ, -2147220200),
      CODE(xcZKERR_STORAGE_ISROOT, -2147220199),
  };
#undef CODE
  const EnumInfo* codes = FindEnum(u"xeZK_ERROR_CODES");
  ASSERT_NE(codes, nullptr);
  ASSERT_EQ(codes->members.size(), std::size(rows));
  for (size_t i = 0; i < std::size(rows); ++i) {
    EXPECT_EQ(rows[i].constant, rows[i].value) << rows[i].name;
    EXPECT_EQ(U8(codes->members[i].first), rows[i].name) << "member " << i;
    EXPECT_EQ(codes->members[i].second, rows[i].value) << rows[i].name;
  }
  const EnumInfo* languages = FindEnum(u"xeZK_INTERFACE_LANGUAGE");
  ASSERT_NE(languages, nullptr);
  EXPECT_EQ(languages->members,
            (decltype(languages->members){{u"xcZKLANG_RUS", 0}, {u"xcZKLANG_ENG", 1}}));
}

TEST(RaiseConvention, OwnAndWrappedFormsFillAllFiveFields) {
  EXPECT_EQ(U8(ErrorSource("clsZKStorageItems", "Item")), "ZKRuntimeLib.clsZKStorageItems.Item");
  EXPECT_EQ(RaisedFields([] {
              RaiseOwn(xcZKERR_INI_KEYMISSING, "clsZKIniFile", "GetData", u"Ключ не найден: a.b");
            }),
            "-2147220301\nZKRuntimeLib.clsZKIniFile.GetData\nКлюч не найден: a.b\n\n0");
  // The wrapping form keeps the caught text and help, one line more per argument.
  const Error caught(53, u"ZKRuntimeLib", u"File not found", u"runtime.chm", 1000053);
  EXPECT_EQ(RaisedFields([&] {
              RaiseWrapped(xcZKERR_FS_FILERENAME, "clsZKFileSystem", "FileRename", caught,
                           {{"OldName", u"/tmp/нет"}, {"NewName", u""}});
            }),
            "-2147220598\nZKRuntimeLib.clsZKFileSystem.FileRename\n"
            "File not found\r\nOldName = '/tmp/нет'\r\nNewName = ''\nruntime.chm\n1000053");
  EXPECT_EQ(RaisedFields([&] {
              RaiseWrapped(xcZKERR_FS_DIRSCAN, "clsZKFileSystem", "DirScan", caught);
            }),
            "-2147220597\nZKRuntimeLib.clsZKFileSystem.DirScan\n"
            "File not found\nruntime.chm\n1000053");
}

TEST(RaiseConvention, ErrorTrapWrapsEveryFailureOfTheBody) {
  EXPECT_EQ(WithErrorTrap(xcZKERR_FS_DIRKILL, "clsZKFileSystem", "DirKill", [] { return 5; }), 5);
  const std::pair<const char*, std::function<void()>> rows[] = {
      {"Type mismatch\n\n0", [] { RaiseRuntime(RuntimeError::kTypeMismatch); }},
      {"Out of memory\n\n0", [] { throw std::bad_alloc(); }},
      {"inner\nx.hlp\n7", [] { throw Error(70, u"elsewhere", u"inner", u"x.hlp", 7); }},
  };
  for (const auto& [fields, body] : rows) {
    const auto trapped = [&] {
      WithErrorTrap(xcZKERR_FS_DIRKILL, "clsZKFileSystem", "DirKill", body);
    };
    EXPECT_EQ(RaisedFields(trapped),
              std::string("-2147220600\nZKRuntimeLib.clsZKFileSystem.DirKill\n") + fields);
  }
}

TEST(RaiseConvention, RuntimeErrorsCarryTheRuntimesNumberAndText) {
  EXPECT_EQ(RaisedFields([] { RaiseRuntime(RuntimeError::kTypeMismatch); }),
            "13\nZKRuntimeLib\nType mismatch\n\n0");
  const std::pair<int32_t, const char*> rows[] = {
      {5, "Invalid procedure call or argument"},
      {9, "Subscript out of range"},
      {438, "Object doesn't support this property or method"},
      {450, "Wrong number of arguments or invalid property assignment"},
      {12345, "Application-defined or object-defined error"},
  };
  for (auto [number, text] : rows) EXPECT_EQ(U8(RuntimeErrorText(number)), text) << number;
  EXPECT_STREQ(Error(xcZKERR_FS_FILEKILL, u"src", u"Ошибка").what(),
               "Error -2147220599 (src): Ошибка");
}

}  // namespace
}  // namespace tsruntime
