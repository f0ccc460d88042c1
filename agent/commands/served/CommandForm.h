// Why: how a command is written is told once, and serves to find it, to help with it and to
// complete it.
// Always: a form is words with one blank between them. A word in lower case stands for itself, one
// in upper case for what it names; "a|b" is either; "..." is one or more; "[...]" may be left out.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace ZelAgent {

struct FormWord {
  std::vector<std::string> choices;
  bool repeats = false;
};

class CommandForm final {
 public:
  explicit CommandForm(std::string_view form);

  // The words in front that stand for themselves: the command's name.
  [[nodiscard]] const std::vector<std::string>& name() const noexcept { return name_; }
  [[nodiscard]] bool hasArguments() const noexcept { return name_.size() < words_.size(); }

  // What may follow the words, which are one after the other those of a beginning of the form;
  // nothing where they are not.
  [[nodiscard]] std::vector<std::string> choicesAfter(const std::vector<std::string>& words) const;

 private:
  [[nodiscard]] const FormWord* wordAt(std::size_t index) const noexcept;

  std::vector<FormWord> words_;
  std::vector<std::string> name_;
};

// Whether a choice stands for something else.
[[nodiscard]] bool isPlaceholder(std::string_view choice) noexcept;

}  // namespace ZelAgent
