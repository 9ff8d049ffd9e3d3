#include "tsruntime/automation/modules.h"

#include <dlfcn.h>

#include <atomic>
#include <map>
#include <mutex>

namespace tsruntime {
namespace {

struct Outcome {
  bool loaded = false;
  std::string error;
};

}  // namespace

std::string LibraryDirectory() {
  Dl_info info{};
  if (dladdr(reinterpret_cast<void*>(&LibraryDirectory), &info) == 0 || !info.dli_fname) {
    return ".";
  }
  const std::string path = info.dli_fname;
  const size_t slash = path.rfind('/');
  return slash == std::string::npos ? "." : path.substr(0, slash);
}

bool LoadModule(std::string_view module_file, std::string* error) {
  // Loading runs the module's registrations; one thread at a time, once per module.
  static std::recursive_mutex mutex;
  static std::map<std::string, Outcome, std::less<>> outcomes;
  std::lock_guard lock(mutex);
  auto found = outcomes.find(module_file);
  if (found == outcomes.end()) {
    Outcome outcome;
    // Beside the library first, so that a build tree or an install prefix uses its own
    // module; then wherever the loader looks.
    const std::string beside = LibraryDirectory() + "/" + std::string(module_file);
    void* handle = dlopen(beside.c_str(), RTLD_NOW | RTLD_LOCAL);
    if (!handle) {
      outcome.error = dlerror();
      handle = dlopen(std::string(module_file).c_str(), RTLD_NOW | RTLD_LOCAL);
      if (!handle) outcome.error += "; " + std::string(dlerror());
    }
    outcome.loaded = handle != nullptr;  // kept loaded for the life of the process
    if (outcome.loaded) outcome.error.clear();
    found = outcomes.emplace(std::string(module_file), std::move(outcome)).first;
  }
  if (error) *error = found->second.error;
  return found->second.loaded;
}

namespace {
std::atomic<MessagePump> installed_pump{nullptr};
}  // namespace

void SetMessagePump(MessagePump pump) { installed_pump.store(pump); }

void PumpWaitingMessages() {
  if (MessagePump pump = installed_pump.load()) pump();
}

}  // namespace tsruntime
