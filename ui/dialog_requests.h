// What clsZKCDL asks of the desktop's dialogs, and what comes back. The class keeps its
// property rules on this side; the functions below only show dialogs (qt_dialogs.cpp).
#pragma once

#include <cstdint>
#include <optional>
#include <utility>
#include <vector>

#include "tsruntime/automation/string.h"

namespace tsruntime::ui_detail {

// How a dialog ended.
enum class DialogEnd { kConfirmed, kCancelled, kUnavailable };

// One entry of a file dialog's filter list: a description and its patterns ("*.txt;*.md").
struct FileFilterEntry {
  String description;
  String patterns;
};

// The stored filter form (entries and patterns NUL-separated) as entries. The list ends
// at the first empty piece, as the platform reads a double NUL; a description without a
// pattern is dropped.
std::vector<FileFilterEntry> ParseFileFilter(StringView stored);

struct FileDialogRequest {
  bool save = false;
  int32_t owner = 0;
  std::vector<FileFilterEntry> filters;
  int filter_index = 0;  // from 1; anything out of range selects the first
  String initial_name;
  String initial_folder;
  String title;
  int32_t flags = 0;
  String default_ext;
};
struct FileDialogOutcome {
  DialogEnd end = DialogEnd::kCancelled;
  String chosen;          // full name
  int filter_index = 0;   // from 1, or the requested one when there are no filters
};
FileDialogOutcome RunFileDialog(const FileDialogRequest& request);

struct ColorDialogRequest {
  int32_t owner = 0;
  int32_t initial = 0;  // RGB, red in the low byte
  std::vector<int32_t> custom;  // sixteen
  int32_t flags = 0;
};
struct ColorDialogOutcome {
  DialogEnd end = DialogEnd::kCancelled;
  int32_t chosen = 0;
  std::vector<int32_t> custom;
};
ColorDialogOutcome RunColorDialog(const ColorDialogRequest& request);

struct FontChoice {
  String name;
  int32_t size = 0;  // points; 0 for the desktop's default
  bool bold = false;
  bool italic = false;
  bool strikeout = false;
  bool underline = false;
};
struct FontDialogOutcome {
  DialogEnd end = DialogEnd::kCancelled;
  FontChoice chosen;
};
FontDialogOutcome RunFontDialog(int32_t owner, const FontChoice& initial);

struct FolderDialogOutcome {
  DialogEnd end = DialogEnd::kCancelled;
  String chosen;
};
FolderDialogOutcome RunFolderDialog(int32_t owner, const String& prompt, const String& start);

// Opens a file with the desktop's handler; false when nothing could open it.
bool OpenWithDesktop(const String& path);

}  // namespace tsruntime::ui_detail
