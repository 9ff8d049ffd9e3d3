// The texts `tsrt` shows when asked for help or misused, rendered at build time from its
// manual, docs/tsrt.md (tools/render_manual.py), which the manual page tsrt(1) comes from
// too.
#pragma once

namespace tsrt {

// The command synopsis (the manual's first code block), printed after a usage error.
extern const char kUsage[];
// `tsrt --help`: the whole manual, laid out for a terminal.
extern const char kHelp[];

}  // namespace tsrt
