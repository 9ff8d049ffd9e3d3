#include "error_picture.h"

#include <QPainter>
#include <QPen>

namespace tsruntime::ui_detail {

QPixmap ErrorPicture(int size, qreal device_pixel_ratio) {
  QPixmap picture(QSize(size, size) * device_pixel_ratio);
  picture.setDevicePixelRatio(device_pixel_ratio);
  picture.fill(Qt::transparent);
  QPainter p(&picture);
  p.setRenderHint(QPainter::Antialiasing);
  const qreal s = size;
  QRadialGradient shade(QPointF(s * 0.35, s * 0.3), s * 0.7);
  shade.setColorAt(0, QColor(0xF2, 0x5C, 0x54));
  shade.setColorAt(1, QColor(0xB0, 0x1E, 0x1E));
  p.setPen(QPen(QColor(0x80, 0x10, 0x10), s / 32));
  p.setBrush(shade);
  p.drawEllipse(QRectF(s / 32, s / 32, s - s / 16, s - s / 16));
  p.setPen(QPen(Qt::white, s / 8, Qt::SolidLine, Qt::RoundCap));
  const qreal a = s * 0.32;
  const qreal b = s * 0.68;
  p.drawLine(QPointF(a, a), QPointF(b, b));
  p.drawLine(QPointF(a, b), QPointF(b, a));
  return picture;
}

}  // namespace tsruntime::ui_detail
