// A work buffer of address space only: pages are committed when first written, so a
// buffer sized far beyond what is written costs what is written.
#pragma once

#include <cstddef>
#include <cstdint>

namespace tsruntime::mem_detail {

class ReservedBuffer {
 public:
  // Reserves `size` bytes; `data()` is null when the reservation fails.
  explicit ReservedBuffer(size_t size);
  ~ReservedBuffer();
  ReservedBuffer(const ReservedBuffer&) = delete;
  ReservedBuffer& operator=(const ReservedBuffer&) = delete;

  uint8_t* data() const { return data_; }

 private:
  uint8_t* data_ = nullptr;
  size_t size_ = 0;
};

}  // namespace tsruntime::mem_detail
