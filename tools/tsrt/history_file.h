// The interactive session's history, kept from one session to the next in the user's
// data folder: $XDG_DATA_HOME/tsruntime/tsrt_history ($HOME/.local/share when
// XDG_DATA_HOME is unset or not an absolute path). One entry per line, UTF-8, newest
// last, the newest 1000 kept.
//
// Missing folders are made private (0700), the file 0600. A history file that is not a
// regular file (a link, a pipe, a device) is left alone: neither read nor replaced.
#pragma once

#include <optional>
#include <string>
#include <vector>

namespace tsrt {

class HistoryFile {
 public:
  static constexpr size_t kKept = 1000;

  // The file's place in the user's data folder; nothing when no home folder is known.
  static std::optional<std::string> DefaultPath();

  explicit HistoryFile(std::string path) : path_(std::move(path)) {}

  // The entries, oldest first; none when the file is missing or cannot be read.
  std::vector<std::string> Load() const;

  // Adds `line` after the entries the file holds now, so that sessions running side by
  // side keep each other's lines, and replaces the file whole: the new text goes to a
  // file beside it, which is then renamed over it. False when that could not be done;
  // the old file is then as it was.
  bool Append(const std::string& line) const;

 private:
  std::string path_;
};

}  // namespace tsrt
