// ErrObject: the host runtime's Err object, an `Error` handed to the library as an
// automation object. Hosts that catch an error pass it on this way (the Python module
// turns an `AutomationError` into one); `clsTSErrors.AddAsError` reads its `Number` and
// `Description`. Hosts receive it but cannot create it by name.
#pragma once

#include <cstdint>

#include "tsruntime/automation/dispatch.h"

namespace tsruntime {

class ErrObject : public Object {
 public:
  explicit ErrObject(Error error) : error_(std::move(error)) {}
  TSRUNTIME_CLASS_INFO;

  int32_t Number() const { return error_.number(); }
  String Source() const { return error_.source(); }
  // The default member, as with the host's Err.
  String Description() const { return error_.description(); }
  String HelpFile() const { return error_.helpFile(); }
  int32_t HelpContext() const { return error_.helpContext(); }

  const Error& error() const { return error_; }

 private:
  Error error_;
};

}  // namespace tsruntime
