// ISubclass: the client interface of window subclassing. A host derives from it,
// overrides `WindowProc`, sets `MsgResponse`, and attaches itself to (window, message)
// pairs with GSubclass::AttachMessage.
//
//   class Watcher : public tsruntime::ISubclass {
//     int32_t WindowProc(int32_t hwnd, int32_t iMsg, int32_t wParam, int32_t lParam) override {
//       return iMsg == 16 ? 1 : 0;   // the window's result for WM_CLOSE
//     }
//   };
//
// Late-bound hosts pass any object with these two members instead (a Python object with
// a `WindowProc` method and a `MsgResponse` attribute); see GSubclass.h.
//
// Part of libtsruntime-ui.so's interface (link tsruntime::ui); not creatable by ProgID.
#pragma once

#include <cstdint>

#include "tsruntime/automation/dispatch.h"

namespace tsruntime {

// How the window's previous procedure runs for the messages routed to a client. Only
// the earliest attached client of a message decides (see GSubclass.h).
enum EMsgResponse : int32_t {
  emrConsume = 0,      // the previous procedure is not called
  emrPostProcess = 1,  // called after the clients; its result is the window's result
  emrPreprocess = 2,   // called before the clients; their result stands
};

class ISubclass : public Object {
 public:
  TSRUNTIME_CLASS_INFO;

  // emrConsume until set.
  virtual EMsgResponse MsgResponse() const { return response_; }
  virtual void LetMsgResponse(EMsgResponse RHS) { response_ = RHS; }

  // Handles one message; the result becomes the window's result unless the previous
  // procedure's replaces it. This implementation returns 0.
  virtual int32_t WindowProc(int32_t hwnd, int32_t iMsg, int32_t wParam, int32_t lParam);

 private:
  EMsgResponse response_ = emrConsume;
};

}  // namespace tsruntime
