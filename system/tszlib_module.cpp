#include "tszlib_module.h"

#include <dlfcn.h>

#include "tsruntime/automation/modules.h"

namespace tsruntime::mem_detail {
namespace {

constexpr char kModuleName[] = "libtszlib.so";

const TszlibModule* Load() {
  void* handle = OpenModuleBeside(kModuleName);
  if (!handle) return nullptr;
  static TszlibModule module;
  module.compress = reinterpret_cast<TszlibEntry>(dlsym(handle, "Compress"));
  module.uncompress = reinterpret_cast<TszlibEntry>(dlsym(handle, "Uncompress"));
  if (!module.compress || !module.uncompress) return nullptr;
  return &module;  // the module stays loaded for the life of the process
}

}  // namespace

const TszlibModule* Tszlib() {
  static const TszlibModule* const module = Load();
  return module;
}

}  // namespace tsruntime::mem_detail
