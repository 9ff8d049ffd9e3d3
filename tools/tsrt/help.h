// The texts `tsrt` shows when asked for help or misused.
#pragma once

namespace tsrt {

// The command synopsis, printed after a usage error.
extern const char kUsage[];
// `tsrt --help`: the synopsis, the commands, the literal syntax and the exit codes.
extern const char kHelp[];

}  // namespace tsrt
