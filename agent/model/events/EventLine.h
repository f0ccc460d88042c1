#pragma once

#include <cstdint>
#include <initializer_list>
#include <limits>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

#include "Mox/CharRange.h"
#include "agent/language/Words.h"

namespace ZelAgent {

/// A line of words: an event, a command or a packet. Words are taken from the front, each once.
///
/// A wrong word is an `EventError` "FORM: WHAT must be EXPECTED, found 'WORD'". FORM is the last
/// one that was set.
class EventLine final {
 public:
  /// The line must outlive this.
  explicit EventLine(std::string_view line) : range_(line) {}

  /// Sets the form for messages, as far as it is known by now.
  void formIs(std::string form) { form_ = std::move(form); }

  /// The next word. Nothing at the end of the line.
  [[nodiscard]] std::optional<Word> next();
  /// The next word, which must be one of `allowed`. `what` names its place for messages.
  [[nodiscard]] std::string needOneOf(const std::string& what,
                                      std::initializer_list<std::string_view> allowed);
  [[nodiscard]] std::uint32_t needNumber(
      const std::string& what, std::uint32_t most = std::numeric_limits<std::uint32_t>::max());
  /// The VRF that the next word names. DEFAULT is the default VRF, which is called default.
  [[nodiscard]] std::string needVrf(const std::string& what);
  /// The interface that the next word names.
  [[nodiscard]] std::string needInterface(const std::string& what);
  void needEnd();

  /// The same for a word that was taken already.
  [[nodiscard]] std::uint32_t numberOf(const std::optional<Word>& word, const std::string& what,
                                       std::uint32_t most, const std::string& otherwise = {}) const;
  [[nodiscard]] std::string vrfOf(const std::optional<Word>& word, const std::string& what,
                                  const std::string& otherwise = {}) const;
  /// Throws "FORM: WHAT, found 'WORD'".
  [[noreturn]] void fail(const std::string& what, const std::optional<Word>& found) const;

 private:
  [[noreturn]] void fail(const std::string& what) const;

  Mox::CharRange range_;
  std::string form_;
};

}  // namespace ZelAgent
