#include "reserved_buffer.h"

#include <sys/mman.h>

namespace tsruntime::mem_detail {

ReservedBuffer::ReservedBuffer(size_t size) : size_(size == 0 ? 1 : size) {
  // Anonymous pages read as zero without being touched, and NORESERVE keeps a huge
  // reservation from counting against the commit limit.
  void* p = mmap(nullptr, size_, PROT_READ | PROT_WRITE,
                 MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0);
  if (p != MAP_FAILED) data_ = static_cast<uint8_t*>(p);
}

ReservedBuffer::~ReservedBuffer() {
  if (data_) munmap(data_, size_);
}

}  // namespace tsruntime::mem_detail
