// Renaming and removing entries, shared by the file and folder operations.
#pragma once

#include <string>

#include "fs_paths.h"

namespace tsruntime::fs_detail {

inline constexpr char kClassName[] = "clsZKFileSystem";

// Renames `path` within its folder to `new_name`, refusing a name that is taken: 58.
// A new name that is empty, "." or "..", or holds "/", is a bad file name (52); the
// same name is no change and no failure.
void RenameInFolder(const std::string& path, StringView new_name);

// Removes a folder tree without following links. Without `force` it first looks for a
// read-only entry and raises permission denied (70) before anything is removed.
void RemoveTree(const std::string& path, bool force);

}  // namespace tsruntime::fs_detail
