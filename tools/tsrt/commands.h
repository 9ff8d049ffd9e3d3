// The `tsrt` commands: list what the library registers and call its members by name.
//
// Everything goes through the late-bound layer (dispatch.h); nothing here knows any
// particular class. `Run` writes to the streams it is given, so the commands can be
// driven in process as well as from the command line.
#pragma once

#include <ostream>
#include <string>
#include <vector>

namespace tsrt {

enum ExitCode : int {
  kSucceeded = 0,
  kFailed = 1,   // the library raised an error: "Error NUMBER (SOURCE): DESCRIPTION"
  kMisused = 2,  // a bad command line or argument literal: a message and the usage
};

// Runs the command in `words` (the command line without the program name); none, or
// "repl", starts the interactive session on standard input (immediate.h).
int Run(const std::vector<std::string>& words, std::ostream& out, std::ostream& err);

}  // namespace tsrt
