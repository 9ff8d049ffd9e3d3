// The subclassing bookkeeping, kept on the widget as dynamic properties under the names
// hosts know (see GSubclass.h): "H" the previous procedure, "CH" the attachment count,
// "H#M C" the client count of a message, "H#M#P" the client at a position.
#pragma once

#include <QPointer>
#include <QWidget>
#include <cstdint>

namespace tsruntime::subclass_detail {

class WindowProperties {
 public:
  // A widget deleted meanwhile (by a client, say) reads 0 everywhere and takes no writes.
  WindowProperties(QWidget& widget, int32_t hwnd) : widget_(&widget), hwnd_(hwnd) {}

  quintptr PreviousProcedure() const;
  int32_t Attachments() const;
  int32_t Clients(int32_t msg) const;
  quintptr Client(int32_t msg, int32_t position) const;

  // Each write stores the value (0 removes the property), leaves its success in this
  // thread's write flag, returns it, and makes a trace line.
  bool SetPreviousProcedure(quintptr procedure);
  bool SetAttachments(int32_t count);
  bool SetClients(int32_t msg, int32_t count);
  bool SetClient(int32_t msg, int32_t position, quintptr client);

 private:
  QPointer<QWidget> widget_;
  int32_t hwnd_;
};

}  // namespace tsruntime::subclass_detail
