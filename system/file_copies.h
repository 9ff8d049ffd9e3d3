// Temporary copies that replace a file by renaming: made beside it, written whole, put
// in its place in one step.
//
// A copy is named "." + the file's name + ".tsrt-" + a slot digit (0 to 7), so that the
// copies of one file are found without listing its folder. The writer holds an exclusive
// lock (flock) on its copy while it lives; a copy nobody holds was left by a writer that
// died, and the next writer of the same file removes it.
#pragma once

#include <sys/types.h>

#include <string>

#include "file_descriptor.h"

namespace tsruntime::fs_detail {

// The file a chain of symbolic links ends at (which may not exist yet), or "" for a chain
// that loops or cannot be read.
std::string FinalTarget(std::string path);

class TemporaryCopy {
 public:
  // Creates a copy beside `target` with `mode` (before the umask), taking the lowest
  // slot that is free or held by no one. `fd() < 0` when none can be made there: the
  // folder takes no new file, or every slot is in use.
  TemporaryCopy(const std::string& target, mode_t mode);
  // Removes the copy unless it was put in place.
  ~TemporaryCopy();
  TemporaryCopy(const TemporaryCopy&) = delete;
  TemporaryCopy& operator=(const TemporaryCopy&) = delete;

  int fd() const { return file_.fd; }
  // Renames the copy over `target`; false with errno set when the rename fails.
  bool PutInPlace(const std::string& target);

 private:
  Fd file_;
  std::string name_;
};

// Removes the copies of `target` that no living writer holds and that belong to this
// process's user.
void RemoveLeftoverCopies(const std::string& target);

}  // namespace tsruntime::fs_detail
