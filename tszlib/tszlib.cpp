#include "tszlib.h"

#include <zlib.h>

namespace {

template <class ZlibCall>
int32_t WithZlibLengths(ZlibCall call, uint8_t* dest, uint32_t* dest_len,
                        const uint8_t* source, uint32_t source_len) {
  uLongf length = *dest_len;
  const int status = call(dest, &length, source, source_len);
  *dest_len = static_cast<uint32_t>(length);
  return status;
}

}  // namespace

extern "C" {

__attribute__((visibility("default"))) int32_t Compress(uint8_t* dest, uint32_t* dest_len,
                                                         const uint8_t* source,
                                                         uint32_t source_len) {
  return WithZlibLengths(::compress, dest, dest_len, source, source_len);
}

__attribute__((visibility("default"))) int32_t Uncompress(uint8_t* dest, uint32_t* dest_len,
                                                           const uint8_t* source,
                                                           uint32_t source_len) {
  return WithZlibLengths(::uncompress, dest, dest_len, source, source_len);
}
}
