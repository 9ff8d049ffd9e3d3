// The fixed-width decimal fields of the length-prefixed texts: the packed-array text of
// clsZKString and the storage text, which shares its chunk layout. Internal to the
// library.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "tsruntime/automation/string.h"

namespace tsruntime::packed {

// Width of a chunk's length field.
inline constexpr size_t kChunkHeader = 9;

// Writes `value` into the `width` characters at `at`, zero-padded on the left, a
// negative value with its sign first ("-001"). A value with more characters than fit
// keeps its first `width`, as a fixed-width field filled by position does.
void WriteField(char16_t* at, int64_t value, size_t width);

// The `width` characters at `p` of `data` (fewer where the text ends) read as the host
// runtime converts text to a Long: plain digits directly, anything else through the full
// conversion, which raises type mismatch (13) for text that is not a number, an empty
// field included, and overflow (6) beyond a Long.
int64_t ReadField(StringView data, size_t p, size_t width);

// The contents of the chunks of a non-empty packed text, in order, as views into
// `data`. Reading goes on while the 1-based position is below the length, so a text of
// one character holds one empty chunk. A chunk that runs past the end is taken short.
// Raises what reading the host's way raises: type mismatch (13) for a length field that
// is not a number, invalid call (5) for a length below 9, overflow (6) for a position
// past a Long.
std::vector<StringView> SplitChunks(StringView data);

// The same chunks one at a time, without collecting them.
class ChunkReader {
 public:
  explicit ChunkReader(StringView data) : data_(data) {}
  // Sets `chunk` to the next chunk and returns true, or returns false after the last.
  // Raises as SplitChunks does.
  bool Next(StringView& chunk);

 private:
  StringView data_;
  int64_t p_ = 1;  // 1-based position of the next length field
  bool any_ = false;
};

}  // namespace tsruntime::packed
