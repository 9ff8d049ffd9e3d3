// On the X server: windows of other X clients are refused as external (the process's own
// are subclassed by their X window ids in every other test).
#include <gtest/gtest.h>

#include <xcb/xcb.h>

#include "subclass_support.h"
#include "support/outcome.h"

namespace tsruntime {
namespace {

// A window made by another X client: a connection of its own, as another process has.
class ForeignWindow {
 public:
  ForeignWindow() : connection_(xcb_connect(nullptr, nullptr)) {
    const xcb_setup_t* setup = xcb_get_setup(connection_);
    xcb_screen_t* screen = xcb_setup_roots_iterator(setup).data;
    id_ = xcb_generate_id(connection_);
    xcb_create_window(connection_, XCB_COPY_FROM_PARENT, id_, screen->root, 0, 0, 50, 50, 0,
                      XCB_WINDOW_CLASS_INPUT_OUTPUT, screen->root_visual, 0, nullptr);
    xcb_map_window(connection_, id_);
    free(xcb_get_input_focus_reply(connection_, xcb_get_input_focus(connection_), nullptr));
  }
  ~ForeignWindow() { xcb_disconnect(connection_); }
  int32_t id() const { return static_cast<int32_t>(id_); }

 private:
  xcb_connection_t* connection_;
  xcb_window_t id_ = 0;
};

TEST(XServer, WindowsOfOtherClientsAreExternal) {
  ForeignWindow foreign;
  auto sub = New<GSubclass>();
  std::string journal;
  auto client = New<testing::Recorder>("A", &journal);
  EXPECT_EQ(testing::RaisedFields([&] { sub->AttachMessage(client, foreign.id(), 16); }),
            "-2147208420\ntsruntime.WindowProc\nCan't modify external window\n\n0");
  EXPECT_EQ(testing::RaisedFields([&] { sub->AttachMessage(client, foreign.id() + 77, 16); }),
            "-2147208421\ntsruntime.WindowProc\nInvalid window\n\n0");
  EXPECT_EQ(testing::RaisedFields([&] { sub->DetachMessage(client, foreign.id(), 16); }),
            "nothing raised");
}

}  // namespace
}  // namespace tsruntime
