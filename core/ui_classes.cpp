// The user-interface classes live in libtsruntime-ui.so, the only part of the library
// that needs Qt. They are named here so that every listing shows them, and the module is
// loaded when one of them is first looked up or created. A class added to the module is
// added to this list too.
#include "tsruntime/CTimer.h"
#include "tsruntime/ISubclass.h"
#include "tsruntime/automation/modules.h"

namespace tsruntime {
namespace {

[[maybe_unused]] const bool ui_classes_named = RegisterModuleClasses(
    "libtsruntime-ui.so",
    {{"CTimer"}, {"GSubclass"}, {"ISubclass", false}, {"PlainWindow"}, {"clsZKCDL"}});

// The enumerations are plain numbers: listed without loading the module.
const EnumInfo kTimerErrors{u"EErrorTimer",
                            {{u"eeBaseTimer", eeBaseTimer,
                              u"The base of the timer error codes; not raised."},
                             {u"eeTooManyTimers", eeTooManyTimers,
                              u"A thread's 101st running timer; raised Or 0x80040000."},
                             {u"eeCantCreateTimer", eeCantCreateTimer,
                              u"No system timer could run; raised Or 0x80040000."}},
                            u"Codes of the CTimer errors."};
const EnumInfo kMsgResponses{u"EMsgResponse",
                             {{u"emrConsume", emrConsume,
                               u"The previous window procedure is not called."},
                              {u"emrPostProcess", emrPostProcess,
                               u"The previous procedure runs after the clients; its result "
                               u"stands."},
                              {u"emrPreprocess", emrPreprocess,
                               u"The previous procedure runs before the clients; their result "
                               u"stands."}},
                             u"When the previous window procedure runs, ISubclass.MsgResponse."};
[[maybe_unused]] const bool ui_enums_registered =
    RegisterEnum(kTimerErrors) && RegisterEnum(kMsgResponses);

}  // namespace
}  // namespace tsruntime
