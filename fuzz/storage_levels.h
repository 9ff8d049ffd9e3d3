// The check the storage fuzz targets share: what a level read from any text writes a
// text that reads back True into as many entries.
#pragma once

#include <cstdlib>

#include "tsruntime/clsZKStorage.h"

namespace tsruntime::fuzz {

// Reads `text` into a new `Level` (its result may be False), writes what was read and
// aborts unless that text reads back True with the same count. Returns the first read.
template <class Level>
Ref<Level> ReadWriteRead(const String& text) {
  auto level = New<Level>();
  level->ToObject(text);
  bool failed = true;
  const String written = level->ToString(failed);
  auto again = New<Level>();
  if (failed || !again->ToObject(written) || again->Count() != level->Count()) std::abort();
  return level;
}

}  // namespace tsruntime::fuzz
