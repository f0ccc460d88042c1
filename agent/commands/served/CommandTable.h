#pragma once

#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "agent/commands/served/CommandCall.h"

namespace ZelAgent {

struct FormWord {
  std::vector<std::string> choices;
  bool repeats = false;
};

/// How a command is written. The form serves to find the command, to help with it and to complete
/// it.
///
/// A form is words with one blank between them. A word in lower case stands for itself, one in
/// upper case for what it names. "a|b" is either, "..." is one or more, and "[...]" is optional.
class CommandForm final {
 public:
  explicit CommandForm(std::string_view form);

  /// The words in front that stand for themselves: the command's name.
  [[nodiscard]] const std::vector<std::string>& name() const noexcept { return name_; }
  [[nodiscard]] bool hasArguments() const noexcept { return name_.size() < words_.size(); }

  /// What may follow the words if they are a beginning of the form. Nothing otherwise.
  [[nodiscard]] std::vector<std::string> choicesAfter(const std::vector<std::string>& words) const;

 private:
  [[nodiscard]] const FormWord* wordAt(std::size_t index) const noexcept;

  std::vector<FormWord> words_;
  std::vector<std::string> name_;
};

/// Whether a choice stands for something else.
[[nodiscard]] bool isPlaceholder(std::string_view choice) noexcept;

/// A row makes a command, its help and its completion. Each form is in one row. Rows with the same
/// name have the same command, which distinguishes their forms itself.
struct CommandRow {
  const char* form;
  const char* help;
  Command run;
};

[[nodiscard]] std::span<const CommandRow> commandTable() noexcept;

/// The forms of the rows, in the order of the rows.
[[nodiscard]] const std::vector<CommandForm>& commandForms();

}  // namespace ZelAgent
