#pragma once

#include <iosfwd>
#include <string>
#include <string_view>

#include "agent/language/Errors.h"

namespace ZelAgent {

/// The bytes of an answer that arrive one part after another.
class AnswerSource {
 public:
  /// The next bytes, at least one. Throws a `SocketError` at the end and when it waits too long.
  [[nodiscard]] virtual std::string_view next() = 0;
  /// The error for an answer that is wrong.
  [[nodiscard]] virtual SocketError errorOf(const std::string& what) const = 0;

 protected:
  ~AnswerSource() = default;
};

/// What a daemon sends before the output of a successful command.
inline constexpr std::string_view answerBeginning = R"({"status":0,"output":)";

// Both functions print the output of a successful answer while it arrives, and stop when it cannot
// be printed. `begun` has the bytes after `answerBeginning` that were read already. No more than
// `Limits::answerBytes` bytes of a line of text, or of a name or value of JSON, are kept.
// Unprintable characters are printed as escapes. What was printed before an error stays.

/// Prints a text: `begun` begins with a quotation mark.
void printTextAnswer(std::string begun, AnswerSource& source, std::ostream& out);
/// Prints JSON on one line: `begun` begins with '[' or '{'.
void printJsonAnswer(std::string begun, AnswerSource& source, std::ostream& out);

}  // namespace ZelAgent
