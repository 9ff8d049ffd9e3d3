#include "immediate.h"

#include <unistd.h>

#include <iostream>
#include <string>

#include "commands.h"
#include "completion.h"
#include "history_file.h"
#include "immediate_session.h"
#include "line_editor.h"

namespace tsrt {

int RunImmediateScript(std::istream& in, std::ostream& out, std::ostream& err) {
  ImmediateSession session;
  bool failed = false;
  std::string line;
  for (size_t number = 1; std::getline(in, line); ++number) {
    if (number == 1 && line.starts_with("\xEF\xBB\xBF")) line.erase(0, 3);  // a byte-order mark
    if (!line.empty() && line.back() == '\r') line.pop_back();
    if (!session.RunLine(line, out, err, number)) failed = true;
    if (session.quitting()) break;
  }
  return failed ? kFailed : kSucceeded;
}

int RunImmediate(std::ostream& out, std::ostream& err) {
  if (!isatty(STDIN_FILENO)) return RunImmediateScript(std::cin, out, err);
  ImmediateSession session;
  const auto path = HistoryFile::DefaultPath();
  const std::optional<HistoryFile> history = path ? std::optional<HistoryFile>(*path) : std::nullopt;
  std::vector<std::string> earlier = history ? history->Load() : std::vector<std::string>();
  LineEditor editor([&](std::string_view before) { return Complete(session, before); }, earlier);
  out << "tsrt (TSRuntimeLib) " TSRUNTIME_VERSION ": statements as in the host language;"
         " ? prints, Tab completes, Ctrl-D ends.\n";
  out.flush();
  std::string previous = earlier.empty() ? std::string() : earlier.back();
  while (const auto line = editor.ReadLine("> ")) {
    if (line->find_first_not_of(" \t") != std::string::npos && *line != previous) {
      editor.Remember(*line);
      if (history) history->Append(*line);
      previous = *line;
    }
    session.RunLine(*line, out, err);
    if (session.quitting()) return kSucceeded;
  }
  out << '\n';
  return kSucceeded;
}

}  // namespace tsrt
