// PlainWindow, the window scripts subclass: its handle, its properties as scripts read them,
// and the widget going with the object whatever state it is in.
#include <gtest/gtest.h>

#include <QApplication>

#include "subclass_support.h"
#include "tsruntime/PlainWindow.h"

namespace tsruntime {
namespace {

Variant Call(Object& o, StringView member, std::vector<Variant> values = {}) {
  std::vector<Argument> args;
  for (Variant& v : values) args.push_back({{}, std::move(v)});
  return Invoke(o, member, InvokeKind::kCall, args);
}

TEST(PlainWindow, GivesScriptsAHandleAndTheSubclassingProperties) {
  const auto widgets_before = QApplication::topLevelWidgets().size();
  Ref<Object> window = CreateObject(u"TSRuntimeLib.PlainWindow");
  const int32_t h = ToLong(Call(*window, u"Handle"));
  EXPECT_NE(h, 0);
  std::string journal;
  auto client = New<testing::Recorder>("A", &journal, 4);
  New<GSubclass>()->AttachMessage(client, h, 0x401);
  const String name = FromAscii(std::to_string(h));
  struct Row {
    const char* what;
    String property;
    std::string expected;
  };
  const std::vector<Row> rows = {
      {"the message's client count as Long", name + u"#1025C", "Long 1"},
      {"the client's address as Double",
       name + u"#1025#1", "Double " + std::to_string(reinterpret_cast<quintptr>(client.get()))},
      {"an absent property as Empty", name + u"#1026C", "Empty "},
  };
  for (const Row& row : rows) {
    const Variant v = Call(*window, u"WindowProperty", {Variant(row.property)});
    std::string text = ToUtf8(TypeName(v.type())) + " " + ToUtf8(ToString(v));
    EXPECT_EQ(text, row.expected) << row.what;
  }
  New<GSubclass>()->DetachMessage(client, h, 0x401);

  Call(*window, u"Show");
  Call(*window, u"Close");
  EXPECT_EQ(ToLong(Call(*window, u"Handle")), 0) << "a closed window has no native window";
  window = nullptr;
  EXPECT_EQ(QApplication::topLevelWidgets().size(), widgets_before) << "the widget went too";
}

}  // namespace
}  // namespace tsruntime
