// Why: what the daemon understands stands in one place: a row makes a command, its help and its
// completion.
// Always: a form of a command is in one row; rows with the same name have the same command, which
// tells their forms apart itself.
#pragma once

#include <span>
#include <vector>

#include "agent/commands/served/CommandCall.h"
#include "agent/commands/served/CommandForm.h"

namespace ZelAgent {

struct CommandRow {
  const char* form;  // as CommandForm.h tells
  const char* help;
  Command run;
};

[[nodiscard]] std::span<const CommandRow> commandTable() noexcept;

// The forms of the rows, read; in the order of the rows.
[[nodiscard]] const std::vector<CommandForm>& commandForms();

}  // namespace ZelAgent
