// clsZKRunTimeLib: the root object, a host's first contact with the library.
//
//   auto lib = tsruntime::New<tsruntime::clsZKRunTimeLib>();
//   lib->Init();                                  // always True
//   lib->LetLanguage(tsruntime::xcZKLANG_ENG);   // English texts on this thread
//
// The interface language is held per thread, not per object: every root object and
// every class on the thread reads the same value. Creating a root object resets it to
// Russian (0), even when another root object had set English; hosts rely on that.
//
// The `GetObj...` properties hand out a new service object on every read; the root
// object keeps no reference to what it hands out.
#pragma once

#include "tsruntime/automation/dispatch.h"
#include "tsruntime/clsZKArray.h"
#include "tsruntime/clsZKFileSystem.h"
#include "tsruntime/clsZKMem.h"
#include "tsruntime/clsZKRegistry.h"
#include "tsruntime/clsZKString.h"
#include "tsruntime/clsZKSystem.h"
#include "tsruntime/errors.h"

namespace tsruntime {

class clsZKRunTimeLib : public Object {
 public:
  clsZKRunTimeLib();
  TSRUNTIME_CLASS_INFO;

  // Does no work and returns True.
  bool Init() const { return true; }

  // The thread's interface language, stored unchecked.
  int32_t Language() const;
  void LetLanguage(int32_t value);

  // Service objects: a new one on every read; the caller owns it.
  Ref<clsZKFileSystem> GetObjFileSystem() const;
  Ref<clsZKString> GetObjString() const;
  Ref<clsZKSystem> GetObjSystem() const;
  Ref<clsZKArray> GetObjArray() const;
  Ref<clsZKRegistry> GetObjRegistry() const;
  Ref<clsZKMem> GetObjMem() const;
};

}  // namespace tsruntime
