#include "agent/control/commands/ShowTrace.h"

#include <vector>

#include "Blinklog/Ring.h"
#include "agent/config/PrintableText.h"

namespace ZelAgent {
namespace {

constexpr std::uint32_t usualNumber = 20;

std::uint32_t numberAskedFor(EventLine& arguments) {
  const std::optional<Word> word = arguments.next();
  if (!word) return usualNumber;
  const std::uint32_t number = arguments.numberOf(word, "N", UINT32_MAX, " or the end of the line");
  arguments.needEnd();
  return number;
}

std::vector<Blinklog::Record> lastRecords(std::size_t number) {
  std::vector<Blinklog::Record> records = Blinklog::ring().dump();
  if (number < records.size()) {
    records.erase(records.begin(), records.end() - static_cast<std::ptrdiff_t>(number));
  }
  return records;
}

void writeRecord(std::ostream& out, const Blinklog::Record& record) {
  out << record.sequence << " level " << record.site->level << " line " << record.site->line << ' '
      << record.site->function << ": " << printable(record.text, std::string_view::npos) << '\n';
}

OrderedJson recordJson(const Blinklog::Record& record) {
  return {{"sequence", record.sequence},       {"level", record.site->level},
          {"path", record.site->path},         {"line", record.site->line},
          {"function", record.site->function}, {"text", record.text}};
}

}  // namespace

CommandOutput showTrace(const CommandCall& call) {
  const auto records = lastRecords(numberAskedFor(call.arguments));
  return outputOf(
      call,
      [&](std::ostream& out) {
        for (const Blinklog::Record& record : records)
          writeRecord(out, record);
      },
      [&] {
        OrderedJson json = OrderedJson::array();
        for (const Blinklog::Record& record : records)
          json.push_back(recordJson(record));
        return json;
      });
}

}  // namespace ZelAgent
