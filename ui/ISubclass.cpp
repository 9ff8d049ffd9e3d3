#include "tsruntime/ISubclass.h"

namespace tsruntime {

int32_t ISubclass::WindowProc(int32_t, int32_t, int32_t, int32_t) { return 0; }

TSRUNTIME_DEFINE_CLASS(ISubclass) {
  static const ClassInfo info =
      ClassBuilder<ISubclass>("ISubclass")
          .Help(u"The client interface of window subclassing: WindowProc handles the messages "
                u"routed to it, MsgResponse says when the previous procedure runs.")
          .Get("MsgResponse", &ISubclass::MsgResponse)
          .Help(u"How the window's previous procedure runs for this client's messages "
                u"(EMsgResponse); emrConsume until set.")
          .Let("MsgResponse", &ISubclass::LetMsgResponse, {"RHS"})
          .Method("WindowProc", &ISubclass::WindowProc, {"hwnd", "iMsg", "wParam", "lParam"})
          .Help(u"Handles message iMsg of window hwnd with wParam and lParam; the result becomes "
                u"the window's result.")
          .NotCreatable()
          .Build();
  return info;
}

}  // namespace tsruntime
