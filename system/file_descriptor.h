// An open file descriptor owned by a scope.
#pragma once

#include <unistd.h>

namespace tsruntime::fs_detail {

// Closes the descriptor when it ends; -1 holds none.
struct Fd {
  int fd = -1;
  explicit Fd(int f) : fd(f) {}
  ~Fd() {
    if (fd >= 0) ::close(fd);
  }
  Fd(const Fd&) = delete;
  Fd& operator=(const Fd&) = delete;
};

}  // namespace tsruntime::fs_detail
