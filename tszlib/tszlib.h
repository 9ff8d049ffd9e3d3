// The compression module's two entry points: zlib's `compress` and `uncompress` with
// 32-bit lengths. The runtime loads the module by name on first use and never links
// zlib itself.
//
// Both return zlib's status: 0 (Z_OK) for success, -5 (Z_BUF_ERROR) when the
// destination is too small, -3 (Z_DATA_ERROR) for a corrupt or truncated stream, -4
// (Z_MEM_ERROR) when zlib cannot get memory. `*dest_len` holds the destination's
// capacity on the way in and the bytes written on the way out.
#pragma once

#include <cstdint>

extern "C" {

int32_t Compress(uint8_t* dest, uint32_t* dest_len, const uint8_t* source, uint32_t source_len);
int32_t Uncompress(uint8_t* dest, uint32_t* dest_len, const uint8_t* source,
                   uint32_t source_len);

// The signature both share, for callers that look them up with dlsym.
using TszlibEntry = int32_t (*)(uint8_t*, uint32_t*, const uint8_t*, uint32_t);
}
