// Line editing for the interactive session, through the system's editline library:
// cursor keys, Emacs-style editing, history (Up, Down, Ctrl-R) and Tab completion
// (a second Tab lists the candidates).
//
// One editor at a time per process: editline keeps its state in globals.
#pragma once

#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "completion.h"
#include "history_file.h"

namespace tsrt {

class LineEditor {
 public:
  using Completer = std::function<Completion(std::string_view line_before_cursor)>;

  // `history`: earlier entries, oldest first, for Up to recall.
  LineEditor(Completer completer, const std::vector<std::string>& history);
  ~LineEditor();
  LineEditor(const LineEditor&) = delete;
  LineEditor& operator=(const LineEditor&) = delete;

  // Shows `prompt` and reads one line (UTF-8, no line end); nothing at the end of input
  // (Ctrl-D on an empty line).
  std::optional<std::string> ReadLine(const char* prompt);

  // Adds a line to what Up recalls.
  void Remember(const std::string& line);
};

}  // namespace tsrt
