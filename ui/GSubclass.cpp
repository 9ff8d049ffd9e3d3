#include "tsruntime/GSubclass.h"

#include "module_error.h"
#include "tsruntime/WindowMessages.h"
#include "subclass_chain.h"
#include "window_lookup.h"
#include "window_properties.h"

namespace tsruntime {

using namespace subclass_detail;

namespace {

constexpr int32_t kCantWriteProperty = 5;
constexpr int32_t kCantSubclass = 13081;
constexpr int32_t kAlreadyAttached = 13082;
constexpr int32_t kInvalidWindow = 13083;
constexpr int32_t kExternalWindow = 13084;

quintptr AddressOf(const Ref<Object>& client) { return reinterpret_cast<quintptr>(client.get()); }

}  // namespace

void GSubclass::AttachMessage(const Ref<Object>& iwp, int32_t hwnd, int32_t iMsg) {
  QWidget* widget = WidgetOf(hwnd);
  if (!widget) ui_detail::RaiseModuleError(IsForeignWindow(hwnd) ? kExternalWindow : kInvalidWindow);
  WindowProperties props(*widget, hwnd);
  const quintptr p = AddressOf(iwp);
  const int32_t c = props.Clients(iMsg);
  for (int32_t i = 1; i <= c; ++i) {
    if (props.Client(iMsg, i) == p) ui_detail::RaiseModuleError(kAlreadyAttached);
  }
  if (!props.SetClients(iMsg, c + 1)) ui_detail::RaiseModuleError(kCantWriteProperty);
  auto undo_client = [&] {
    props.SetClient(iMsg, c + 1, 0);
    props.SetClients(iMsg, c);
  };
  if (!props.SetClient(iMsg, c + 1, p)) {
    props.SetClients(iMsg, c);
    ui_detail::RaiseModuleError(kCantWriteProperty);
  }
  if (props.Attachments() == 0) {
    const quintptr previous = Hook(*widget);
    if (previous == 0) {
      undo_client();
      ui_detail::RaiseModuleError(kCantSubclass);
    }
    if (!props.SetPreviousProcedure(previous)) {
      Unhook(*widget);
      undo_client();
      ui_detail::RaiseModuleError(kCantWriteProperty);
    }
  }
  if (!props.SetAttachments(props.Attachments() + 1)) {
    undo_client();
    if (props.Attachments() == 0 && props.PreviousProcedure() != 0) {
      Unhook(*widget);
      props.SetPreviousProcedure(0);
    }
    ui_detail::RaiseModuleError(kCantWriteProperty);
  }
  HoldIfLateBound(hwnd, iwp.get());
  if (iMsg == wm::kMouseMove) TrackMouseForClients(*widget, true);
}

void GSubclass::DetachMessage(const Ref<Object>& iwp, int32_t hwnd, int32_t iMsg) {
  QWidget* widget = WidgetOf(hwnd);
  if (!widget) return;  // no window, or another process's
  WindowProperties props(*widget, hwnd);
  const quintptr p = AddressOf(iwp);
  const int32_t c = props.Clients(iMsg);
  int32_t found = 0;
  for (int32_t i = 1; i <= c && found == 0; ++i) {
    if (props.Client(iMsg, i) == p) found = i;
  }
  if (found == 0) return;
  for (int32_t j = found; j < c; ++j) props.SetClient(iMsg, j, props.Client(iMsg, j + 1));
  props.SetClient(iMsg, c, 0);
  props.SetClients(iMsg, c - 1);
  if (props.Attachments() == 1) {
    // Reinstalled whatever else has hooked the window since.
    if (props.PreviousProcedure() != 0) Unhook(*widget);
    props.SetPreviousProcedure(0);
  }
  props.SetAttachments(props.Attachments() - 1);
  if (iMsg == wm::kMouseMove && c == 1) TrackMouseForClients(*widget, false);
  ReleaseIfHeld(hwnd, iwp.get());
}

int32_t GSubclass::CurrentMessage() const { return subclass_detail::CurrentMessage(); }

int32_t GSubclass::CallOldWindowProc(int32_t hwnd, int32_t iMsg, int32_t wParam, int32_t lParam) {
  QWidget* widget = WidgetOf(hwnd);
  if (!widget || WindowProperties(*widget, hwnd).PreviousProcedure() == 0) return 0;
  return DefaultProcedure(*widget, iMsg, wParam, lParam);
}

TSRUNTIME_DEFINE_CLASS(GSubclass) {
  static const ClassInfo info =
      ClassBuilder<GSubclass>("GSubclass")
          .Help(u"Intercepts the messages of the process's own windows, routing each (window, "
                u"message) pair to ISubclass clients.")
          .Method("AttachMessage", &GSubclass::AttachMessage, {"iwp", "hwnd", "iMsg"})
          .Help(u"Routes message iMsg of window hwnd to the client iwp after those already "
                u"attached; raises 13083, 13084 or 13082 when it cannot.")
          .Method("DetachMessage", &GSubclass::DetachMessage, {"iwp", "hwnd", "iMsg"})
          .Help(u"Removes the client iwp from message iMsg of window hwnd; the last one unhooks "
                u"the window. Never raises.")
          .Get("CurrentMessage", &GSubclass::CurrentMessage)
          .Help(u"The message most recently routed to a client on this thread; 0 before the first.")
          .Method("CallOldWindowProc", &GSubclass::CallOldWindowProc,
                  {"hwnd", "iMsg", "wParam", "lParam"})
          .Help(u"Calls the previous procedure of window hwnd with iMsg, wParam and lParam and "
                u"returns its result; 0 when not hooked.")
          .Build();
  return info;
}

}  // namespace tsruntime
