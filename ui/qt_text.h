// Strings between the library (UTF-16 `String`) and Qt: both are UTF-16, so nothing is
// converted, only copied.
#pragma once

#include <QString>

#include "tsruntime/automation/string.h"

namespace tsruntime::ui_detail {

inline QString ToQString(StringView s) {
  return QString(reinterpret_cast<const QChar*>(s.data()), static_cast<qsizetype>(s.size()));
}
inline String FromQString(const QString& s) {
  return String(reinterpret_cast<const char16_t*>(s.utf16()), static_cast<size_t>(s.size()));
}

}  // namespace tsruntime::ui_detail
