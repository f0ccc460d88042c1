// Why: event files are read word by word and the agent shows names in them again, so one place says
// how a word is written.
// Always: what `toWord` writes, `takeWord` reads back, byte for byte; a word that stands without
// quotes is printable and has no blanks, quotes or backslashes in it and no '#' in front.
#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "Mox/CharRange.h"

namespace ZelAgent {

struct Word {
  std::string text;
  bool isQuoted = false;
};

// The text as a word: as it stands where that can be read back, otherwise in the platform's string
// form ("'a b'").
[[nodiscard]] std::string toWord(std::string_view text);

// The next word of the line, blanks before it skipped; nothing at its end or before a comment.
// Throws a `Mox::RangeException` on a word that must be quoted, or is badly.
[[nodiscard]] std::optional<Word> takeWord(Mox::CharRange& line);

}  // namespace ZelAgent
