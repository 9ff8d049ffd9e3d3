// The library's error codes and the forms in which every class raises them.
#include <gtest/gtest.h>

#include <algorithm>
#include <new>

#include "support/outcome.h"
#include "tsruntime/automation/dispatch.h"
#include "tsruntime/errors.h"

namespace tsruntime {
namespace {

using testing::RaisedFields;
using testing::U8;

const EnumInfo* FindEnum(StringView name) {
  const auto all = RegisteredEnums();
  const auto found = std::ranges::find(all, name, &EnumInfo::name);
  return found == all.end() ? nullptr : *found;
}

std::vector<std::pair<String, int32_t>> NamesAndValues(const EnumInfo& e) {
  std::vector<std::pair<String, int32_t>> out;
  for (const EnumMember& m : e.members) out.emplace_back(m.name, m.value);
  return out;
}

TEST(ErrorCodes, PublishAll29MembersInOrderWithTheirValues) {
  const std::vector<std::pair<String, int32_t>> expected = {
      {u"xcZKERR_START_CLASS_STRING", -2147220804},  {u"xcZKERR_STRING_INSTRRIGHT", -2147220803},
      {u"xcZKERR_START_CLASS_SYSTEM", -2147220704},  {u"xcZKERR_SYSTEM_KBDL", -2147220703},
      {u"xcZKERR_START_CLASS_FS", -2147220604},      {u"xcZKERR_FS_DIRSMAKE", -2147220603},
      {u"xcZKERR_FS_DIRRENAME", -2147220602},        {u"xcZKERR_FS_PATHSHORT2LONG", -2147220601},
      {u"xcZKERR_FS_DIRKILL", -2147220600},          {u"xcZKERR_FS_FILEKILL", -2147220599},
      {u"xcZKERR_FS_FILERENAME", -2147220598},       {u"xcZKERR_FS_DIRSCAN", -2147220597},
      {u"xcZKERR_START_CLASS_ARRAY", -2147220504},   {u"xcZKERR_ARRAY_SORTBUBBLE", -2147220503},
      {u"xcZKERR_ARRAY_SORTQUICK", -2147220502},     {u"xcZKERR_ARRAY_SORTSEL", -2147220501},
      {u"xcZKERR_START_CLASS_REG", -2147220404},     {u"xcZKERR_START_CLASS_INI", -2147220304},
      {u"xcZKERR_INI_NOFILE", -2147220303},          {u"xcZKERR_INI_NOSTRING", -2147220302},
      {u"xcZKERR_INI_KEYMISSING", -2147220301},      {u"xcZKERR_INI_FILELOAD", -2147220300},
      {u"xcZKERR_INI_FILESAVE", -2147220299},        {u"xcZKERR_START_CLASS_STORAGE", -2147220204},
      {u"xcZKERR_STORAGE_DATATYPE", -2147220203},    {u"xcZKERR_STORAGE_INDEX", -2147220202},
      {u"xcZKERR_STORAGE_NOITEMS", -2147220201},     {u"xcZKERR_STORAGE_NAMEREQ", -2147220200},
      {u"xcZKERR_STORAGE_ISROOT", -2147220199},
  };
  const EnumInfo* codes = FindEnum(u"xeZK_ERROR_CODES");
  ASSERT_NE(codes, nullptr);
  EXPECT_EQ(NamesAndValues(*codes), expected);
  const EnumInfo* languages = FindEnum(u"xeZK_INTERFACE_LANGUAGE");
  ASSERT_NE(languages, nullptr);
  EXPECT_EQ(NamesAndValues(*languages),
            (decltype(expected){{u"xcZKLANG_RUS", 0}, {u"xcZKLANG_ENG", 1}}));
}

// Raises what `body` raises, through the error trap of clsZKFileSystem.DirKill.
std::function<void()> Trapped(std::function<void()> body) {
  return [body] { WithErrorTrap(xcZKERR_FS_DIRKILL, "clsZKFileSystem", "DirKill", body); };
}

TEST(RaiseConvention, EveryFormFillsAllFiveFields) {
  const Error caught(53, u"ZKRuntimeLib", u"File not found", u"runtime.chm", 1000053);
  const std::pair<std::function<void()>, const char*> rows[] = {
      {[] { RaiseOwn(xcZKERR_INI_KEYMISSING, "clsZKIniFile", "GetData", u"Нет ключа: a.b"); },
       "-2147220301\nZKRuntimeLib.clsZKIniFile.GetData\nНет ключа: a.b\n\n0"},
      // The wrapping form keeps the caught text and help, one line more per argument.
      {[&] {
         RaiseWrapped(xcZKERR_FS_FILERENAME, "clsZKFileSystem", "FileRename", caught,
                      {{"OldName", u"/tmp/нет"}, {"NewName", u""}});
       },
       "-2147220598\nZKRuntimeLib.clsZKFileSystem.FileRename\n"
       "File not found\r\nOldName = '/tmp/нет'\r\nNewName = ''\nruntime.chm\n1000053"},
      {[&] { RaiseWrapped(xcZKERR_FS_DIRSCAN, "clsZKFileSystem", "DirScan", caught); },
       "-2147220597\nZKRuntimeLib.clsZKFileSystem.DirScan\nFile not found\nruntime.chm\n1000053"},
      {[] { RaiseRuntime(RuntimeError::kTypeMismatch); }, "13\nZKRuntimeLib\nType mismatch\n\n0"},
      {Trapped([] { RaiseRuntime(RuntimeError::kTypeMismatch); }),
       "-2147220600\nZKRuntimeLib.clsZKFileSystem.DirKill\nType mismatch\n\n0"},
      {Trapped([] { throw std::bad_alloc(); }),
       "-2147220600\nZKRuntimeLib.clsZKFileSystem.DirKill\nOut of memory\n\n0"},
      {Trapped([] { throw Error(70, u"elsewhere", u"inner", u"x.hlp", 7); }),
       "-2147220600\nZKRuntimeLib.clsZKFileSystem.DirKill\ninner\nx.hlp\n7"},
  };
  for (const auto& [body, fields] : rows) EXPECT_EQ(RaisedFields(body), fields);
  EXPECT_EQ(WithErrorTrap(xcZKERR_FS_DIRKILL, "clsZKFileSystem", "DirKill", [] { return 5; }), 5);
  EXPECT_EQ(U8(ErrorSource("clsZKStorageItems", "Item")), "ZKRuntimeLib.clsZKStorageItems.Item");
  EXPECT_STREQ(Error(xcZKERR_FS_FILEKILL, u"src", u"Ошибка").what(),
               "Error -2147220599 (src): Ошибка");
  const std::pair<int32_t, const char*> runtime_texts[] = {
      {5, "Invalid procedure call or argument"}, {9, "Subscript out of range"},
      {438, "Object doesn't support this property or method"},
      {450, "Wrong number of arguments or invalid property assignment"},
      {12345, "Application-defined or object-defined error"},
  };
  for (auto [number, text] : runtime_texts) EXPECT_EQ(U8(RuntimeErrorText(number)), text);
}

}  // namespace
}  // namespace tsruntime
