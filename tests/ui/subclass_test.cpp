// GSubclass: attaching and detaching clients, the bookkeeping on the window, the order of
// clients, the previous procedure and who decides on it, re-entrant dispatch, destruction,
// errors and windows of other X clients; PlainWindow, the window scripts subclass.
#include <gtest/gtest.h>
#include <xcb/xcb.h>

#include <QEvent>
#include <QVariant>
#include <future>

#include "support/outcome.h"
#include "tsruntime/PlainWindow.h"
#include "tsruntime/WindowMessages.h"
#include "ui_support.h"

namespace tsruntime {
namespace {

using testing::Recorder;
using testing::RaisedFields;
using testing::TestWindow;

constexpr int32_t kUser = wm::kUser;
const std::string kInvalid = "-2147208421\ntsruntime.WindowProc\nInvalid window\n\n0";

// The window's subclassing properties, sorted, as "name=value" with addresses named.
std::string Properties(const QWidget& w, const std::vector<std::pair<const Object*, const char*>>& names = {}) {
  QStringList out;
  for (const QByteArray& name : w.dynamicPropertyNames()) {
    QString value = QString::number(w.property(name.constData()).toULongLong());
    for (const auto& [object, label] : names) {
      if (value.toULongLong() == reinterpret_cast<quintptr>(object)) value = QString::fromLatin1(label);
    }
    out << QString::fromLatin1(name) + u'=' + value;
  }
  out.sort();
  return out.join(u' ').toStdString();
}

// Each test's journal, subclasser and window, its native window made.
class Subclass : public ::testing::Test {
 protected:
  TestWindow window;
  const int32_t h = window.handle();
  std::string journal;
  Ref<GSubclass> sub = New<GSubclass>();
};

// Clients run latest first; detaching one keeps the others in order, even inside a
// dispatch, where the rest of it sees the change; the last detach unhooks the window.
TEST_F(Subclass, BookkeepingLivesInTheWindowsPropertiesAndDetachingKeepsTheOrder) {
  const std::string n = std::to_string(h);
  auto a = New<Recorder>("A", &journal), b = New<Recorder>("B", &journal), c = New<Recorder>("C", &journal);
  const auto properties = [&] { return Properties(*window.widget, {{a.get(), "A"}, {b.get(), "B"}, {c.get(), "C"}}); };
  for (auto* r : {a.get(), b.get(), c.get()}) sub->AttachMessage(Ref<Object>(r), h, kUser);
  sub->AttachMessage(a, h, 15);
  const quintptr procedure = window.widget->property(n.c_str()).value<quintptr>();
  ASSERT_NE(procedure, 0u);
  const std::string fifteen = " " + n + "#15#1=A " + n + "#15C=1 " + n + "=" + std::to_string(procedure) + " C" + n;
  EXPECT_EQ(properties(), n + "#1024#1=A " + n + "#1024#2=B " + n + "#1024#3=C " + n + "#1024C=3" + fifteen + "=4");
  SendMessage(h, kUser, 0, 0);
  sub->DetachMessage(b, h, kUser);
  journal += " |";
  SendMessage(h, kUser, 0, 0);
  EXPECT_EQ(properties(), n + "#1024#1=A " + n + "#1024#2=C " + n + "#1024C=2" + fifteen + "=3");
  sub->DetachMessage(c, h, kUser);
  sub->AttachMessage(b, h, kUser);
  b->action = [&](int32_t, int32_t) { sub->DetachMessage(a, h, kUser); };
  journal += " |";
  SendMessage(h, kUser, 0, 0);
  b->action = [&](int32_t, int32_t) { sub->DetachMessage(b, h, kUser); };
  journal += " |";
  SendMessage(h, kUser, 0, 0);
  // When A goes inside B's WindowProc, B moves to position 1 and is read again there.
  EXPECT_EQ(journal, "C B A | C A | B B | B");
  sub->DetachMessage(a, h, 15);
  EXPECT_EQ(properties(), "") << "writing 0 removes each property";
}

// B attached last runs first. Consume: the widget never handles it, the earliest result
// stands; preprocess: the widget before the earliest client, whose result stands;
// postprocess: the widget after the clients, its result returned. The later client's
// response is never read; one changed inside WindowProc counts after the loop.
TEST_F(Subclass, ClientsRunLatestFirstAndOnlyTheEarliestDecidesOnThePreviousProcedure) {
  const struct {
    EMsgResponse first, second;
    bool first_switches_to_postprocessing;  // inside its WindowProc
    std::string journal;  // "+" visible, "-" hidden when the client ran
    int32_t result;
    bool visible_after;
  } rows[] = {
      {emrConsume, emrConsume, false, "B+ A+", 1, true},       {emrPreprocess, emrConsume, false, "B+ A-", 1, false},
      {emrPostProcess, emrConsume, false, "B+ A+", 0, false},  {emrConsume, emrPreprocess, false, "B+ A+", 1, true},
      {emrConsume, emrPostProcess, false, "B+ A+", 1, true},   {emrConsume, emrConsume, true, "B+ A+", 0, false},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE("responses " + std::to_string(row.first) + ", " + std::to_string(row.second) +
                 (row.first_switches_to_postprocessing ? ", switched" : ""));
    TestWindow shown;  // closing destroys the native window: one per row
    shown.widget->show();
    journal.clear();
    auto a = New<Recorder>("A", &journal, 1, row.first), b = New<Recorder>("B", &journal, 2, row.second);
    b->action = [&](int32_t, int32_t) { journal += shown.widget->isVisible() ? "+" : "-"; };
    a->action = [&](int32_t h, int32_t m) {
      b->action(h, m);
      if (row.first_switches_to_postprocessing) a->LetMsgResponse(emrPostProcess);
    };
    sub->AttachMessage(a, shown.handle(), wm::kClose);
    sub->AttachMessage(b, shown.handle(), wm::kClose);
    EXPECT_EQ(SendMessage(shown.handle(), wm::kClose, 0, 0), row.result);
    EXPECT_EQ(journal, row.journal);
    EXPECT_EQ(shown.widget->isVisible(), row.visible_after);
    sub->DetachMessage(a, shown.handle(), wm::kClose);
    sub->DetachMessage(b, shown.handle(), wm::kClose);
  }
}

// A window made by another X client, through a connection of its own, is external.
TEST_F(Subclass, FailuresLeaveTheWindowAsItWas) {
  xcb_connection_t* other = xcb_connect(nullptr, nullptr);
  xcb_screen_t* screen = xcb_setup_roots_iterator(xcb_get_setup(other)).data;
  const xcb_window_t id = xcb_generate_id(other);
  xcb_create_window(other, XCB_COPY_FROM_PARENT, id, screen->root, 0, 0, 50, 50, 0,
                    XCB_WINDOW_CLASS_INPUT_OUTPUT, screen->root_visual, 0, nullptr);
  xcb_map_window(other, id);
  free(xcb_get_input_focus_reply(other, xcb_get_input_focus(other), nullptr));
  const auto foreign = static_cast<int32_t>(id);
  auto a = New<Recorder>("A", &journal);
  sub->AttachMessage(a, h, kUser);
  const std::string before = Properties(*window.widget);
  const std::string none = "nothing raised", external = "-2147208420\ntsruntime.WindowProc\nCan't modify external window\n\n0";
  const struct {
    const char* what;
    std::function<void()> call;
    std::string raised;
  } rows[] = {
      {"the same client twice on one message", [&] { sub->AttachMessage(a, h, kUser); },
       "-2147208422\ntsruntime.WindowProc\nMessage already handled by another class\n\n0"},
      {"a handle that is no window", [&] { sub->AttachMessage(a, 987654, kUser); }, kInvalid},
      {"handle 0", [&] { sub->AttachMessage(a, 0, kUser); }, kInvalid},
      {"another X client's window", [&] { sub->AttachMessage(a, foreign, kUser); }, external},
      {"detaching a client that is not attached", [&] { sub->DetachMessage(New<Recorder>("X", &journal), h, kUser); }, none},
      {"detaching from a message without clients", [&] { sub->DetachMessage(a, h, kUser + 1); }, none},
      {"detaching from a handle that is no window", [&] { sub->DetachMessage(a, 987654, kUser); }, none},
      {"detaching from another X client's window", [&] { sub->DetachMessage(a, foreign, kUser); }, none},
  };
  for (const auto& row : rows) {
    EXPECT_EQ(RaisedFields(row.call), row.raised) << row.what;
    EXPECT_EQ(Properties(*window.widget), before) << row.what;
  }
  xcb_disconnect(other);
  sub->DetachMessage(a, h, kUser);
}

// Nested messages dispatch recursively; posted ones arrive when the thread pumps; the
// current message is per thread, set only by routing, and kept after the dispatch.
TEST_F(Subclass, MessagesDispatchRecursivelyOrWhenPostedAndSetTheCurrentMessage) {
  window.widget->show();
  const auto call_old = [&] {
    const int32_t result = sub->CallOldWindowProc(h, wm::kClose, 0, 0);
    return std::to_string(result) + (window.widget->isVisible() ? " shown" : " closed");
  };
  EXPECT_EQ(call_old(), "0 shown") << "a window never hooked has no previous procedure";
  auto outer = New<Recorder>("outer", &journal, 1), inner = New<Recorder>("inner", &journal, 2);
  inner->with_message = inner->with_params = true;
  outer->action = [&](int32_t hwnd, int32_t) {
    const int32_t r = SendMessage(hwnd, kUser + 2, 3, 4);
    journal += " got " + std::to_string(r) + " current " + std::to_string(sub->CurrentMessage());
  };
  sub->AttachMessage(outer, h, kUser + 1);
  sub->AttachMessage(inner, h, kUser + 2);
  EXPECT_EQ(SendMessage(h, kUser + 1, 0, 0), 1);
  EXPECT_EQ(journal, "outer inner:1026,3,4 got 2 current 1026");
  journal.clear();
  EXPECT_TRUE(PostMessage(h, kUser + 2, 7, -9));
  SendMessage(h, kUser + 8, 0, 0);  // no client: not routed
  EXPECT_EQ(journal, "") << "not yet";
  EXPECT_TRUE(testing::PumpUntil([&] { return !journal.empty(); }));
  EXPECT_EQ(journal, "inner:1026,7,-9");
  EXPECT_EQ(sub->CurrentMessage(), kUser + 2) << "kept after the dispatch";
  EXPECT_EQ(std::async(std::launch::async, [] { return New<GSubclass>()->CurrentMessage(); }).get(), 0) << "per thread";
  EXPECT_FALSE(PostMessage(987654, kUser, 0, 0));
  EXPECT_EQ(call_old(), "0 closed") << "the widget's own handling closed it";
  sub->DetachMessage(outer, h, kUser + 1);
  sub->DetachMessage(inner, h, kUser + 2);
}

// Looks at a widget's properties at the last event of its deletion.
struct DeletionWatcher : QObject {
  std::vector<std::string> names;
  std::string seen;
  bool eventFilter(QObject* target, QEvent* event) override {
    if (event->type() != QEvent::Destroy) return false;
    for (const std::string& p : names) seen += p + (target->property(p.c_str()).isValid() ? "+ " : "- ");
    return false;
  }
};

// Without a client of the destroy notice, a deleted widget unhooks before the notice goes
// on: the procedure and the count go, the per-message entries stay.
TEST_F(Subclass, ADeletedWidgetUnhooksBeforeTheDestroyNotice) {
  auto a = New<Recorder>("A", &journal);
  const std::string n = std::to_string(h);
  DeletionWatcher watcher;
  watcher.names = {n, "C" + n, n + "#1024C", n + "#1024#1"};
  window.widget->installEventFilter(&watcher);  // before the chain's, so it runs after it
  sub->AttachMessage(a, h, kUser);
  delete window.widget.data();
  EXPECT_EQ(watcher.seen, n + "- C" + n + "- " + n + "#1024C+ " + n + "#1024#1+ ");
  EXPECT_EQ(journal, "");
}

// Closing a top-level destroys its native window, as on the platform: the clients of the
// destroy notice get it while the widget exists, the widget learns that its handle is
// gone, and the window shown again is a new one that nothing has hooked.
TEST_F(Subclass, AClosedTopLevelIsDestroyedAndShownAgainUnhooked) {
  for (const bool client_on_destroy : {true, false}) {
    SCOPED_TRACE(client_on_destroy ? "a client of the destroy notice" : "no client of the destroy notice");
    TestWindow top;
    top.widget->show();
    const int32_t first = top.handle();
    journal.clear();
    auto a = New<Recorder>("A", &journal), b = New<Recorder>("B", &journal, 0, emrPostProcess);
    a->with_message = b->with_message = true;
    a->action = [&](int32_t hwnd, int32_t) { journal += QWidget::find(static_cast<WId>(hwnd)) ? " found" : " gone"; };
    if (client_on_destroy) sub->AttachMessage(a, first, wm::kDestroy);
    sub->AttachMessage(b, first, wm::kClose);
    sub->AttachMessage(b, first, kUser);
    top.widget->close();
    EXPECT_EQ(journal, client_on_destroy ? "B:16 A:2 found" : "B:16");
    EXPECT_EQ(top.widget->internalWinId(), 0u) << "no native window";
    EXPECT_FALSE(DestroyWindow(first)) << "no window any more";
    top.widget->show();
    const int32_t again = static_cast<int32_t>(top.widget->winId());
    EXPECT_NE(again, first);
    journal.clear();
    SendMessage(again, kUser, 0, 0);
    EXPECT_EQ(journal, "") << "the new window is not hooked";
    sub->AttachMessage(b, again, kUser);
    SendMessage(again, kUser, 0, 0);
    EXPECT_EQ(journal, "B:1024") << "and can be";
    EXPECT_TRUE(DestroyWindow(again));
    EXPECT_EQ(QWidget::find(static_cast<WId>(again)), nullptr);
  }
}

// Its handle, its properties as scripts read them, and the widget going with the object.
TEST(PlainWindow, GivesScriptsAHandleAndTheSubclassingProperties) {
  const auto widgets_before = QApplication::topLevelWidgets().size();
  Ref<Object> window = CreateObject(u"TSRuntimeLib.PlainWindow");
  std::vector<Argument> args;  // none for the handle
  const int32_t h = ToLong(Invoke(*window, u"Handle", InvokeKind::kCall, args));
  std::string journal;
  auto client = New<Recorder>("A", &journal, 4);
  New<GSubclass>()->AttachMessage(client, h, 0x401);
  const auto property = [&](const std::string& suffix) {
    args = {{{}, Variant(FromAscii(std::to_string(h) + suffix))}};
    const Variant v = Invoke(*window, u"WindowProperty", InvokeKind::kCall, args);
    return ToUtf8(TypeName(v.type())) + " " + ToUtf8(ToString(v));
  };
  EXPECT_EQ(property("#1025C") + " | " + property("#1025#1") + " | " + property("#1026C"),
            "Long 1 | Double " + std::to_string(reinterpret_cast<quintptr>(client.get())) + " | Empty ")
      << "a client count as Long, a client's address as Double, an absent property as Empty";
  New<GSubclass>()->DetachMessage(client, h, 0x401);
  window = nullptr;
  EXPECT_EQ(QApplication::topLevelWidgets().size(), widgets_before) << "the widget went with the object";
}

}  // namespace
}  // namespace tsruntime
