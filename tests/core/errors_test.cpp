// The library's error codes and the forms in which every class raises them.
#include <gtest/gtest.h>

#include <new>

#include "support/outcome.h"
#include "tsruntime/automation/dispatch.h"
#include "tsruntime/errors.h"

namespace tsruntime {
namespace {

using testing::Num;
using testing::RaisedFields;
using testing::U8;

// The codes of a class start at its base and count up; the bases step by 100.
TEST(ErrorCodes, PublishAll29MembersInOrderWithTheirValues) {
  const std::pair<const char*, std::vector<const char*>> classes[] = {
      {"STRING", {"INSTRRIGHT"}}, {"SYSTEM", {"KBDL"}},
      {"FS", {"DIRSMAKE", "DIRRENAME", "PATHSHORT2LONG", "DIRKILL", "FILEKILL", "FILERENAME",
              "DIRSCAN"}},
      {"ARRAY", {"SORTBUBBLE", "SORTQUICK", "SORTSEL"}}, {"REG", {}},
      {"INI", {"NOFILE", "NOSTRING", "KEYMISSING", "FILELOAD", "FILESAVE"}},
      {"STORAGE", {"DATATYPE", "INDEX", "NOITEMS", "NAMEREQ", "ISROOT"}},
  };
  std::string expected, published;
  int32_t base = -2147220804;
  for (const auto& [name, members] : classes) {
    expected += "xcZKERR_START_CLASS_" + std::string(name) + "=" + std::to_string(base) + " ";
    for (size_t i = 0; i < members.size(); ++i) {
      expected += "xcZKERR_" + std::string(name) + "_" + members[i] + "=" +
                  std::to_string(base + 1 + static_cast<int32_t>(i)) + " ";
    }
    base += 100;
  }
  for (const char16_t* name : {u"xeZK_ERROR_CODES", u"xeZK_INTERFACE_LANGUAGE"}) {
    for (const EnumInfo* e : RegisteredEnums()) {
      if (e->name != name) continue;
      for (const EnumMember& m : e->members) published += U8(m.name) + "=" + Num(m.value) + " ";
    }
  }
  EXPECT_EQ(published, expected + "xcZKLANG_RUS=0 xcZKLANG_ENG=1 ");
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
  EXPECT_STREQ(Error(xcZKERR_FS_FILEKILL, u"src", u"Ошибка").what(),
               "Error -2147220599 (src): Ошибка");
  const std::pair<int32_t, const char*> runtime_texts[] = {
      {5, "Invalid procedure call or argument"},
      {450, "Wrong number of arguments or invalid property assignment"},
      {12345, "Application-defined or object-defined error"},
  };
  for (auto [number, text] : runtime_texts) EXPECT_EQ(U8(RuntimeErrorText(number)), text);
}

}  // namespace
}  // namespace tsruntime
