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
    return {};
  }
  const std::string path = info.dli_fname;
  const size_t slash = path.rfind('/');
  return slash == std::string::npos ? std::string() : path.substr(0, slash);
}

void* OpenModuleBeside(std::string_view module_file, std::string* error) {
  std::string messages;
  if (const std::string folder = LibraryDirectory(); !folder.empty()) {
    const std::string beside = folder + "/" + std::string(module_file);
    if (void* handle = dlopen(beside.c_str(), RTLD_NOW | RTLD_LOCAL)) return handle;
    messages = std::string(dlerror()) + "; ";
  }
  void* handle = dlopen(std::string(module_file).c_str(), RTLD_NOW | RTLD_LOCAL);
  if (!handle) messages += dlerror();
  if (error) *error = handle ? std::string() : messages;
  return handle;
}

bool LoadModule(std::string_view module_file, std::string* error) {
  // Loading runs the module's registrations; one thread at a time, once per module.
  static std::recursive_mutex mutex;
  static std::map<std::string, Outcome, std::less<>> outcomes;
  std::lock_guard lock(mutex);
  auto found = outcomes.find(module_file);
  if (found == outcomes.end()) {
    Outcome outcome;
    outcome.loaded = OpenModuleBeside(module_file, &outcome.error) != nullptr;
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
