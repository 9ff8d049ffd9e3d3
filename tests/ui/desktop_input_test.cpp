// Keys and the mouse as a person at the test's desktop sends them (XTest), under the us and
// ru layouts: the key messages name the key, not the character, and carry the character
// in code page 1251; mouse moves reach a client listening to them without a button held.
#include <gtest/gtest.h>


#include "desktop.h"
#include "subclass_support.h"
#include "tsruntime/WindowMessages.h"
#include "ui_support.h"

namespace tsruntime {
namespace {

using testing::Recorder;
using testing::TestWindow;

// The recorder's journal without its name marks: "msg,wParam,lParam" each.
std::string Messages(const std::string& journal) {
  std::string out;
  for (char c : journal) {
    if (c != ':') out += c;
  }
  return out;
}

TEST(DesktopInput, KeyMessagesNameThePhysicalKeyWhateverTheLayout) {
  testing::Desktop& desktop = *testing::TheDesktop();
  TestWindow window;
  ASSERT_TRUE(testing::ShowActive(*window.widget));
  std::string journal;
  auto sub = New<GSubclass>();
  auto client = New<Recorder>("", &journal);
  client->with_message = client->with_params = true;
  for (int32_t msg : {wm::kKeyDown, wm::kKeyUp, wm::kChar}) sub->AttachMessage(client, window.handle(), msg);
  // Ctrl (input code 29) and C (46): the codes, the control character, the scan codes.
  const std::string ctrl_c =
      "256,17,1900545 256,67,3014657 258,3,3014657 257,67,-1070727167 257,17,-1071841279";
  const struct {
    const char* what;
    int group;  // 0 us, 1 ru
    std::vector<unsigned> keys;
    std::string messages;
  } rows[] = {
      {"ф is typed on the key of A: A's code, 0xF4", 1, {30}, "256,65,1966081 258,244,1966081 257,65,-1071775743"},
      {"a under the US layout", 0, {30}, "256,65,1966081 258,97,1966081 257,65,-1071775743"},
      {"Ctrl+С under the Russian layout is Ctrl+C", 1, {29, 46}, ctrl_c},
      {"Ctrl+C under the US layout", 0, {29, 46}, ctrl_c},
      {"ё on the key left of 1: its code, 0xB8", 1, {41}, "256,192,2686977 258,184,2686977 257,192,-1071054847"},
      {"Shift+3 under the Russian layout types № (0xB9) on the key of 3", 1, {42, 4},
       "256,16,2752513 256,51,262145 258,185,262145 257,51,-1073479679 257,16,-1070989311"},
  };
  for (const auto& row : rows) {
    ASSERT_TRUE(desktop.LockGroup(row.group)) << row.what;
    journal.clear();
    desktop.Chord(row.keys);
    const size_t expected = std::count(row.messages.begin(), row.messages.end(), ' ') + 1;
    testing::PumpUntil([&] {
      return static_cast<size_t>(std::count(journal.begin(), journal.end(), ':')) >= expected;
    });
    testing::PumpFor(50);  // nothing more comes
    EXPECT_EQ(Messages(journal), row.messages) << row.what;
  }
  desktop.LockGroup(0);
  for (int32_t msg : {wm::kKeyDown, wm::kKeyUp, wm::kChar}) sub->DetachMessage(client, window.handle(), msg);
}

TEST(DesktopInput, MouseMovesReachAClientWithoutAButtonHeld) {
  testing::Desktop& desktop = *testing::TheDesktop();
  // Each row moves to another point: Qt drops a move to where the pointer last was.
  const struct {
    const char* what;
    bool tracking_of_its_own;
    int x, y;
    std::string message;
  } rows[] = {
      {"a widget that does not track the mouse", false, 30, 40, ":512,0,2621470"},
      {"a widget that tracks it itself keeps doing so", true, 31, 41, ":512,0,2687007"},
  };
  for (const auto& row : rows) {
    TestWindow window;
    window.widget->setMouseTracking(row.tracking_of_its_own);
    window.widget->resize(200, 150);
    ASSERT_TRUE(testing::ShowActive(*window.widget));
    std::string journal;
    auto sub = New<GSubclass>();
    auto client = New<Recorder>("", &journal);
    client->with_message = client->with_params = true;
    sub->AttachMessage(client, window.handle(), wm::kMouseMove);
    desktop.MovePointer(0, 0, 0);
    testing::PumpFor(50);
    desktop.MovePointer(window.widget->winId(), row.x, row.y);
    EXPECT_TRUE(testing::PumpUntil([&] { return journal.find(row.message) != std::string::npos; }))
        << row.what << ": no move without a button held in \"" << journal << "\"";
    sub->DetachMessage(client, window.handle(), wm::kMouseMove);
    EXPECT_EQ(window.widget->hasMouseTracking(), row.tracking_of_its_own) << row.what;
  }
}

}  // namespace
}  // namespace tsruntime
