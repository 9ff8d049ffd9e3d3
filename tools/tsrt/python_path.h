// Where the Python package `tsruntime` that belongs to this tsrt is, so that a user whose
// python3 is not the system interpreter (a venv, pyenv) can add it to that interpreter.
#pragma once

#include <optional>
#include <string>

namespace tsrt {

// The folder that holds the package folder `tsruntime`: the installed one relative to
// this program, else the build tree's; nothing when neither is there.
std::optional<std::string> PythonPackageFolder();

}  // namespace tsrt
