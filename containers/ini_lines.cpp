#include "ini_lines.h"

namespace tsruntime::ini_detail {

std::vector<String> SplitAt(StringView text, StringView separator) {
  std::vector<String> parts;
  size_t start = 0;
  for (;;) {
    const size_t at = text.find(separator, start);
    if (at == StringView::npos) break;
    parts.emplace_back(text.substr(start, at - start));
    start = at + separator.size();
  }
  parts.emplace_back(text.substr(start));
  return parts;
}

String JoinWith(const std::vector<String>& parts, StringView separator) {
  size_t total = 0;
  for (const String& part : parts) total += part.size() + separator.size();
  String text;
  text.reserve(total);
  for (size_t i = 0; i < parts.size(); ++i) {
    if (i > 0) text += separator;
    text += parts[i];
  }
  return text;
}

}  // namespace tsruntime::ini_detail
