#include "agent/commands/served/HelpCommands.h"

#include <algorithm>
#include <string_view>
#include <vector>

#include "agent/commands/served/CommandTable.h"
#include "agent/commands/served/Completion.h"

namespace ZelAgent {
namespace {

std::string wordsOf(EventLine& line) {
  std::vector<std::string> words;
  while (const auto word = line.next())
    words.push_back(word->text);
  return joined(words, " ");
}

std::vector<CommandRow> rowsBeginningWith(const std::string& words) {
  std::vector<CommandRow> rows;
  for (const CommandRow& row : commandTable()) {
    if (std::string_view(row.form).starts_with(words)) rows.push_back(row);
  }
  return rows;
}

void writeRows(std::ostream& out, const std::vector<CommandRow>& rows) {
  std::size_t width = 0;
  for (const CommandRow& row : rows)
    width = std::max(width, std::string_view(row.form).size());
  for (const CommandRow& row : rows) {
    out << row.form << std::string(width - std::string_view(row.form).size() + 2, ' ') << row.help
        << '\n';
  }
}

OrderedJson rowsJson(const std::vector<CommandRow>& rows) {
  OrderedJson json = OrderedJson::array();
  for (const CommandRow& row : rows)
    json.push_back({{"form", row.form}, {"help", row.help}});
  return json;
}

std::string neededLine(EventLine& arguments) {
  const std::optional<Word> line = arguments.next();
  if (!line) arguments.fail("LINE must be a line, quoted as one word", line);
  arguments.needEnd();
  return line->text;
}

}  // namespace

CommandOutput help(const CommandCall& call) {
  const std::string words = wordsOf(call.arguments);
  const std::vector<CommandRow> rows = rowsBeginningWith(words);
  if (rows.empty()) {
    call.arguments.fail("WORD... must be the beginning of a command", Word{words, false});
  }
  return outputOf(
      call, [&](std::ostream& out) { writeRows(out, rows); }, [&] { return rowsJson(rows); });
}

CommandOutput complete(const CommandCall& call) {
  const auto completions = completionsOf(neededLine(call.arguments), call.served.agent());
  return outputOf(
      call,
      [&](std::ostream& out) {
        for (const std::string& completion : completions)
          out << completion << '\n';
      },
      [&] { return OrderedJson(completions); });
}

}  // namespace ZelAgent
