#include "tsruntime/clsZKRunTimeLib.h"

namespace tsruntime {

clsZKRunTimeLib::clsZKRunTimeLib() { SetInterfaceLanguage(xcZKLANG_RUS); }

int32_t clsZKRunTimeLib::Language() const { return InterfaceLanguage(); }
void clsZKRunTimeLib::LetLanguage(int32_t value) { SetInterfaceLanguage(value); }

Ref<clsZKFileSystem> clsZKRunTimeLib::GetObjFileSystem() const {
  return New<clsZKFileSystem>();
}
Ref<clsZKString> clsZKRunTimeLib::GetObjString() const { return New<clsZKString>(); }
Ref<clsZKSystem> clsZKRunTimeLib::GetObjSystem() const { return New<clsZKSystem>(); }
Ref<clsZKArray> clsZKRunTimeLib::GetObjArray() const { return New<clsZKArray>(); }
Ref<clsZKRegistry> clsZKRunTimeLib::GetObjRegistry() const { return New<clsZKRegistry>(); }
Ref<clsZKMem> clsZKRunTimeLib::GetObjMem() const { return New<clsZKMem>(); }

TSRUNTIME_DEFINE_CLASS(clsZKRunTimeLib) {
  static const ClassInfo info =
      ClassBuilder<clsZKRunTimeLib>("clsZKRunTimeLib")
          .Help(u"The library's root object: the thread's interface language and a new service "
                u"object from each GetObj property.")
          .Method("Init", &clsZKRunTimeLib::Init)
          .Help(u"Does no work and returns True.")
          .Let("Language", &clsZKRunTimeLib::LetLanguage,
               {Typed("RHS", VarType::kLong)})
          .Help(u"The interface language of this thread (xeZK_INTERFACE_LANGUAGE), stored "
                u"unchecked; a new root object resets it to Russian.")
          .Get("Language", &clsZKRunTimeLib::Language)
          .Get("GetObjFileSystem", &clsZKRunTimeLib::GetObjFileSystem)
          .Help(u"A new clsZKFileSystem on every read.")
          .Get("GetObjString", &clsZKRunTimeLib::GetObjString)
          .Help(u"A new clsZKString on every read.")
          .Get("GetObjSystem", &clsZKRunTimeLib::GetObjSystem)
          .Help(u"A new clsZKSystem on every read.")
          .Get("GetObjArray", &clsZKRunTimeLib::GetObjArray)
          .Help(u"A new clsZKArray on every read.")
          .Get("GetObjRegistry", &clsZKRunTimeLib::GetObjRegistry)
          .Help(u"A new clsZKRegistry on every read.")
          .Get("GetObjMem", &clsZKRunTimeLib::GetObjMem)
          .Help(u"A new clsZKMem on every read.")
          .Build();
  return info;
}

}  // namespace tsruntime
