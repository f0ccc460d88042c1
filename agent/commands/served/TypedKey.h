#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "Mox/AnyValue.h"

namespace ZelAgent {

/// How a typed key fits a key of the library's objects.
enum class KeyFit : std::uint8_t {
  none,
  vrf,    // the key is an action, and its VRF was typed
  whole,  // the key itself was typed
};

/// A key as a person types it: a name with or without quotes, a string form, or an action as
/// reports print it ("actionVrf red"). The VRF of an action fits every action into the VRF.
class TypedKey final {
 public:
  /// `text` is a word without its quotes, or the rest of a line of several words.
  explicit TypedKey(std::string text);

  [[nodiscard]] const std::string& text() const noexcept { return text_; }
  [[nodiscard]] KeyFit fit(const Mox::AnyValue& key) const;

 private:
  std::string text_;
  std::vector<std::string> words_;  // none if the text is not a line of words
};

/// The words by which a person types the key. An action has the words of its report. Any other key
/// has one word.
[[nodiscard]] std::vector<std::string> wordsOfKey(const Mox::AnyValue& key);

/// The VRF of an action, as a word. Nothing for any other key.
[[nodiscard]] std::optional<std::string> vrfOfKey(const Mox::AnyValue& key);

}  // namespace ZelAgent
