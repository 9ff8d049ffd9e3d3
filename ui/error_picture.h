// The report window's picture: a red disc with a white cross, drawn rather than shipped,
// so that it is sharp at any scale.
#pragma once

#include <QPixmap>

namespace tsruntime::ui_detail {

QPixmap ErrorPicture(int size, qreal device_pixel_ratio);

}  // namespace tsruntime::ui_detail
