#include "agent/commands/served/FormWalk.h"

#include <algorithm>
#include <optional>
#include <set>

#include "Mox/CharRange.h"
#include "Mox/Exceptions.h"
#include "Mox/QuotedString.h"
#include "agent/language/Errors.h"

namespace ZelAgent {
namespace {

[[noreturn]] void failAmbiguous(const std::vector<std::string>& before, const std::string& word,
                                const std::set<std::string>& keywords) {
  const std::string where = before.empty() ? "" : joined(before, " ") + ": ";
  throw EventError(where + Mox::quoted(word) + " may be " +
                   alternatives({keywords.begin(), keywords.end()}) + "; type more of the word");
}

// The next word. Nothing at the end of the line, and before a word that is quoted badly.
std::optional<Word> nextWord(Mox::CharRange& line) {
  try {
    return takeWord(line);
  } catch (const Mox::RangeException&) {
    return std::nullopt;
  }
}

}  // namespace

FormWalk::FormWalk() {
  for (std::size_t row = 0; row < commandForms().size(); ++row)
    reached_.push_back({row, commandForms()[row].start()});
}

std::string FormWalk::wholeWord(const Word& word) const {
  if (word.isQuoted) return word.text;
  std::set<std::string> keywords;
  for (const Reached& reached : reached_) {
    for (const std::string& choice : commandForms()[reached.row].choicesAt(reached.places)) {
      if (choice == word.text || isPlaceholder(choice)) return word.text;
      if (choice.starts_with(word.text)) keywords.insert(choice);
    }
  }
  if (keywords.size() > 1) failAmbiguous(words_, word.text, keywords);
  return keywords.empty() ? word.text : *keywords.begin();
}

void FormWalk::take(const std::string& word) {
  words_.push_back(word);
  for (Reached& reached : reached_)
    reached.places = commandForms()[reached.row].after(reached.places, word);
  std::erase_if(reached_, [](const Reached& reached) { return reached.places.empty(); });
}

std::vector<FormWalk::Choice> FormWalk::choices() const {
  std::vector<Choice> choices;
  for (const Reached& reached : reached_) {
    const CommandRow* const row = &commandTable()[reached.row];
    for (const std::string& text : commandForms()[reached.row].choicesAt(reached.places)) {
      auto known = std::find_if(choices.begin(), choices.end(),
                                [&](const Choice& choice) { return choice.text == text; });
      if (known == choices.end()) known = choices.insert(choices.end(), {text, {}});
      known->rows.push_back(row);
    }
  }
  return choices;
}

const CommandRow* FormWalk::ending() const {
  for (const Reached& reached : reached_) {
    if (commandForms()[reached.row].mayEndAt(reached.places)) return &commandTable()[reached.row];
  }
  return nullptr;
}

std::string withWholeWords(std::string_view line) {
  std::string whole;
  std::size_t copied = 0;
  FormWalk walk;
  Mox::CharRange range(line);
  while (!walk.isLost()) {
    const std::optional<Word> word = nextWord(range);
    if (!word) break;
    const std::string keyword = walk.wholeWord(*word);
    if (keyword != word->text) {
      const std::size_t end = line.size() - range.rest().size();
      whole += line.substr(copied, end - word->text.size() - copied);
      whole += keyword;
      copied = end;
    }
    walk.take(keyword);
  }
  return whole + std::string(line.substr(copied));
}

}  // namespace ZelAgent
