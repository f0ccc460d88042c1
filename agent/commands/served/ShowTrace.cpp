#include "agent/commands/served/ShowTrace.h"

#include <vector>

#include "Blinklog/Ring.h"
#include "agent/reports/TraceReport.h"

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

}  // namespace

CommandOutput showTrace(const CommandCall& call) {
  const auto records = lastRecords(numberAskedFor(call.arguments));
  return outputOf(
      call, [&](std::ostream& out) { writeTrace(out, records); },
      [&] { return traceJson(records); });
}

}  // namespace ZelAgent
