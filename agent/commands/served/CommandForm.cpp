#include "agent/commands/served/CommandForm.h"

#include <algorithm>
#include <sstream>

namespace ZelAgent {
namespace {

std::vector<std::string> splitAt(char separator, const std::string& text) {
  std::vector<std::string> parts;
  std::istringstream stream(text);
  for (std::string part; std::getline(stream, part, separator);)
    parts.push_back(part);
  return parts;
}

FormWord formWordOf(std::string text) {
  std::erase_if(text, [](char byte) { return byte == '[' || byte == ']'; });
  FormWord word;
  constexpr std::string_view dots = "...";
  const std::size_t end = text.find(dots);
  if (end != std::string::npos) {
    word.repeats = true;
    text.erase(end, dots.size());
  }
  word.choices = splitAt('|', text);
  return word;
}

bool mayBe(const FormWord& form, const std::string& word) {
  return std::any_of(form.choices.begin(), form.choices.end(), [&](const std::string& choice) {
    return choice == word || isPlaceholder(choice);
  });
}

}  // namespace

CommandForm::CommandForm(std::string_view form) {
  bool isName = true;
  for (const std::string& text : splitAt(' ', std::string(form))) {
    words_.push_back(formWordOf(text));
    isName =
        isName && words_.back().choices == std::vector<std::string>{text} && !isPlaceholder(text);
    if (isName) name_.push_back(text);
  }
}

std::vector<std::string> CommandForm::choicesAfter(const std::vector<std::string>& words) const {
  for (std::size_t i = 0; i < words.size(); ++i) {
    const FormWord* const form = wordAt(i);
    if (form == nullptr || !mayBe(*form, words[i])) return {};
  }
  const FormWord* const next = wordAt(words.size());
  return next == nullptr ? std::vector<std::string>() : next->choices;
}

const FormWord* CommandForm::wordAt(std::size_t index) const noexcept {
  if (index < words_.size()) return &words_[index];
  return words_.back().repeats ? &words_.back() : nullptr;
}

bool isPlaceholder(std::string_view choice) noexcept {
  return !choice.empty() && choice.front() >= 'A' && choice.front() <= 'Z';
}

}  // namespace ZelAgent
