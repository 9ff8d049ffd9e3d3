// Classes whose code lives in a separately loaded module, and the message pump such a
// module may bring.
//
// The user-interface classes (timers, window subclassing, dialogs) need a GUI toolkit
// that the library itself must not depend on: a machine without it still uses every
// other class. Their code lives in `libtsruntime-ui.so`. The library names those classes
// up front, so listings (`RegisteredClasses`, `tsrt classes`, Python's `classes()`) show
// them whether or not the module is loaded, and the first `FindClass` or `CreateObject`
// of one of them loads the module, found beside `libtsruntime.so`:
//
//   RegisterModuleClasses("libtsruntime-ui.so", {{"CTimer"}, {"ISubclass", false}});
//   CreateObject(u"TSRuntimeLib.CTimer");   // loads the module, then creates
//
// When the module loads, its own `TSRUNTIME_DEFINE_CLASS` registrations take the place
// of the names given here. A module that cannot be loaded leaves the names listed, and
// creating one of them raises "ActiveX component can't create object" (429).
#pragma once

#include <initializer_list>
#include <string>
#include <string_view>

namespace tsruntime {

// A class the module registers, and whether hosts can create it.
struct ModuleClassName {
  std::string_view name;
  bool creatable = true;
};

// Names classes that `module_file` (a file name beside libtsruntime.so) registers when it
// loads. Called while the library loads; returns true so that it can initialise a static.
bool RegisterModuleClasses(std::string_view module_file,
                           std::initializer_list<ModuleClassName> classes);

// Loads the module once per process (later calls return the first outcome). True when it
// is loaded; otherwise `error` (when given) receives the loader's message.
bool LoadModule(std::string_view module_file, std::string* error = nullptr);

// The directory holding libtsruntime.so, without a trailing "/"; empty when unknown.
std::string LibraryDirectory();

// dlopens a module file of this library: beside libtsruntime.so first (so that a build
// tree or an install prefix uses its own), then wherever the loader looks. The handle, or
// null with the loader's messages in `error` (when given). Modules stay loaded.
void* OpenModuleBeside(std::string_view module_file, std::string* error = nullptr);

// --- The message pump ---------------------------------------------------------------

// Runs the events waiting on the calling thread's event loop and returns at once.
using MessagePump = void (*)();

// Installed by a module that brings an event loop (the user-interface module).
void SetMessagePump(MessagePump pump);

// Runs the waiting events, when a module with an event loop is loaded; does nothing
// otherwise. Hosts without an event loop of their own (scripts) call it while they wait
// for timer ticks and window messages.
void PumpWaitingMessages();

}  // namespace tsruntime
