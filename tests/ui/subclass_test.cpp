// GSubclass: attaching and detaching clients, the bookkeeping on the window, the order of
// clients, the previous procedure and who decides on it, re-entrant dispatch, errors.
#include <gtest/gtest.h>

#include <QEvent>
#include <QVariant>
#include <thread>

#include "subclass_support.h"
#include "support/outcome.h"
#include "tsruntime/WindowMessages.h"
#include "ui_support.h"

namespace tsruntime {
namespace {

using testing::Recorder;
using testing::TestWindow;

constexpr int32_t kUser = wm::kUser;

std::string SortedWords(std::vector<std::string> words) {
  std::sort(words.begin(), words.end());
  std::string joined;
  for (const std::string& s : words) joined += (joined.empty() ? "" : " ") + s;
  return joined;
}

// The window's subclassing properties, sorted, as "name=value" with addresses named.
std::string Properties(const QWidget& w, const std::vector<std::pair<const Object*, const char*>>& names) {
  std::vector<std::string> out;
  for (const QByteArray& name : w.dynamicPropertyNames()) {
    const QVariant v = w.property(name.constData());
    std::string value = std::to_string(v.toULongLong());
    for (const auto& [object, label] : names) {
      if (v.toULongLong() == reinterpret_cast<quintptr>(object)) value = label;
    }
    out.push_back(name.toStdString() + "=" + value);
  }
  return SortedWords(out);
}

TEST(Subclass, BookkeepingLivesInTheWindowsPropertiesUnderTheirNames) {
  TestWindow window;
  const std::string h = std::to_string(window.handle());
  std::string journal;
  auto sub = New<GSubclass>();
  auto a = New<Recorder>("A", &journal), b = New<Recorder>("B", &journal);
  sub->AttachMessage(a, window.handle(), 16);
  sub->AttachMessage(b, window.handle(), 16);
  sub->AttachMessage(a, window.handle(), 15);
  const quintptr procedure = window.widget->property(h.c_str()).value<quintptr>();
  EXPECT_NE(procedure, 0u);
  const std::string p = std::to_string(procedure);
  EXPECT_EQ(Properties(*window.widget, {{a.get(), "A"}, {b.get(), "B"}}),
            SortedWords({h + "=" + p, h + "#15#1=A", h + "#15C=1", h + "#16#1=A", h + "#16#2=B",
                         h + "#16C=2", "C" + h + "=3"}));
  sub->DetachMessage(a, window.handle(), 16);
  EXPECT_EQ(Properties(*window.widget, {{a.get(), "A"}, {b.get(), "B"}}),
            SortedWords({h + "=" + p, h + "#15#1=A", h + "#15C=1", h + "#16#1=B", h + "#16C=1",
                         "C" + h + "=2"}));
  sub->DetachMessage(b, window.handle(), 16);
  sub->DetachMessage(a, window.handle(), 15);
  EXPECT_EQ(Properties(*window.widget, {}), "") << "writing 0 removes each property";
}

TEST(Subclass, ClientsRunLatestFirstAndOnlyTheEarliestDecidesOnThePreviousProcedure) {
  struct Row {
    const char* what;
    EMsgResponse first, second;
    bool first_switches_to_postprocessing;  // inside its WindowProc
    std::string journal;  // "+" visible, "-" hidden when the client ran
    int32_t result;
    bool visible_after;
  };
  const std::vector<Row> rows = {
      {"consume: the widget's handling never runs, the earliest result stands", emrConsume,
       emrConsume, false, "B+ A+", 1, true},
      {"preprocess: it runs before the earliest client, clients' result stands", emrPreprocess,
       emrConsume, false, "B+ A-", 1, false},
      {"postprocess: it runs after the clients and its result is returned", emrPostProcess,
       emrConsume, false, "B+ A+", 0, false},
      {"the later client asking for preprocessing is never read", emrConsume, emrPreprocess,
       false, "B+ A+", 1, true},
      {"the later client asking for postprocessing is never read", emrConsume, emrPostProcess,
       false, "B+ A+", 1, true},
      {"a response changed inside WindowProc counts after the loop", emrConsume, emrConsume,
       true, "B+ A+", 0, false},
  };
  for (const Row& row : rows) {
    TestWindow window;
    window.widget->show();
    std::string journal;
    auto sub = New<GSubclass>();
    auto a = New<Recorder>("A", &journal, 1), b = New<Recorder>("B", &journal, 2);
    for (Recorder* r : {a.get(), b.get()}) {
      r->action = [&](int32_t, int32_t) { journal += window.widget->isVisible() ? "+" : "-"; };
    }
    if (row.first_switches_to_postprocessing) {
      a->action = [&](int32_t, int32_t) {
        journal += window.widget->isVisible() ? "+" : "-";
        a->LetMsgResponse(emrPostProcess);
      };
    }
    a->LetMsgResponse(row.first);
    b->LetMsgResponse(row.second);
    sub->AttachMessage(a, window.handle(), wm::kClose);
    sub->AttachMessage(b, window.handle(), wm::kClose);
    EXPECT_EQ(SendMessage(window.handle(), wm::kClose, 0, 0), row.result) << row.what;
    EXPECT_EQ(journal, row.journal) << row.what;
    EXPECT_EQ(window.widget->isVisible(), row.visible_after) << row.what;
    sub->DetachMessage(a, window.handle(), wm::kClose);
    sub->DetachMessage(b, window.handle(), wm::kClose);
  }
}

TEST(Subclass, DetachingTheMiddleOfThreeKeepsTheOthersInOrder) {
  TestWindow window;
  std::string journal;
  auto sub = New<GSubclass>();
  auto a = New<Recorder>("A", &journal), b = New<Recorder>("B", &journal),
       c = New<Recorder>("C", &journal);
  for (auto* r : {a.get(), b.get(), c.get()}) sub->AttachMessage(Ref<Object>(r), window.handle(), kUser);
  SendMessage(window.handle(), kUser, 0, 0);
  EXPECT_EQ(journal, "C B A");
  sub->DetachMessage(b, window.handle(), kUser);
  journal.clear();
  SendMessage(window.handle(), kUser, 0, 0);
  EXPECT_EQ(journal, "C A");
  const std::string h = std::to_string(window.handle());
  EXPECT_EQ(window.widget->property((h + "#1024#1").c_str()).value<quintptr>(),
            reinterpret_cast<quintptr>(a.get()));
  EXPECT_EQ(window.widget->property((h + "#1024#2").c_str()).value<quintptr>(),
            reinterpret_cast<quintptr>(c.get()));
  sub->DetachMessage(a, window.handle(), kUser);
  sub->DetachMessage(c, window.handle(), kUser);
}

TEST(Subclass, AttachAndDetachFailuresLeaveTheWindowAsItWas) {
  TestWindow window;
  const int32_t h = window.handle();
  std::string journal;
  auto sub = New<GSubclass>();
  auto a = New<Recorder>("A", &journal);
  sub->AttachMessage(a, h, kUser);
  const std::string before = Properties(*window.widget, {});
  struct Row {
    const char* what;
    std::function<void()> call;
    std::string raised;
  };
  const std::vector<Row> rows = {
      {"the same client twice on one message",
       [&] { sub->AttachMessage(a, h, kUser); },
       "-2147208422\ntsruntime.WindowProc\nMessage already handled by another class\n\n0"},
      {"a handle that is no window", [&] { sub->AttachMessage(a, 987654, kUser); },
       "-2147208421\ntsruntime.WindowProc\nInvalid window\n\n0"},
      {"handle 0", [&] { sub->AttachMessage(a, 0, kUser); },
       "-2147208421\ntsruntime.WindowProc\nInvalid window\n\n0"},
      {"detaching a client that is not attached", [&] { sub->DetachMessage(New<Recorder>("X", &journal), h, kUser); },
       "nothing raised"},
      {"detaching from a message without clients", [&] { sub->DetachMessage(a, h, kUser + 1); },
       "nothing raised"},
      {"detaching from a handle that is no window", [&] { sub->DetachMessage(a, 987654, kUser); },
       "nothing raised"},
  };
  for (const Row& row : rows) {
    EXPECT_EQ(testing::RaisedFields(row.call), row.raised) << row.what;
    EXPECT_EQ(Properties(*window.widget, {}), before) << row.what;
  }
  sub->AttachMessage(a, h, kUser + 1);
  EXPECT_EQ(window.widget->property(("C" + std::to_string(h)).c_str()).toInt(), 2)
      << "one client on two messages counts two attachments";
  sub->DetachMessage(a, h, kUser);
  sub->DetachMessage(a, h, kUser + 1);
}

TEST(Subclass, CallOldWindowProcAndCurrentMessage) {
  TestWindow window;
  window.widget->show();
  auto sub = New<GSubclass>();
  EXPECT_EQ(sub->CallOldWindowProc(window.handle(), wm::kClose, 0, 0), 0);
  EXPECT_TRUE(window.widget->isVisible()) << "a window never hooked has no previous procedure";

  std::string journal;
  auto a = New<Recorder>("A", &journal);
  sub->AttachMessage(a, window.handle(), kUser + 7);
  SendMessage(window.handle(), kUser + 7, 0, 0);
  SendMessage(window.handle(), kUser + 8, 0, 0);  // no client: not routed
  EXPECT_EQ(sub->CurrentMessage(), kUser + 7) << "kept after dispatch, set only by routing";
  int32_t other_thread = -1;
  std::thread([&] { other_thread = New<GSubclass>()->CurrentMessage(); }).join();
  EXPECT_EQ(other_thread, 0) << "per thread";

  EXPECT_EQ(sub->CallOldWindowProc(window.handle(), wm::kClose, 0, 0), 0);
  EXPECT_FALSE(window.widget->isVisible()) << "the widget's own handling closed it";
  sub->DetachMessage(a, window.handle(), kUser + 7);
}

TEST(Subclass, NestedMessagesDispatchRecursivelyAndSetTheCurrentMessage) {
  TestWindow window;
  const int32_t h = window.handle();
  std::string journal;
  auto sub = New<GSubclass>();
  auto outer = New<Recorder>("outer", &journal, 1), inner = New<Recorder>("inner", &journal, 2);
  outer->action = [&](int32_t hwnd, int32_t) {
    const int32_t r = SendMessage(hwnd, kUser + 2, 0, 0);
    journal += " got " + std::to_string(r) + " current " + std::to_string(sub->CurrentMessage());
  };
  sub->AttachMessage(outer, h, kUser + 1);
  sub->AttachMessage(inner, h, kUser + 2);
  EXPECT_EQ(SendMessage(h, kUser + 1, 0, 0), 1);
  EXPECT_EQ(journal, "outer inner got 2 current 1026");
  sub->DetachMessage(outer, h, kUser + 1);
  sub->DetachMessage(inner, h, kUser + 2);
}

TEST(Subclass, DetachInsideAHandlerIsSeenByTheRestOfTheDispatch) {
  TestWindow window;
  const int32_t h = window.handle();
  std::string journal;
  auto sub = New<GSubclass>();
  auto a = New<Recorder>("A", &journal), b = New<Recorder>("B", &journal);
  b->action = [&](int32_t, int32_t) { sub->DetachMessage(a, h, kUser); };
  sub->AttachMessage(a, h, kUser);
  sub->AttachMessage(b, h, kUser);
  SendMessage(h, kUser, 0, 0);
  EXPECT_EQ(journal, "B B") << "B moved to position 1 and is read again there";
  journal.clear();
  b->action = [&](int32_t, int32_t) { sub->DetachMessage(b, h, kUser); };
  SendMessage(h, kUser, 0, 0);
  EXPECT_EQ(journal, "B");
  EXPECT_FALSE(window.widget->property(std::to_string(h).c_str()).isValid())
      << "the last detach unhooked the window";
}

TEST(Subclass, DestroyNoticeReachesClientsWhileTheWidgetExists) {
  auto* widget = new QWidget;
  const int32_t h = static_cast<int32_t>(widget->winId());
  std::string journal;
  auto sub = New<GSubclass>();
  auto a = New<Recorder>("A", &journal);
  a->with_message = true;
  a->action = [&](int32_t hwnd, int32_t) {
    journal += QWidget::find(static_cast<WId>(hwnd)) ? " found" : " gone";
  };
  sub->AttachMessage(a, h, wm::kDestroy);
  EXPECT_TRUE(DestroyWindow(h));
  EXPECT_EQ(journal, "A:2 found");
  EXPECT_EQ(QWidget::find(static_cast<WId>(h)), nullptr);
  EXPECT_FALSE(DestroyWindow(h)) << "no window any more";
}

// Looks at a widget's properties at the last event of its deletion.
class DeletionWatcher : public QObject {
 public:
  explicit DeletionWatcher(std::vector<std::string> names) : names_(std::move(names)) {}
  std::string seen;

