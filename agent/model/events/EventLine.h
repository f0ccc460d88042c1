// Why: every kind of event asks its line for words, and complains of them in the same way.
// Always: a word is consumed once; a wrong one is an EventError "FORM: WHAT must be EXPECTED, found
// 'WORD'" in which FORM is the last one that was named.
#pragma once

#include <cstdint>
#include <initializer_list>
#include <limits>
#include <optional>
#include <string>
#include <string_view>

#include "Mox/CharRange.h"
#include "agent/language/Words.h"

namespace ZelAgent {

class EventLine final {
 public:
  // The line outlives this.
  explicit EventLine(std::string_view line) : range_(line) {}

  // How the event is written, as far as that is known by now.
  void formIs(std::string form) { form_ = std::move(form); }

  // The next word; nothing at the end of the line.
  [[nodiscard]] std::optional<Word> next();
  // The next word as one of `allowed`. `what` says where in the event it stands.
  [[nodiscard]] std::string needOneOf(const std::string& what,
                                      std::initializer_list<std::string_view> allowed);
  [[nodiscard]] std::uint32_t needNumber(
      const std::string& what, std::uint32_t most = std::numeric_limits<std::uint32_t>::max());
  // The system's name of the VRF that the next word names.
  [[nodiscard]] std::string needVrf(const std::string& what);
  void needEnd();

  // The same for a word that was taken already.
  [[nodiscard]] std::uint32_t numberOf(const std::optional<Word>& word, const std::string& what,
                                       std::uint32_t most, const std::string& otherwise = {}) const;
  [[nodiscard]] std::string vrfOf(const std::optional<Word>& word, const std::string& what,
                                  const std::string& otherwise = {}) const;

  // "FORM: WHAT, found 'WORD'"
  [[noreturn]] void fail(const std::string& what, const std::optional<Word>& found) const;

 private:
  [[noreturn]] void fail(const std::string& what) const;

  Mox::CharRange range_;
  std::string form_;
};

}  // namespace ZelAgent
