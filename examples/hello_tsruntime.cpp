// A host that uses the library both ways: early bound through the class's header, and
// late bound by ProgID and member name.
#include <iostream>

#include <tsruntime/clsZKRunTimeLib.h>

int main() {
  using namespace tsruntime;

  auto lib = New<clsZKRunTimeLib>();
  std::cout << "Init: " << (lib->Init() ? "True" : "False") << "\n";

  // Compression runs in the module libtszlib.so, found beside the library.
  SafeArray block = SafeArray::FromBytes(std::vector<uint8_t>(100, 'x'));
  std::cout << "CompressData: " << (lib->GetObjMem()->CompressData(block) ? "True" : "False")
            << "\n";

  Ref<Object> late = CreateObject(u"TSRuntimeLib.clsZKRunTimeLib");
  std::vector<Argument> args{{u"", Variant(int32_t{1})}};
  Invoke(*late, u"Language", InvokeKind::kLet, args);
  std::vector<Argument> none;
  std::cout << "Language: " << ToUtf8(ToString(Invoke(*late, u"Language", InvokeKind::kCall, none)))
            << "\n";

  try {
    Invoke(*late, u"NoSuchMember", InvokeKind::kCall, none);
  } catch (const Error& e) {
    std::cout << e.what() << "\n";
  }
  return 0;
}