 protected:
  bool eventFilter(QObject* target, QEvent* event) override {
    if (event->type() != QEvent::Destroy) return false;
    for (const std::string& p : names_) seen += p + (target->property(p.c_str()).isValid() ? "+ " : "- ");
    return false;
  }

 private:
  std::vector<std::string> names_;
};

TEST(Subclass, DestroyWithoutAClientOnItUnhooksBeforeTheNoticeGoesOn) {
  auto* widget = new QWidget;
  const int32_t h = static_cast<int32_t>(widget->winId());
  const std::string name = std::to_string(h);
  DeletionWatcher watcher({name, "C" + name, name + "#1024C", name + "#1024#1"});
  widget->installEventFilter(&watcher);  // before the chain's, so it runs after it
  std::string journal;
  auto sub = New<GSubclass>();
  auto a = New<Recorder>("A", &journal);
  sub->AttachMessage(a, h, kUser);
  delete widget;
  EXPECT_EQ(watcher.seen, name + "- C" + name + "- " + name + "#1024C+ " + name + "#1024#1+ ")
      << "the procedure and the count go, the per-message entries stay";
  EXPECT_EQ(journal, "");
}

// Closing a top-level destroys its native window, as on the platform: the clients of the
// destroy notice get it, the widget learns that its handle is gone, and the window shown
// again is a new one that nothing has hooked.
TEST(Subclass, AClosedTopLevelIsDestroyedAndShownAgainUnhooked) {
  const struct {
    const char* what;
    bool client_on_destroy;
    std::string journal;
  } rows[] = {
      {"a client of the destroy notice gets it after the close", true, "B:16 A:2"},
      {"without one the window unhooks quietly", false, "B:16"},
  };
  for (const auto& row : rows) {
    TestWindow window;
    window.widget->show();
    const int32_t h = window.handle();
    std::string journal;
    auto sub = New<GSubclass>();
    auto a = New<Recorder>("A", &journal), b = New<Recorder>("B", &journal);
    a->with_message = b->with_message = true;
    b->LetMsgResponse(emrPostProcess);
    if (row.client_on_destroy) sub->AttachMessage(a, h, wm::kDestroy);
    sub->AttachMessage(b, h, wm::kClose);
    sub->AttachMessage(b, h, kUser);
    window.widget->close();
    EXPECT_EQ(journal, row.journal) << row.what;
    EXPECT_EQ(window.widget->internalWinId(), 0u) << row.what << ": no native window";
    EXPECT_EQ(QWidget::find(static_cast<WId>(h)), nullptr) << row.what;
    window.widget->show();
    const int32_t again = static_cast<int32_t>(window.widget->winId());
    EXPECT_NE(again, h) << row.what;
    journal.clear();
    SendMessage(again, kUser, 0, 0);
    EXPECT_EQ(journal, "") << row.what << ": the new window is not hooked";
    sub->AttachMessage(b, again, kUser);
    SendMessage(again, kUser, 0, 0);
    EXPECT_EQ(journal, "B:1024") << row.what << ": and can be";
    sub->DetachMessage(b, again, kUser);
  }
}

TEST(Subclass, PostedMessagesArriveWhenTheThreadPumps) {
  TestWindow window;
  std::string journal;
  auto sub = New<GSubclass>();
  auto a = New<Recorder>("A", &journal);
  a->with_message = a->with_params = true;
  sub->AttachMessage(a, window.handle(), kUser + 5);
  EXPECT_TRUE(PostMessage(window.handle(), kUser + 5, 7, -9));
  EXPECT_EQ(journal, "") << "not yet";
  EXPECT_TRUE(testing::PumpUntil([&] { return !journal.empty(); }));
  EXPECT_EQ(journal, "A:1029,7,-9");
  EXPECT_FALSE(PostMessage(987654, kUser, 0, 0));
  sub->DetachMessage(a, window.handle(), kUser + 5);
}

}  // namespace
}  // namespace tsruntime
