#include "agent/reports/TraceReport.h"

#include <nlohmann/json.hpp>
#include <ostream>

#include "agent/language/PrintableText.h"
#include "agent/language/TimeText.h"

namespace ZelAgent {
namespace {

constexpr auto noLimit = std::string_view::npos;

OrderedJson recordJson(const Blinklog::Record& record) {
  return {{"sequence", record.sequence}, {"time", timeText(record.time)},
          {"level", record.site->level}, {"path", record.site->path},
          {"line", record.site->line},   {"function", record.site->function},
          {"text", record.text}};
}

}  // namespace

void writeTrace(std::ostream& out, std::span<const Blinklog::Record> records) {
  for (const Blinklog::Record& record : records) {
    out << record.sequence << ' ' << timeText(record.time) << " level " << record.site->level
        << " line " << record.site->line << ' ' << printable(record.site->function, noLimit) << ": "
        << printable(record.text, noLimit) << '\n';
  }
}

OrderedJson traceJson(std::span<const Blinklog::Record> records) {
  OrderedJson json = OrderedJson::array();
  for (const Blinklog::Record& record : records)
    json.push_back(recordJson(record));
  return json;
}

void writeJsonTrace(std::ostream& out, std::span<const Blinklog::Record> records) {
  const char* separator = "";
  out << '[';
  for (const Blinklog::Record& record : records) {
    out << separator << oneLine(recordJson(record));
    separator = ",";
  }
  out << ']';
}

}  // namespace ZelAgent
