// Whole-file reading and writing: the one way the library moves file content.
//
// Replacing never leaves a file half-written: the new content is written to a temporary
// file beside the target, flushed to disk, given the target's permissions and owner, and
// renamed over it; the folder is flushed after the rename. A symbolic link is followed
// to the file it names, so the link stays a link.
#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <vector>

namespace tsruntime::fs_detail {

// An open file that is read whole; closed when it ends.
class WholeFileReader {
 public:
  // Opens a regular file (or a link to one) for reading; `ok()` says whether it did.
  explicit WholeFileReader(const std::string& path);
  ~WholeFileReader();
  WholeFileReader(const WholeFileReader&) = delete;
  WholeFileReader& operator=(const WholeFileReader&) = delete;

  bool ok() const { return fd_ >= 0; }
  // The length when it was opened.
  int64_t size() const { return size_; }
  // Makes `into` hold the file's first size() bytes; False when the file ends sooner or
  // a read fails.
  bool ReadAll(std::vector<uint8_t>& into);

 private:
  int fd_ = -1;
  int64_t size_ = 0;
};

// Whether a read-only target may be replaced.
enum class ReadOnlyTarget { kReplace, kRefuse };

// Makes `path` hold exactly `content`. False, with the target untouched, when it is a
// folder, when it is read-only and `read_only` says kRefuse, or when any step fails.
bool ReplaceFileContent(const std::string& path, std::span<const uint8_t> content,
                        ReadOnlyTarget read_only);

// Appends `content`, creating the file when missing. False for a folder, a read-only
// file, or a failed write.
bool AppendFileContent(const std::string& path, std::span<const uint8_t> content);

}  // namespace tsruntime::fs_detail
