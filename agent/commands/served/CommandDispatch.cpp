#include "agent/commands/served/CommandDispatch.h"

#include <algorithm>
#include <nlohmann/json.hpp>
#include <optional>
#include <set>
#include <vector>

#include "agent/commands/served/CommandTable.h"
#include "agent/commands/served/FormWalk.h"
#include "agent/language/Words.h"

namespace ZelAgent {
namespace {

using Words = std::vector<std::string>;

bool beginsWith(const Words& name, const Words& words) {
  return name.size() >= words.size() && std::equal(words.begin(), words.end(), name.begin());
}

// Finds the row with the longest name that the line begins with.
class RowSearch final {
 public:
  explicit RowSearch(EventLine& line) : line_(line) {}

  // Returns the row and takes its name off the line. Returns null for a blank line.
  const CommandRow* find() {
    while (takeWord()) {
    }
    const CommandRow* const found = rowOf(words_);
    const std::set<std::string> more = nextWords();
    if (found == nullptr && words_.empty() && !pending_) return nullptr;
    if (found == nullptr || (pending_ && !more.empty())) fail(found != nullptr, more);
    return found;
  }

 private:
  // Takes the next word if the words so far and this word begin the name of a row.
  bool takeWord() {
    EventLine ahead = line_;
    pending_ = ahead.next();
    if (!pending_ || pending_->isQuoted || !nextWords().contains(pending_->text)) return false;
    words_.push_back(pending_->text);
    line_ = ahead;
    return true;
  }

  [[nodiscard]] std::set<std::string> nextWords() const {
    std::set<std::string> next;
    for (const CommandForm& form : commandForms()) {
      if (form.name().size() > words_.size() && beginsWith(form.name(), words_)) {
        next.insert(form.name()[words_.size()]);
      }
    }
    return next;
  }

  static const CommandRow* rowOf(const Words& name) {
    const auto& forms = commandForms();
    const auto found = std::find_if(forms.begin(), forms.end(),
                                    [&](const CommandForm& form) { return form.name() == name; });
    if (found == forms.end()) return nullptr;
    return &commandTable()[static_cast<std::size_t>(found - forms.begin())];
  }

  [[noreturn]] void fail(bool isComplete, const std::set<std::string>& next) const {
    const std::string where =
        words_.empty() ? "a command must begin with" : joined(words_, " ") + " must be followed by";
    Words allowed(next.begin(), next.end());
    if (isComplete) allowed.emplace_back("the end of the line");
    line_.fail(where + ' ' + alternatives(allowed), pending_);
  }

  EventLine& line_;
  Words words_;
  std::optional<Word> pending_;  // the word after words_
};

// The output after all slices of the changes that it waits for.
CommandOutput waitedFor(ServedAgent& served, const AwaitedOutput& awaited) {
  while (true) {
    if (auto output = awaited()) return std::move(*output);
    served.makeSlice();
  }
}

}  // namespace

CommandResult startCommand(ServedAgent& served, std::string_view text, bool asJson,
                           std::size_t columns) {
  const std::string whole = withWholeWords(text);
  EventLine line(whole);
  const CommandRow* const row = RowSearch(line).find();
  if (row == nullptr) return CommandOutput(asJson ? CommandOutput(nullptr) : CommandOutput(""));
  line.formIs(row->form);
  if (!CommandForm(row->form).hasArguments()) line.needEnd();
  CommandResult result = row->run({{asJson, columns}, served, whole, line});
  if (auto* const pages = std::get_if<ReportPagesPtr>(&result)) (*pages)->columnsAre(columns);
  return result;
}

CommandOutput runCommand(ServedAgent& served, std::string_view text, bool asJson,
                         std::size_t columns) {
  CommandResult result = startCommand(served, text, asJson, columns);
  if (auto* const output = std::get_if<CommandOutput>(&result)) return std::move(*output);
  if (const auto* const awaited = std::get_if<AwaitedOutput>(&result))
    return waitedFor(served, *awaited);
  std::string whole = wholeText(*std::get<ReportPagesPtr>(result));
  return asJson ? CommandOutput::parse(whole) : CommandOutput(std::move(whole));
}

}  // namespace ZelAgent
