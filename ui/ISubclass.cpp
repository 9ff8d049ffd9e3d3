#include "tsruntime/ISubclass.h"

namespace tsruntime {

int32_t ISubclass::WindowProc(int32_t, int32_t, int32_t, int32_t) { return 0; }

TSRUNTIME_DEFINE_CLASS(ISubclass) {
  static const ClassInfo info =
      ClassBuilder<ISubclass>("ISubclass")
          .Get("MsgResponse", &ISubclass::MsgResponse)
          .Let("MsgResponse", &ISubclass::LetMsgResponse, {"RHS"})
          .Method("WindowProc", &ISubclass::WindowProc, {"hwnd", "iMsg", "wParam", "lParam"})
          .NotCreatable()
          .Build();
  return info;
}

}  // namespace tsruntime
