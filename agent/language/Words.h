#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "Mox/CharRange.h"

namespace ZelAgent {

/// A word of an event, of a command or of a name in a report.
///
/// `takeWord` reads back, byte for byte, what `toWord` writes. A word without quotes is printable.
/// It has no blanks, quotes or backslashes and does not begin with '#'.
struct Word {
  std::string text;
  bool isQuoted = false;
};

/// The text as a word: unchanged if `takeWord` can read it back, otherwise in the platform's string
/// form ("'a b'").
[[nodiscard]] std::string toWord(std::string_view text);

/// Takes the next word off the line, after any blanks. Returns nothing at the end of the line and
/// before a comment.
///
/// Throws a `Mox::RangeException` for a word that must be quoted and is not, or is quoted badly.
[[nodiscard]] std::optional<Word> takeWord(Mox::CharRange& line);

/// Whether the line has nothing but blanks and tabs.
[[nodiscard]] bool isBlankLine(std::string_view line);

/// The number if all of the text is one, without a sign, that fits in 32 bits.
[[nodiscard]] std::optional<std::uint32_t> parseNumber(std::string_view text);

/// The words with `separator` between them.
[[nodiscard]] std::string joined(const std::vector<std::string>& words, std::string_view separator);

/// The words as a choice in a message: "a, b or c".
[[nodiscard]] std::string alternatives(const std::vector<std::string>& words);

}  // namespace ZelAgent
