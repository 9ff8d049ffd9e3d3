// Finding and loading the compression module libtszlib.so.
#pragma once

#include <cstdint>

namespace tsruntime::mem_detail {

// zlib's compress / uncompress contract with 32-bit lengths; status 0 is success.
using TszlibEntry = int32_t (*)(uint8_t*, uint32_t*, const uint8_t*, uint32_t);

struct TszlibModule {
  TszlibEntry compress = nullptr;
  TszlibEntry uncompress = nullptr;
};

// The module's entry points, loaded on the first call: libtszlib.so from the folder
// libtsruntime.so was loaded from, else by name through the loader's search path. Null
// when neither loads or one lacks an entry point. The outcome is kept for the process.
const TszlibModule* Tszlib();

}  // namespace tsruntime::mem_detail
