// clsZKFileSystem by name: written-back arguments, defaults, the root object's factory and
// the enumerations, as late-bound hosts see them.
#include "system/fs_fixture.h"
#include "tsruntime/clsZKRunTimeLib.h"

namespace tsruntime::testing {
namespace {

class FsByName : public FsTest {
 protected:
  Variant Call(StringView member, std::vector<Argument>& args) {
    return Invoke(*object_, member, InvokeKind::kCall, args);
  }
  Ref<Object> object_ = CreateObject(u"TSRuntimeLib.clsZKFileSystem");
};

TEST_F(FsByName, ContentTravelsThroughWrittenBackArguments) {
  std::vector<Argument> args = {{u"DataString", u"Текст"}, {u"FileFullName", Path("a.txt")}};
  EXPECT_EQ(Call(u"StringWrite", args), Variant(true)) << "the mode defaults to replace";
  args = {{u"", Variant()}, {u"", Path("a.txt")}};
  EXPECT_EQ(Call(u"StringRead", args), Variant(true));
  EXPECT_EQ(args[0].value, Variant(u"Текст")) << "DataBuf is written back";

  args = {{u"FileFullName", Path("b.bin")},
          {u"DataArray", Variant(SafeArray::FromBytes(ToBytes("\x01\x02")))}};
  EXPECT_EQ(Call(u"BinaryWrite", args), Variant(true));
  args = {{u"", Path("b.bin")}, {u"DataArrayBuf", Variant()}};
  EXPECT_EQ(Call(u"BinaryRead", args), Variant(true)) << "an Empty buffer is taken as a new array";
  ASSERT_TRUE(args[1].value.isArray());
  const SafeArray& read = args[1].value.asArray();
  EXPECT_EQ(read.type(), ArrayOf(VarType::kByte));
  EXPECT_EQ(read.ubound(), 1);
  EXPECT_EQ(Text(read.bytes()), "\x01\x02");

  args = {{u"", Path("b.bin")}, {u"", Variant(u"text")}};
  EXPECT_EQ(Outcome([&] { Call(u"BinaryRead", args); }), "error 13") << "not a byte array";
  args = {{u"", Path("c.txt")}, {u"", Variant(u"text")}};
  EXPECT_EQ(Outcome([&] { Call(u"BinaryWrite", args); }), "error 13");
}

TEST_F(FsByName, TheRootObjectHandsOutANewFileSystemObjectOnEveryRead) {
  Ref<Object> root = CreateObject(u"TSRuntimeLib.clsZKRunTimeLib");
  std::vector<Argument> none;
  const Variant one = Invoke(*root, u"GetObjFileSystem", InvokeKind::kCall, none);
  const Variant two = Invoke(*root, u"GetObjFileSystem", InvokeKind::kCall, none);
  EXPECT_EQ(one.asObject()->classInfo().name, u"clsZKFileSystem");
  EXPECT_NE(one.asObject().get(), two.asObject().get());
}

TEST_F(FsByName, EnumerationsAreRegisteredWithTheirValues) {
  std::map<String, int32_t> values;
  for (const EnumInfo* e : RegisteredEnums()) {
    if (e->name != u"xeZK_GETSYSFOLDER" && e->name != u"xeZK_FILEWRITEMODES") continue;
    for (const auto& [name, value] : e->members) values[name] = value;
  }
  const std::map<String, int32_t> expected = {
      {u"xcZK_GETSYSFOLDER_WINDOWS", 0}, {u"xcZK_GETSYSFOLDER_SYSTEM", 1},
      {u"xcZK_GETSYSFOLDER_TEMP", 2},    {u"xcZK_FILEWRITE_IFEXISTS", 1},
      {u"xcZK_FILEWRITE_REPLACE", 4},    {u"xcZK_FILEWRITE_APPEND", 8}};
  EXPECT_EQ(values, expected);
}

}  // namespace
}  // namespace tsruntime::testing
