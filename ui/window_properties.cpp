#include "window_properties.h"

#include <QByteArray>
#include <QLoggingCategory>
#include <QVariant>
#include <QWidget>

namespace tsruntime::subclass_detail {

Q_LOGGING_CATEGORY(subclassTrace, "tsruntime.subclass", QtWarningMsg)

namespace {

thread_local bool last_write_succeeded = true;

QByteArray Decimal(int64_t n) { return QByteArray::number(static_cast<qlonglong>(n)); }

QByteArray HandleName(int32_t hwnd) { return Decimal(hwnd); }
QByteArray CountName(int32_t hwnd) { return "C" + Decimal(hwnd); }
QByteArray ClientsName(int32_t hwnd, int32_t msg) {
  return Decimal(hwnd) + "#" + Decimal(msg) + "C";
}
QByteArray ClientName(int32_t hwnd, int32_t msg, int32_t position) {
  return Decimal(hwnd) + "#" + Decimal(msg) + "#" + Decimal(position);
}

QByteArray Hex(quint64 n) { return QByteArray::number(n, 16).toUpper(); }
QByteArray Hex(int32_t hwnd) { return Hex(static_cast<quint64>(static_cast<uint32_t>(hwnd))); }

bool Write(QWidget* widget, const QByteArray& name, QVariant value, bool zero,
           const QByteArray& trace) {
  // A dynamic property on a live widget always takes.
  last_write_succeeded = widget != nullptr;
  if (widget) widget->setProperty(name.constData(), zero ? QVariant() : std::move(value));
  qCDebug(subclassTrace).noquote() << trace;
  return last_write_succeeded;
}

}  // namespace

quintptr WindowProperties::PreviousProcedure() const {
  return widget_ ? widget_->property(HandleName(hwnd_).constData()).value<quintptr>() : 0;
}

int32_t WindowProperties::Attachments() const {
  return widget_ ? widget_->property(CountName(hwnd_).constData()).toInt() : 0;
}

int32_t WindowProperties::Clients(int32_t msg) const {
  return widget_ ? widget_->property(ClientsName(hwnd_, msg).constData()).toInt() : 0;
}

quintptr WindowProperties::Client(int32_t msg, int32_t position) const {
  if (!widget_) return 0;
  return widget_->property(ClientName(hwnd_, msg, position).constData()).value<quintptr>();
}

bool WindowProperties::SetPreviousProcedure(quintptr procedure) {
  return Write(widget_, HandleName(hwnd_), QVariant::fromValue(procedure), procedure == 0,
               "Changed Window Proc for " + Hex(hwnd_) + " to " + Hex(quint64{procedure}));
}

bool WindowProperties::SetAttachments(int32_t count) {
  return Write(widget_, CountName(hwnd_), QVariant(count), count == 0,
               "Changed message count for " + Hex(hwnd_) + " to " + Decimal(count));
}

bool WindowProperties::SetClients(int32_t msg, int32_t count) {
  return Write(widget_, ClientsName(hwnd_, msg), QVariant(count), count == 0,
               "Changed message count for " + Hex(hwnd_) + " Message " + Decimal(msg) +
                   " to " + Decimal(count));
}

bool WindowProperties::SetClient(int32_t msg, int32_t position, quintptr client) {
  return Write(widget_, ClientName(hwnd_, msg, position), QVariant::fromValue(client),
               client == 0,
               "Changed message class for " + Hex(hwnd_) + " Message " + Decimal(msg) +
                   " Index " + Decimal(position) + " to " + Hex(quint64{client}));
}

}  // namespace tsruntime::subclass_detail
