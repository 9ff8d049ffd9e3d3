#include "object_addresses.h"

#include <memory>
#include <unordered_set>
#include <vector>

#include "tsruntime/automation/variant.h"

namespace tsruntime {
namespace {

using AddressSet = std::unordered_set<uintptr_t>;

// Shared with the forgetters, so that an object that outlives its thread still finds
// the set it was entered in.
std::shared_ptr<AddressSet>& ThreadAddresses() {
  thread_local std::shared_ptr<AddressSet> set = std::make_shared<AddressSet>();
  return set;
}

// Rides along as an event sink of the object: the object drops its sinks when it is
// destroyed, and with them this, which forgets the address.
struct Forgetter {
  std::shared_ptr<AddressSet> set;
  uintptr_t address;
  ~Forgetter() { set->erase(address); }
};

}  // namespace

uintptr_t RememberAddress(Object& object) {
  const auto address = reinterpret_cast<uintptr_t>(&object);
  std::shared_ptr<AddressSet>& set = ThreadAddresses();
  if (set->insert(address).second) {
    std::shared_ptr<Forgetter> forgetter(new Forgetter{set, address});
    object.Connect([forgetter](StringView, std::vector<Variant>&) {});
  }
  return address;
}

Object* RememberedObject(uintptr_t address) {
  return ThreadAddresses()->contains(address) ? reinterpret_cast<Object*>(address) : nullptr;
}

}  // namespace tsruntime
