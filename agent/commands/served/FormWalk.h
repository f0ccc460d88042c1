#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "agent/commands/served/CommandTable.h"
#include "agent/language/Words.h"

namespace ZelAgent {

/// The forms of the command table that a line begins with, word by word.
///
/// A word may be the beginning of a keyword where only keywords can follow and only one of them
/// begins so. A quoted word is never shortened.
class FormWalk final {
 public:
  FormWalk();

  /// The keyword that the word stands for at this place, or the word itself. Throws an `EventError`
  /// if several keywords begin so.
  [[nodiscard]] std::string wholeWord(const Word& word) const;
  /// Advances past the word, which must be whole.
  void take(const std::string& word);
  /// Whether no form begins with the words that were taken.
  [[nodiscard]] bool isLost() const noexcept { return reached_.empty(); }

  /// The choices for the next word, each with the rows that have it. In the order of the rows.
  struct Choice {
    std::string text;
    std::vector<const CommandRow*> rows;
  };
  [[nodiscard]] std::vector<Choice> choices() const;
  /// The row whose form may end here. Null if there is none.
  [[nodiscard]] const CommandRow* ending() const;
  /// The words that were taken.
  [[nodiscard]] const std::vector<std::string>& words() const noexcept { return words_; }

 private:
  struct Reached {
    std::size_t row;
    CommandForm::Places places;
  };

  std::vector<Reached> reached_;
  std::vector<std::string> words_;
};

/// The line with whole keywords instead of shortened ones. What follows a word that no form has is
/// unchanged. Throws an `EventError` for a word that is short for several keywords.
[[nodiscard]] std::string withWholeWords(std::string_view line);

}  // namespace ZelAgent
