// Keyboard layout names: the 8-digit hexadecimal identifiers hosts know ("00000409" for
// English (US), "00000419" for Russian), for the XKB layouts that X11 groups hold.
#pragma once

#include <string_view>

#include "tsruntime/automation/string.h"

namespace tsruntime {

// The identifier of an XKB layout ("us" -> "00000409", "ru" -> "00000419"), chosen by the
// layout's language; a variant in parentheses ("us(intl)") is ignored. A layout the table
// does not know is "00000000", which matches neither English nor Russian.
String KeyboardLayoutName(std::string_view xkb_layout);

}  // namespace tsruntime
