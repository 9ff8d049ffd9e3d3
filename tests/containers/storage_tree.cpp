// clsZKStorage and clsZKStorageNodes: nodes, children by reference, clearing.
#include <gtest/gtest.h>
#include <pthread.h>

#include "containers/support.h"
#include "tsruntime/clsZKStorage.h"

namespace tsruntime {
namespace {

using container_tests::ErrorNumberOf;

Ref<clsZKStorage> Node(const char16_t* name, int32_t items = 0) {
  auto n = New<clsZKStorage>();
  n->LetName(name);
  for (int32_t i = 0; i < items; ++i) n->Items()->Add(Variant(i));
  return n;
}

bool IsEmptied(const clsZKStorage& n) {
  return n.Name().empty() && n.Items()->Count() == 0 && n.Nodes()->Count() == 0;
}

TEST(StorageNode, StartsEmptyWithItsOwnLists) {
  auto a = New<clsZKStorage>();
  auto b = New<clsZKStorage>();
  EXPECT_EQ(a->Name(), u"");
  EXPECT_EQ(a->Nodes()->Count(), 0);
  EXPECT_EQ(a->Items()->Count(), 0);
  EXPECT_NE(a->Nodes().get(), b->Nodes().get());
  EXPECT_NE(a->Items().get(), b->Items().get());
  EXPECT_EQ(a->Nodes().get(), a->Nodes().get()) << "the same list on every read";
}

TEST(StorageNode, ClearEmptiesNameAndListsButKeepsTheListObjects) {
  auto root = Node(u"root", 3);
  root->Nodes()->Add(Node(u"child", 2));
  const auto nodes = root->Nodes();
  const auto items = root->Items();
  root->Clear();
  EXPECT_TRUE(IsEmptied(*root));
  EXPECT_EQ(root->Nodes().get(), nodes.get());
  EXPECT_EQ(root->Items().get(), items.get());
}

TEST(StorageNode, ListsAreReplacedByReference) {
  auto a = Node(u"a");
  auto b = Node(u"b");
  b->SetItems(a->Items());
  b->SetNodes(a->Nodes());
  a->Items()->Add(Variant(u"shared"));
  a->Nodes()->Add(Node(u"c"));
  EXPECT_EQ(b->Items()->Item(0), Variant(u"shared"));
  EXPECT_EQ(b->Nodes()->Item(0)->Name(), u"c");
}

TEST(StorageNode, NothingForAListIsHeldAndSkippedByClear) {
  auto n = Node(u"n", 1);
  n->SetNodes(nullptr);
  n->SetItems(nullptr);
  EXPECT_FALSE(n->Nodes());
  EXPECT_FALSE(n->Items());
  n->Clear();
  EXPECT_EQ(n->Name(), u"");
  auto parent = Node(u"parent");
  parent->Nodes()->Add(n);
  parent->Nodes()->Clear();
  EXPECT_EQ(parent->Nodes()->Count(), 0);
}

TEST(StorageNodes, ChildrenAreReferencesInOrder) {
  auto list = New<clsZKStorageNodes>();
  auto a = Node(u"a");
  auto b = Node(u"b");
  list->Add(a);
  list->Add(b);
  list->Add(a);
  ASSERT_EQ(list->Count(), 3);
  EXPECT_EQ(list->Item(0).get(), a.get());
  EXPECT_EQ(list->Item(1).get(), b.get());
  EXPECT_EQ(list->Item(2).get(), a.get()) << "the same node twice is the same object";
  a->LetName(u"renamed");
  EXPECT_EQ(list->Item(2)->Name(), u"renamed");
  list->SetItem(1, a);
  EXPECT_EQ(list->Item(1).get(), a.get());
}

TEST(StorageNodes, IndexesOutsideTheListAreSubscriptOutOfRange) {
  auto list = New<clsZKStorageNodes>();
  list->Add(Node(u"only"));
  struct Case {
    const char* sentence;
    std::function<void()> action;
  };
  const Case cases[] = {
      {"Item(-1)", [&] { list->Item(-1); }},
      {"Item(Count)", [&] { list->Item(1); }},
      {"setting Item(-1)", [&] { list->SetItem(-1, Node(u"x")); }},
      {"setting Item(Count)", [&] { list->SetItem(1, Node(u"x")); }},
      {"Item(0) of an empty list", [] { New<clsZKStorageNodes>()->Item(0); }},
  };
  for (const Case& c : cases) EXPECT_EQ(ErrorNumberOf(c.action), 9) << c.sentence;
  EXPECT_EQ(list->Item(0)->Name(), u"only");
}

TEST(StorageNodes, ClearEmptiesChildrenTheHostStillHolds) {
  auto root = Node(u"root");
  auto child = Node(u"child", 2);
  auto grandchild = Node(u"grandchild", 1);
  child->Nodes()->Add(grandchild);
  root->Nodes()->Add(child);
  root->Nodes()->Add(Node(u"second"));
  const auto child_items = child->Items();

  root->Nodes()->Clear();

  EXPECT_EQ(root->Nodes()->Count(), 0);
  EXPECT_EQ(root->Name(), u"root") << "the list's own node keeps its name";
  EXPECT_TRUE(IsEmptied(*child));
  EXPECT_TRUE(IsEmptied(*grandchild));
  EXPECT_EQ(child->Items().get(), child_items.get()) << "emptied, not replaced";
}

TEST(StorageNodes, SharedAndCyclicStructuresClearCompletely) {
  struct Case {
    const char* sentence;
    std::function<Ref<clsZKStorage>(std::vector<Ref<clsZKStorage>>&)> build;
  };
  const Case cases[] = {
      {"a node under itself",
       [](std::vector<Ref<clsZKStorage>>& all) {
         auto a = Node(u"a", 1);
         a->Nodes()->Add(a);
         all = {a};
         return a;
       }},
      {"two nodes under each other",
       [](std::vector<Ref<clsZKStorage>>& all) {
         auto a = Node(u"a", 1);
         auto b = Node(u"b", 2);
         a->Nodes()->Add(b);
         b->Nodes()->Add(a);
         all = {a, b};
         return a;
       }},
      {"one child under two parents, twice each",
       [](std::vector<Ref<clsZKStorage>>& all) {
         auto root = Node(u"root");
         auto p = Node(u"p");
         auto q = Node(u"q");
         auto shared = Node(u"shared", 3);
         for (auto& parent : {p, q}) {
           parent->Nodes()->Add(shared);
           parent->Nodes()->Add(shared);
           root->Nodes()->Add(parent);
         }
         all = {root, p, q, shared};
         return root;
       }},
      {"a node whose list is its parent's list",
       [](std::vector<Ref<clsZKStorage>>& all) {
         auto root = Node(u"root", 1);
         auto child = Node(u"child", 1);
         child->SetNodes(root->Nodes());
         root->Nodes()->Add(child);
         all = {root, child};
         return root;
       }},
  };
  for (const Case& c : cases) {
    std::vector<Ref<clsZKStorage>> all;
    Ref<clsZKStorage> top = c.build(all);
    top->Clear();
    for (const auto& n : all) EXPECT_TRUE(IsEmptied(*n)) << c.sentence;
  }
}

// Runs `body` on a thread with a small stack, where one call per level of a deep
// tree would overflow.
void OnSmallStack(const std::function<void()>& body) {
  pthread_attr_t attr;
  pthread_attr_init(&attr);
  pthread_attr_setstacksize(&attr, 256 * 1024);
  pthread_t thread;
  auto run = [](void* f) -> void* {
    (*static_cast<const std::function<void()>*>(f))();
    return nullptr;
  };
  ASSERT_EQ(pthread_create(&thread, &attr, run, const_cast<std::function<void()>*>(&body)), 0);
  pthread_join(thread, nullptr);
  pthread_attr_destroy(&attr);
}

TEST(StorageNodes, DeepChainsClearAndDieWithoutRecursion) {
  constexpr int kDepth = 50000;
  String bottom_name = u"unset";
  size_t top_count = 1;
  OnSmallStack([&] {
    auto root = Node(u"root");
    Ref<clsZKStorage> last = root;
    for (int i = 0; i < kDepth; ++i) {
      auto next = Node(u"n", 1);
      last->Nodes()->Add(next);
      last = next;
    }
    last = nullptr;
    root = nullptr;  // the whole chain goes with its root

    auto cleared = Node(u"top");
    Ref<clsZKStorage> tail = cleared;
    for (int i = 0; i < kDepth; ++i) {
      auto next = Node(u"n");
      tail->Nodes()->Add(next);
      tail = next;
    }
    tail->LetName(u"bottom");
    cleared->Clear();
    bottom_name = tail->Name();
    top_count = static_cast<size_t>(cleared->Nodes()->Count());
  });
  EXPECT_EQ(bottom_name, u"") << "the deepest node was reached";
  EXPECT_EQ(top_count, 0u);
}

TEST(StorageNodes, EnumeratesChildrenInOrder) {
  auto list = New<clsZKStorageNodes>();
  auto a = Node(u"a");
  auto b = Node(u"b");
  list->Add(b);
  list->Add(a);
  list->Add(b);
  std::vector<String> names;
  Ref<Enumerator> e = list->NewEnum();
  Variant v;
  while (e->Next(v)) names.push_back(RefCast<clsZKStorage>(v.asObject())->Name());
  EXPECT_EQ(names, (std::vector<String>{u"b", u"a", u"b"}));
}

TEST(StorageLateBound, HostsBuildATreeByName) {
  constexpr auto call = container_tests::CallByName;
  Ref<Object> root = CreateObject(u"TSRuntimeLib.clsZKStorage");
  Ref<Object> child = CreateObject(u"clsZKStorage");
  call(*root, u"Name", InvokeKind::kLet, {Variant(u"root")});
  Ref<Object> nodes = call(*root, u"Nodes", InvokeKind::kCall, {}).asObject();
  call(*nodes, u"Add", InvokeKind::kCall, {Variant(child)});
  call(*child, u"Name", InvokeKind::kLet, {Variant(u"child")});
  std::vector<Argument> first{{{}, Variant(int32_t{0})}};
  Ref<Object> got = InvokeDefault(*nodes, first).asObject();
  EXPECT_EQ(got.get(), child.get());
  EXPECT_EQ(call(*got, u"Name", InvokeKind::kCall, {}), Variant(u"child"));
  EXPECT_EQ(ErrorNumberOf([&] {
              call(*nodes, u"Add", InvokeKind::kCall, {Variant(New<clsZKStorageItems>())});
            }),
            13)
      << "only a storage node can be a child";
  EXPECT_EQ(ErrorNumberOf([&] { call(*nodes, u"Item", InvokeKind::kCall, {Variant(5)}); }), 9);

  Ref<Object> other_items = CreateObject(u"TSRuntimeLib.clsZKStorageItems");
  call(*other_items, u"Add", InvokeKind::kCall, {Variant(2.5)});
  call(*root, u"Items", InvokeKind::kSet, {Variant(other_items)});
  Ref<Object> items = call(*root, u"Items", InvokeKind::kCall, {}).asObject();
  EXPECT_EQ(items.get(), other_items.get());

  call(*root, u"Clear", InvokeKind::kCall, {});
  EXPECT_EQ(call(*child, u"Name", InvokeKind::kCall, {}), Variant(u""));
  EXPECT_EQ(call(*items, u"Count", InvokeKind::kCall, {}), Variant(int32_t{0}));
}

TEST(StorageLateBound, ListsEnumerateAndDefaultToItem) {
  Ref<Object> nodes = CreateObject(u"TSRuntimeLib.clsZKStorageNodes");
  EXPECT_TRUE(nodes->classInfo().enumerable());
  EXPECT_EQ(nodes->classInfo().defaultMember, u"Item");
  EXPECT_EQ(CreateObject(u"clsZKStorageItems")->classInfo().defaultMember, u"Item");
}

}  // namespace
}  // namespace tsruntime
