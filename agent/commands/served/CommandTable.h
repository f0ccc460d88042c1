#pragma once

#include <cstddef>
#include <set>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "agent/commands/served/CommandCall.h"

namespace ZelAgent {

struct FormWord {
  std::vector<std::string> choices;
  bool repeats = false;
  std::size_t optionalWords = 0;  // that may be left out from here; 0 for none
};

/// The syntax of a command. It is used to find the command, to print help and to complete lines.
///
/// A form is words with one blank between them. A word in lower case is a keyword. A word in upper
/// case is a placeholder for a value. "a|b" is either, "..." is one or more, and "[...]" is
/// optional; optional words may be left out, but are completed in the order of the form.
class CommandForm final {
 public:
  explicit CommandForm(std::string_view form);

  /// The keywords at the beginning: the name of the command.
  [[nodiscard]] const std::vector<std::string>& name() const noexcept { return name_; }
  [[nodiscard]] bool hasArguments() const noexcept { return name_.size() < words_.size(); }

  /// The choices for the word after `words`. None if the form does not begin with `words`.
  [[nodiscard]] std::vector<std::string> choicesAfter(const std::vector<std::string>& words) const;

  /// Places in the form: before a word, or at its end. Several, since words may be left out.
  using Places = std::set<std::size_t>;
  [[nodiscard]] Places start() const { return withSkipped({0}); }
  [[nodiscard]] Places after(const Places& places, const std::string& word) const;
  [[nodiscard]] std::vector<std::string> choicesAt(const Places& places) const;
  [[nodiscard]] bool mayEndAt(const Places& places) const { return places.contains(words_.size()); }

 private:
  [[nodiscard]] Places withSkipped(Places places) const;

  std::vector<FormWord> words_;
  std::vector<std::string> name_;
};

/// Whether a choice is a placeholder for a value.
[[nodiscard]] bool isPlaceholder(std::string_view choice) noexcept;

/// A row defines a command, its help and its completion. Each form is in one row. Rows with the
/// same name have the same command, which distinguishes the forms itself.
struct CommandRow {
  const char* form;
  const char* help;
  Command run;
};

[[nodiscard]] std::span<const CommandRow> commandTable() noexcept;

/// The help of a keyword that several rows share. Empty if it has none.
[[nodiscard]] std::string_view keywordHelp(std::string_view keyword) noexcept;

/// The forms of the rows, in the order of the rows.
[[nodiscard]] const std::vector<CommandForm>& commandForms();

}  // namespace ZelAgent
