#include "tszlib_module.h"

#include <dlfcn.h>

#include <string>

namespace tsruntime::mem_detail {
namespace {

constexpr char kModuleName[] = "libtszlib.so";

// The folder of the object this function was linked into, with a trailing "/".
std::string OwnFolder() {
  Dl_info info{};
  if (dladdr(reinterpret_cast<void*>(&OwnFolder), &info) == 0 || !info.dli_fname) return {};
  const std::string path = info.dli_fname;
  const size_t slash = path.rfind('/');
  return slash == std::string::npos ? std::string() : path.substr(0, slash + 1);
}

void* OpenModule() {
  const std::string folder = OwnFolder();
  if (!folder.empty()) {
    if (void* handle = dlopen((folder + kModuleName).c_str(), RTLD_NOW | RTLD_LOCAL)) {
      return handle;
    }
  }
  return dlopen(kModuleName, RTLD_NOW | RTLD_LOCAL);
}

const TszlibModule* Load() {
  void* handle = OpenModule();
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
