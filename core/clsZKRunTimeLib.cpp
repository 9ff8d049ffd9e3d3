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
          .Method("Init", &clsZKRunTimeLib::Init)
          .Let("Language", &clsZKRunTimeLib::LetLanguage,
               {Typed("RHS", VarType::kLong)})
          .Get("Language", &clsZKRunTimeLib::Language)
          .Get("GetObjFileSystem", &clsZKRunTimeLib::GetObjFileSystem)
          .Get("GetObjString", &clsZKRunTimeLib::GetObjString)
          .Get("GetObjSystem", &clsZKRunTimeLib::GetObjSystem)
          .Get("GetObjArray", &clsZKRunTimeLib::GetObjArray)
          .Get("GetObjRegistry", &clsZKRunTimeLib::GetObjRegistry)
          .Get("GetObjMem", &clsZKRunTimeLib::GetObjMem)
          .Build();
  return info;
}

}  // namespace tsruntime
