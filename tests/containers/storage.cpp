// The storage tree: clsZKStorageItems keeps typed values as text; clsZKStorage and
// clsZKStorageNodes hold named nodes by reference, and clearing empties them in place.
#include <gtest/gtest.h>

#include <cmath>
#include <optional>

#include "containers/support.h"
#include "tsruntime/automation/locale.h"
#include "tsruntime/clsZKStorage.h"

namespace tsruntime {
namespace {

using namespace container_tests;

Variant At(int y, int mo, int d, int h = 0, int mi = 0, int s = 0, double extra = 0) {
  return Variant(Date{Date::FromParts({y, mo, d, h, mi, s}).value + extra / 86400});
}
Variant Bytes(const std::vector<uint8_t>& b, int32_t lower = 0) {
  return Variant(SafeArray::FromBytes(b, lower));
}

TEST(StorageItems, AcceptedTypesComeBackInBothLocalesAndOthersAreRefused) {
  std::vector<uint8_t> all(256);
  for (int i = 0; i < 256; ++i) all[i] = static_cast<uint8_t>(i);
  const Variant refused = ErrorValue{-1}, obj(New<clsZKStorage>());
  struct Case { const char* sentence; Variant added, read; };  // read Empty: as added
  const Case cases[] = {
      {"Null", Variant::Null()}, {"the smallest Integer", Variant(int16_t{-32768})},
      {"the smallest Long", I(-2147483647 - 1)},
      {"a Single kept to 7 digits", Variant(1.0f / 3.0f), Variant(0.3333333f)},
      {"a Double with 15 digits", Variant(123456.789012345)},
      {"a Double kept to 15 digits", Variant(0.1 + 0.2), Variant(0.3)},
      {"the largest Currency", Variant(Currency{INT64_MAX})},
      {"a Decimal", Variant(*Decimal::ParsePlain("-79228162514264.337593543950335"))},
      {"a Byte", Variant(uint8_t{255})},
      {"a date, to whole seconds", At(2024, 3, 5, 14, 7, 9, 0.4), At(2024, 3, 5, 14, 7, 9)},
      {"a date before 1899", At(1812, 9, 7, 6, 0, 1)}, {"the first date", At(100, 1, 1)},
      {"the last date", At(9999, 12, 31, 23, 59, 59)},
      {"a string with Cyrillic, a line break and NUL", Variant(String(u"Жa\r\nb\0c", 7))},
      {"True", Variant(true)}, {"False", Variant(false)},
      {"all 256 bytes, read back from index 0", Bytes(all, 5), Bytes(all)},
      {"an empty byte array", Bytes({})}, {"Empty", Variant(), refused},
      {"Nothing", Variant::Nothing(), refused}, {"an object", Variant(obj), refused},
      {"an Error value", Variant(ErrorValue{5}), refused},
      {"a byte array never dimensioned", Variant(SafeArray(VarType::kByte)), refused},
      {"a date before the year 100", Variant(Date{-7e5}), refused},
      {"a date past the year 9999", Variant(Date{3e6}), refused},
      {"a date that is not a number", Variant(Date{std::nan("")}), refused},
  };
  for (const char* locale : {"ru_RU", "en_US"}) {
    ScopedLocale scoped(locale);
    auto items = New<clsZKStorageItems>();
    for (const Case& c : cases) {
      SCOPED_TRACE(std::string(c.sentence) + " in " + locale);
      const int32_t count = items->Count();
      const bool accepted = c.read != refused;
      ASSERT_EQ(items->Add(c.added), accepted);
      ASSERT_EQ(items->Count(), count + accepted);
      if (!accepted) continue;
      EXPECT_EQ(items->Item(count), c.read.isEmpty() ? c.added : c.read);
    }
  }
}

TEST(StorageItems, FractionsReadOnlyUnderTheLocaleTheyWereWrittenIn) {
  const std::pair<const char*, Variant> cases[] = {
      {"ru_RU", Variant(1.5)}, {"ru_RU", Variant(Currency{-15000})}, {"en_US", Variant(0.5f)},
      {"en_US", Variant(Currency{-15000})}};
  for (const auto& [written, value] : cases) {
    auto items = New<clsZKStorageItems>();
    std::optional<ScopedLocale> locale(written);
    items->Add(value), items->Add(Variant(-3.0));
    locale.emplace(written == std::string("ru_RU") ? "en_US" : "ru_RU");
    EXPECT_EQ(ErrorNumberOf([&] { items->Item(0); }), 13)
        << ToUtf8(TypeName(value.type())) << " written in " << written;
    EXPECT_EQ(items->Item(1), Variant(-3.0)) << "a whole number reads anywhere";
  }
}

TEST(StorageItems, ItemErrorsCarryAllFiveFieldsInTheInterfaceLanguage) {
  const int32_t saved_language = InterfaceLanguage();
  auto empty = New<clsZKStorageItems>(), filled = New<clsZKStorageItems>();
  filled->Add(I(1));
  filled->Add(Variant(SafeArray(VarType::kLong, {Bounds{0, 2}})));  // kept, but not readable
  filled->Add(Variant(SafeArray::FromVariants({I(1)})));
  const int32_t kEmpty = xcZKERR_STORAGE_NOITEMS, kIndex = xcZKERR_STORAGE_INDEX,
                kType = xcZKERR_STORAGE_DATATYPE;
  struct Case { const char* sentence; bool on_empty; int32_t index, language, number;
                const char16_t* description; };
  const Case cases[] = {
      {"a negative index", false, -1, 0, kEmpty, u"Нет данных в хранилище"},
      {"index 0 of an empty list", true, 0, 0, kIndex, u"Недопустимый индекс элемента"},
      {"a Long array", false, 1, 0, kType, u"Тип данных #8195 не поддерживается"},
      {"English: a negative index, empty list", true, -5, 1, kEmpty, u"Storage is Empty"},
      {"English: an index past the end", false, 3, 1, kIndex, u"Index out of bounds"},
      {"language 7 is English: a Variant array", false, 2, 7, kType, u"Data type #8204 is not supported"},
  };
  for (const Case& c : cases) {
    SetInterfaceLanguage(c.language);
    EXPECT_EQ(ErrorOf([&] { (c.on_empty ? empty : filled)->Item(c.index); }),
              ErrorFields(c.number, u"ZKRuntimeLib.clsZKStorageItems.Item", c.description, u"", 0))
        << c.sentence;
  }
  SetInterfaceLanguage(saved_language);
}

// A node with a name and one item.
Ref<clsZKStorage> Node(const char16_t* name = u"n") {
  auto n = New<clsZKStorage>();
  n->LetName(name), n->Items()->Add(I(1));
  return n;
}

TEST(StorageNodes, ChildrenAreHeldByReferenceInOrderEvenTwice) {
  auto list = New<clsZKStorageNodes>();
  auto a = Node(u"a"), b = Node(u"b");
  list->Add(a), list->Add(b), list->Add(a), list->SetItem(1, a);
  a->LetName(u"A");
  std::u16string names;
  Ref<Enumerator> e = list->NewEnum();
  for (Variant v; e->Next(v);) names += RefCast<clsZKStorage>(v.asObject())->Name();
  EXPECT_EQ(names, u"AAA");
  EXPECT_EQ(ErrorNumberOf([&] { list->Item(3); }), 9);
}

TEST(StorageNodes, ClearEmptiesEveryNodeReachedInPlaceWhoeverHoldsIt) {
  // Nodes 0 to n-1 with the edges (parent, child); node 0's children are cleared.
  struct Case { const char* sentence; int nodes; std::vector<std::pair<int, int>> edges;
                bool top_reached; int listless = -1, shares_top_list = -1; };
  const Case cases[] = {
      {"a child and grandchild the host holds", 3, {{0, 1}, {1, 2}}, false},
      {"the same child twice", 2, {{0, 1}, {0, 1}}, false},
      {"a child without lists", 2, {{0, 1}}, false, 1}, {"a node under itself", 1, {{0, 0}}, true},
      {"two nodes under each other", 2, {{0, 1}, {1, 0}}, true},
      {"one child under two parents, twice each", 4, {{0, 1}, {0, 2}, {1, 3}, {1, 3}, {2, 3}, {2, 3}}, false},
      {"a child whose list is its parent's", 2, {{0, 1}}, false, -1, 1},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.sentence);
    std::vector<Ref<clsZKStorage>> all;
    std::vector<Ref<clsZKStorageItems>> items;
    for (int i = 0; i < c.nodes; ++i) all.push_back(Node()), items.push_back(all[i]->Items());
    if (c.shares_top_list > 0) all[c.shares_top_list]->SetNodes(all[0]->Nodes());
    for (auto [parent, child] : c.edges) all[parent]->Nodes()->Add(all[child]);
    if (c.listless > 0) all[c.listless]->SetNodes(nullptr), all[c.listless]->SetItems(nullptr);
    all[0]->Nodes()->Clear();
    EXPECT_EQ(all[0]->Nodes()->Count(), 0);
    EXPECT_EQ(all[0]->Name().empty() && all[0]->Items()->Count() == 0, c.top_reached);
    for (int i = 1; i < c.nodes; ++i) {
      EXPECT_EQ(all[i]->Name(), u"") << "node " << i;
      if (i == c.listless) continue;
      EXPECT_EQ(all[i]->Items(), items[i]) << "node " << i << ": emptied, not replaced";
      EXPECT_EQ(all[i]->Items()->Count() + all[i]->Nodes()->Count(), 0) << "node " << i;
    }
  }
}

TEST(StorageNodes, ListsLiveAsLongAsTheirHoldersWhicheverIsReleasedFirst) {
  // A node's lists share its memory; each of the three must live on alone.
  Ref<clsZKStorageItems> kept_items;
  Ref<clsZKStorageNodes> kept_nodes;
  auto parent = Node(u"p");
  {
    auto node = Node(u"gone");
    kept_items = node->Items(), kept_nodes = node->Nodes();
    kept_nodes->Add(Node(u"child"));
    parent->Nodes()->Add(node);
    node->SetItems(New<clsZKStorageItems>());  // the first list goes before the node
  }
  parent = nullptr;  // the node goes with its last holder, its child list stays
  kept_items->Add(Variant(String(u"more")));
  EXPECT_EQ(kept_items->Count(), 2);
  EXPECT_EQ(ToString(kept_items->Item(1)), u"more");
  ASSERT_EQ(kept_nodes->Count(), 1);
  EXPECT_EQ(kept_nodes->Item(0)->Name(), u"child");
}

}  // namespace
}  // namespace tsruntime
