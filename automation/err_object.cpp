#include "tsruntime/automation/err_object.h"

namespace tsruntime {

TSRUNTIME_DEFINE_CLASS(ErrObject) {
  static const ClassInfo info = ClassBuilder<ErrObject>("ErrObject")
                                    .Help(u"The host's Err object: a caught error with its five "
                                          u"fields, as an argument passes it.")
                                    .Get("Number", &ErrObject::Number)
                                    .Help(u"The error's number.")
                                    .Get("Source", &ErrObject::Source)
                                    .Help(u"The error's source.")
                                    .Get("Description", &ErrObject::Description)
                                    .Help(u"The error's text; the default member.")
                                    .Get("HelpFile", &ErrObject::HelpFile)
                                    .Help(u"The help file the error names.")
                                    .Get("HelpContext", &ErrObject::HelpContext)
                                    .Help(u"The help context in that file.")
                                    .Default("Description")
                                    .Build();
  return info;
}

}  // namespace tsruntime
