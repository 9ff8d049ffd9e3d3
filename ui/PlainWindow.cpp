#include "tsruntime/PlainWindow.h"

#include <QApplication>
#include <QPointer>
#include <QVariant>
#include <QWidget>

#include "application.h"
#include "subclass_chain.h"
#include "tsruntime/WindowMessages.h"

namespace tsruntime {

struct PlainWindow::Widget {
  QPointer<QWidget> widget;
};

PlainWindow::PlainWindow() : widget_(std::make_unique<Widget>()) {
  // Widgets need a QApplication (a host's QCoreApplication will not do) and its thread.
  if (!ui_detail::EnsureApplication() || !ui_detail::OnApplicationThread() ||
      !qobject_cast<QApplication*>(QCoreApplication::instance())) {
    RaiseRuntime(RuntimeError::kCannotCreateObject);
  }
  widget_->widget = new QWidget();
  widget_->widget->setWindowTitle(QStringLiteral("PlainWindow"));
  widget_->widget->resize(320, 200);
  widget_->widget->winId();  // the handle exists from the start
}

PlainWindow::~PlainWindow() { Destroy(); }

int32_t PlainWindow::Handle() const {
  return widget_->widget ? static_cast<int32_t>(widget_->widget->internalWinId()) : 0;
}

String PlainWindow::Caption() const {
  return widget_->widget ? widget_->widget->windowTitle().toStdU16String() : String();
}

void PlainWindow::LetCaption(const String& RHS) {
  if (widget_->widget) widget_->widget->setWindowTitle(QString::fromStdU16String(RHS));
}

bool PlainWindow::Visible() const { return widget_->widget && widget_->widget->isVisible(); }

void PlainWindow::LetVisible(bool RHS) {
  if (!widget_->widget) return;
  widget_->widget->setVisible(RHS);
  widget_->widget->winId();  // a window shown again after a close has a new handle
}

void PlainWindow::Move(int32_t Left, int32_t Top, int32_t Width, int32_t Height) {
  if (widget_->widget) widget_->widget->setGeometry(Left, Top, Width, Height);
}

void PlainWindow::Close() {
  if (widget_->widget) widget_->widget->close();
}

void PlainWindow::Destroy() {
  // Also a window without a native one (closed and not shown since) goes.
  if (widget_->widget) subclass_detail::DeleteWidget(*widget_->widget);
}

int32_t PlainWindow::SendMessage(int32_t iMsg, int32_t wParam, int32_t lParam) {
  return tsruntime::SendMessage(Handle(), iMsg, wParam, lParam);
}

bool PlainWindow::PostMessage(int32_t iMsg, int32_t wParam, int32_t lParam) {
  return tsruntime::PostMessage(Handle(), iMsg, wParam, lParam);
}

Variant PlainWindow::WindowProperty(const String& Name) const {
  if (!widget_->widget) return Variant();
  const QVariant value = widget_->widget->property(QString::fromStdU16String(Name).toLatin1());
  if (!value.isValid()) return Variant();
  if (value.typeId() == QMetaType::Int) return Variant(static_cast<int32_t>(value.toInt()));
  return Variant(static_cast<double>(value.toULongLong()));
}

TSRUNTIME_DEFINE_CLASS(PlainWindow) {
  static const ClassInfo info =
      ClassBuilder<PlainWindow>("PlainWindow")
          .Help(u"A plain top-level window for hosts that have none of their own, to try window "
                u"subclassing on.")
          .Get("Handle", &PlainWindow::Handle)
          .Help(u"The native window id GSubclass takes; 0 once destroyed, and after a close until "
                u"shown again.")
          .Get("Caption", &PlainWindow::Caption)
          .Help(u"The window's title.")
          .Let("Caption", &PlainWindow::LetCaption, {"RHS"})
          .Get("Visible", &PlainWindow::Visible)
          .Help(u"Whether the window is shown; assigning shows or hides it.")
          .Let("Visible", &PlainWindow::LetVisible, {"RHS"})
          .Method("Show", &PlainWindow::Show)
          .Help(u"Shows the window.")
          .Method("Move", &PlainWindow::Move, {"Left", "Top", "Width", "Height"})
          .Help(u"Moves the window to Left, Top and sizes it to Width, Height, in pixels.")
          .Method("Close", &PlainWindow::Close)
          .Help(u"Asks the window to close, as its close button does (message 16).")
          .Method("Destroy", &PlainWindow::Destroy)
          .Help(u"Destroys the window now, the destroy notice going through the chain first; the "
                u"object stays, with Handle 0.")
          .Method("SendMessage", &PlainWindow::SendMessage, {"iMsg", "wParam", "lParam"})
          .Help(u"Sends message iMsg with wParam and lParam through the window's procedure chain "
                u"and returns its result.")
          .Method("PostMessage", &PlainWindow::PostMessage, {"iMsg", "wParam", "lParam"})
          .Help(u"Posts message iMsg with wParam and lParam to the window's queue; True when "
                u"posted.")
          .Method("WindowProperty", &PlainWindow::WindowProperty, {"Name"})
          .Help(u"The subclassing property Name of the window: a count as Long, an address as "
                u"Double, Empty when absent.")
          .Build();
  return info;
}

}  // namespace tsruntime
