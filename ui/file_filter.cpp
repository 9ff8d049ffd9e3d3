#include <algorithm>

#include "dialog_requests.h"

namespace tsruntime::ui_detail {

std::vector<FileFilterEntry> ParseFileFilter(StringView stored) {
  std::vector<String> pieces;
  size_t start = 0;
  while (start < stored.size()) {
    const size_t end = std::min(stored.find(u'\0', start), stored.size());
    if (end == start) break;  // a double NUL ends the list
    pieces.emplace_back(stored.substr(start, end - start));
    start = end + 1;
  }
  std::vector<FileFilterEntry> entries;
  for (size_t i = 0; i + 1 < pieces.size(); i += 2) entries.push_back({pieces[i], pieces[i + 1]});
  return entries;
}

}  // namespace tsruntime::ui_detail
