// The storage text: what each level writes, what it reads back, the ErrFlag rule, and
// storage files.
#include <gtest/gtest.h>

#include "containers/support.h"
#include "system/fs_fixture.h"
#include "tsruntime/automation/locale.h"
#include "tsruntime/clsZKStorage.h"

namespace tsruntime {
namespace {

using namespace container_tests;

// "D9(n)": n in nine digits.
String D9(size_t n) {
  std::string digits = std::to_string(n);
  return FromAscii(std::string(9 - digits.size(), '0') + digits);
}
String Chunk(const String& x) { return D9(x.size() + 9) + x; }
String NodeText(const String& name, const String& list, const String& items) {
  return Chunk(name) + Chunk(list) + Chunk(items);
}
String Record(const char* type, const String& text) {
  return D9(text.size() + 13) + FromAscii(type) + text;
}
// Node A holding the string B, and the text of that item.
const String kB = u"0000000140008B", kA = NodeText(u"A", u"", kB);

Ref<clsZKStorage> Make(const char16_t* name, std::vector<Variant> values = {},
                       std::vector<Ref<clsZKStorage>> children = {}) {
  auto n = New<clsZKStorage>();
  n->LetName(name);
  for (const Variant& v : values) EXPECT_TRUE(n->Items()->Add(v));
  for (const auto& c : children) n->Nodes()->Add(c);
  return n;
}

String Text(const clsZKStorage& node) {
  bool flag = true;
  return node.ToString(flag);
}

// What a node holds, as one text: name, then items as their text, then children in
// braces.
std::string Shape(const Ref<clsZKStorage>& node) {
  std::string s = ToUtf8(node->Name());
  bool ignored;
  if (node->Items()->Count() > 0) s += "[" + ToUtf8(node->Items()->ToString(ignored)) + "]";
  for (int32_t i = 0; i < node->Nodes()->Count(); ++i) s += "{" + Shape(node->Nodes()->Item(i)) + "}";
  return s;
}

// Each level writes the grammar; only a failure in a level's own step raises its ErrFlag.
TEST(StorageText, EachLevelWritesTheGrammarAndOnlyItsOwnFailureRaisesItsErrFlag) {
  ScopedLocale locale("ru_RU");
  const Variant date = Variant(Date::FromParts({2024, 3, 5, 14, 7, 9}));
  const Variant bytes = Variant(SafeArray::FromBytes(std::vector<uint8_t>{0x41, 0xC0}));
  auto no_items = Make(u"bad", {I(1)}), no_lists = Make(u"n");
  no_items->SetItems(nullptr), no_lists->SetNodes(nullptr);
  auto with_nothing = Make(u"w", {}, {Make(u"first")}), looped = Make(u"loop");
  with_nothing->Nodes()->Add(nullptr), looped->Nodes()->Add(looped);
  struct Case { const char* sentence; Ref<clsZKStorage> node; String text; bool flag = false; };
  const Case cases[] = {
      {"a new node", Make(u""), u"000000009000000009000000009"},
      {"A holding B", Make(u"A", {Variant(String(u"B"))}), u"000000010A000000009000000023" + kB},
      {"Integer 5, an empty string and False", Make(u"", {Variant(int16_t{5}), Variant(String()), Variant(false)}), NodeText(u"", u"", u"00000001400025" u"0000000130008" u"0000000130011")},
      {"a Double, a date, True, Null and bytes", Make(u"x", {Variant(1.5), date, Variant(true), Variant::Null(), bytes}), NodeText(u"x", u"", Record("0005", u"1,5") + Record("0007", u"2024-03-05 14:07:09") + Record("0011", u"1") + Record("0001", u"") + Record("8209", u"AА"))},
      {"a Long array kept as its type code alone", Make(u"", {Variant(SafeArray(VarType::kLong, {Bounds{0, 1}}))}), NodeText(u"", u"", u"0000000138195")},
      {"two children in order, the second with a grandchild", Make(u"r", {}, {Make(u"A", {Variant(String(u"B"))}), Make(u"c", {}, {Make(u"")})}), NodeText(u"r", Chunk(kA) + Chunk(NodeText(u"c", Chunk(NodeText(u"", u"", u"")), u"")), u"")},
      {"a name of line breaks, BEL and digits", Make(u"1\r\n\a2"), NodeText(u"1\r\n\a2", u"", u"")},
      {"a node without items fails, with nothing written", no_items, u"", true},
      {"its parent does not see it: the chunk is empty, the sibling follows", Make(u"holder", {}, {no_items, Make(u"ok")}), NodeText(u"holder", D9(9) + Chunk(NodeText(u"ok", u"", u"")), u"")},
      {"a list holding Nothing fails, and its node does not see it", with_nothing, NodeText(u"w", u"", u"")},
      {"a node under itself is written once, its second visit empty", looped, NodeText(u"loop", D9(9), u"")},
  };
  for (const Case& c : cases) {
    bool flag = !c.flag;
    EXPECT_EQ(c.node->ToString(flag), c.text) << c.sentence;
    EXPECT_EQ(flag, c.flag) << c.sentence;
  }
  bool list_flag = false;
  EXPECT_EQ(with_nothing->Nodes()->ToString(list_flag), u"");
  EXPECT_TRUE(list_flag) << "the list's own failure shows on the list";
  EXPECT_FALSE(no_lists->ToObject(NodeText(u"", u"", u""))) << "a node without lists";
  looped->Clear();  // a cycle outlives its last outside reference
}

// Every node read starts with a name, an item and a child; the list and item levels get
// the same text, each starting with one old entry. Shape "*": what a failed node read
// leaves beyond the clearing is not defined; items -1: the count after a failure is not.
TEST(StorageText, EachLevelReadsItsTextByTrustingTheLengths) {
  const std::string a = "A[" + ToUtf8(kB) + "]";
  const String bad_child = Chunk(u"000000009x");
  struct Case { const char* sentence; String text; bool result; std::string shape; bool list_result = false,
                items_result = false; int32_t children = 0, items = -1; };
  const Case cases[] = {
      {"the empty text", u"", false, "", true, true, 0, 0},
      {"three empty chunks are an empty node", u"000000009000000009000000009", true, ""},
      {"node A holding B, a fourth chunk ignored", kA + Chunk(u"zz"), true, a},
      {"two node chunks are two children, and two records", Chunk(kA) + Chunk(kA), false, "*", true, true, 2, 2},
      {"one stray character after the chunks is ignored", kA + u"7", true, a},
      {"two chunks are too few", Chunk(u"N") + Chunk(u""), false, "*"},
      {"a length field that is not a number", u"00000001xA000000009000000009", false, ""},
      {"a length below nine", u"000000008000000009000000009", false, ""},
      {"a text of one character: no node, no list, and no records", u"0", false, "", false, true, 0, 0},
      {"a chunk running past the end is taken short", Chunk(u"N") + Chunk(u"") + u"000000030" + kB, true, "N[" + ToUtf8(kB) + "]"},
      {"children in order, grandchild included", NodeText(u"r", Chunk(kA) + Chunk(NodeText(u"c", Chunk(NodeText(u"g", u"", u"")), u"")), u""), true, "r{" + a + "}{c{g}}"},
      {"a malformed child is dropped and its siblings kept", NodeText(u"r", Chunk(kA) + bad_child + Chunk(NodeText(u"z", u"", u"")), u""), false, "r{" + a + "}{z}"},
      {"a malformed grandchild fails its parent, which is dropped", NodeText(u"r", Chunk(NodeText(u"c", bad_child, u"")) + Chunk(kA), u""), false, "r{" + a + "}"},
      {"a child list with a bad length field makes no children", NodeText(u"r", Chunk(kA) + u"00000000x", u""), false, "r"},
      {"a bad item record fails the node", NodeText(u"r", u"", kB + u"000000014000xB"), false, "*"},
      {"a record of a Long array type with its text", u"0000000158195xy", false, "*", false, true, 0, 1},
      {"records taken short at the end", Record("0003", u"12") + u"000000020000", false, "*", false, true, 0, 2},
      {"a type field that is not a number", u"000000014000xB", false, "*"},
      {"a record length that is not a number", u"00000001x0008B", false, "*"},
      {"a record length below thirteen", u"0000000120008", false, "*"},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.sentence);
    auto node = Make(u"old", {I(1)}, {Make(u"old child")});
    EXPECT_EQ(node->ToObject(c.text), c.result);
    if (c.shape != "*") { EXPECT_EQ(Shape(node), c.shape); }
    auto list = New<clsZKStorageNodes>();
    auto kept = Make(u"old", {I(1)});
    list->Add(kept);
    EXPECT_EQ(list->ToObject(c.text), c.list_result);
    if (c.list_result) { EXPECT_EQ(list->Count(), c.children); }
    EXPECT_EQ(Shape(kept), "") << "the old child is emptied where it is held";
    auto items = New<clsZKStorageItems>();
    items->Add(I(1));
    EXPECT_EQ(items->ToObject(c.text), c.items_result);
    if (c.items >= 0) { EXPECT_EQ(items->Count(), c.items); }
  }
}

// Three levels holding every type an item keeps.
Ref<clsZKStorage> EveryTypeTree() {
  std::vector<Variant> all = {
      Variant::Null(), Variant(int16_t{-7}), I(70000), Variant(0.25f), Variant(-1.5e300),
      Variant(Currency{-15000}), Variant(Date::FromParts({2024, 3, 5, 14, 7, 9})),
      Variant(String(u"line\r\nbreak\a000000009")), Variant(true), Variant(false),
      Variant(*Decimal::ParsePlain("1.25")), Variant(uint8_t{200}),
      Variant(SafeArray::FromBytes(std::vector<uint8_t>{0, 13, 10, 255})),
      Variant(SafeArray(VarType::kString, {Bounds{0, 0}}))};
  auto leaf = Make(u"leaf", all);
  return Make(u"root", all, {Make(u"mid", all, {leaf, Make(u"")}), Make(u"second", {I(2)})});
}

class StorageFiles : public testing::FsTest {};

TEST_F(StorageFiles, ATreeOfEveryTypeSurvivesSaveAndLoad) {
  ScopedLocale locale("ru_RU");
  auto tree = EveryTypeTree();
  const String text = Text(*tree);
  ASSERT_TRUE(tree->Save(Path("tree.dat")));
  const std::string bytes = Get("tree.dat");
  ASSERT_EQ(bytes.size(), text.size() * 2) << "two bytes a character, nothing else";
  EXPECT_EQ(bytes.substr(0, 6), std::string("0\0" "0\0" "0\0", 6)) << "little-endian, no byte-order mark";
  auto loaded = Make(u"stale", {I(1)}, {Make(u"stale child")});
  ASSERT_TRUE(loaded->Load(Path("tree.dat")));
  EXPECT_EQ(Text(*loaded), text);
  EXPECT_EQ(loaded->Nodes()->Item(0)->Nodes()->Item(0)->Items()->Item(12),
            tree->Items()->Item(12)) << "the byte array comes back";
  EXPECT_EQ(loaded->Nodes()->Item(0)->Items()->Item(7), tree->Items()->Item(7));
}

TEST_F(StorageFiles, FilesWrittenByHandLoadAndBadFilesAreRefused) {
  std::string cyrillic_bytes;
  for (char16_t c : NodeText(u"Ж", u"", Record("0008", u"é"))) {
    cyrillic_bytes += static_cast<char>(c & 0xFF), cyrillic_bytes += static_cast<char>(c >> 8);
  }
  Put("hand.dat", cyrillic_bytes);
  Put("odd.dat", cyrillic_bytes + "x");
  Put("empty.dat", "");
  struct Case { const char* sentence; const char* file; bool result; std::string shape; };
  const Case cases[] = {
      {"a file written from the grammar", "hand.dat", true, "Ж[0000000140008é]"},
      {"an odd last byte is ignored", "odd.dat", true, "Ж[0000000140008é]"},
      {"a missing file leaves the node as it was", "missing.dat", false, "kept[0000000140003" "1]"},
      {"an empty file leaves the node as it was", "empty.dat", false, "kept[0000000140003" "1]"},
  };
  for (const Case& c : cases) {
    auto node = Make(u"kept", {I(1)});
    EXPECT_EQ(node->Load(Path(c.file)), c.result) << c.sentence;
    EXPECT_EQ(Shape(node), c.shape) << c.sentence;
  }
  auto broken = Make(u"b");
  broken->SetItems(nullptr);
  Put("broken.dat", "old");
  EXPECT_FALSE(broken->Save(Path("broken.dat"))) << "a root whose own step fails";
  EXPECT_EQ(Get("broken.dat"), "") << "what was built, nothing, is written all the same";
  EXPECT_FALSE(Make(u"x")->Save(Path("no/such/folder/x.dat")));
}

// On a small stack, where one call per level would overflow: written, read, cleared
// down to the deepest node, and released whole.
TEST(StorageText, DeepAndWideTreesRoundTripClearAndDieWithoutRecursion) {
  String first, second, bottom_name = u"unset";
  int32_t wide = 0;
  ASSERT_TRUE(OnSmallStack([&] {
    auto top = Make(u"top"), bottom = top, copy = New<clsZKStorage>();
    for (int i = 0; i < 20000; ++i) {
      auto next = Make(u"", {I(i)});
      bottom->Nodes()->Add(next), bottom = next;
      top->Nodes()->Add(Make(u"w"));
    }
    bottom->LetName(u"bottom");
    first = Text(*top);
    EXPECT_TRUE(copy->ToObject(first));
    second = Text(*copy), wide = copy->Nodes()->Count();
    top->Clear(), bottom_name = bottom->Name();
  }));  // `copy`, never cleared, dies whole with its last reference
  EXPECT_EQ(second, first);
  EXPECT_EQ(wide, 20001);
  EXPECT_EQ(bottom_name, u"") << "Clear reached the deepest node";
}

}  // namespace
}  // namespace tsruntime
