// `tsrt` with no command, or `tsrt repl`: the interactive session (immediate_session.h).
//
// On a terminal it shows a prompt, edits lines, completes names with Tab and keeps the
// history in the user's data folder (history_file.h); Ctrl-D, `Exit` or `Quit` ends it.
// Piped input runs as a script instead: no prompt, no history, every line run in turn,
// so that the same text works typed and from a file.
#pragma once

#include <istream>
#include <ostream>

namespace tsrt {

// The session on standard input: interactive when it is a terminal, else a script.
int RunImmediate(std::ostream& out, std::ostream& err);

// The lines of `in` run as a script. Status 0, or 1 (kFailed) when a statement failed
// and `On Error Resume Next` was not in force, or a line could not be read; the lines
// after a failure still run, as they would have been typed.
int RunImmediateScript(std::istream& in, std::ostream& out, std::ostream& err);

}  // namespace tsrt
