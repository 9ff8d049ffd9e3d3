// Whole-file reading and writing: the one way the library moves file content.
//
// Replacing takes one of two routes (docs/filesystem.md has the table). Where a rename
// keeps everything the user sees, the new content goes to a temporary copy beside the
// target, is flushed, given the target's permissions, owner and group, and renamed over
// it, so a crash leaves the old file or the new one. Devices and pipes, files with other
// names, files whose owner or group the process cannot give back, files in folders it
// may not write and files that only have room in themselves are written in place, as
// the interface itself writes them. A symbolic link is followed to the file it names,
// so the link stays a link.
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

// Makes `path` hold exactly `content`, or writes it into a device or a pipe. False when
// it is a folder, when it is read-only and `read_only` says kRefuse, when a pipe has no
// reader, or when any step fails; the target is then untouched, except for an in-place
// write that the system fails part way (an I/O error).
bool ReplaceFileContent(const std::string& path, std::span<const uint8_t> content,
                        ReadOnlyTarget read_only);

// Appends `content`, creating the file when missing; a device or a pipe is written into,
// never waited on. False for a folder, a read-only file, a pipe with no reader, or a
// failed write, which leaves the file as it was (cut back, or gone when it was new).
bool AppendFileContent(const std::string& path, std::span<const uint8_t> content);

}  // namespace tsruntime::fs_detail
