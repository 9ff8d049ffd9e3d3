#include "tsruntime/automation/err_object.h"

namespace tsruntime {

TSRUNTIME_DEFINE_CLASS(ErrObject) {
  static const ClassInfo info = ClassBuilder<ErrObject>("ErrObject")
                                    .Get("Number", &ErrObject::Number)
                                    .Get("Source", &ErrObject::Source)
                                    .Get("Description", &ErrObject::Description)
                                    .Get("HelpFile", &ErrObject::HelpFile)
                                    .Get("HelpContext", &ErrObject::HelpContext)
                                    .Default("Description")
                                    .Build();
  return info;
}

}  // namespace tsruntime
