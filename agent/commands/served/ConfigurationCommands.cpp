#include "agent/commands/served/ConfigurationCommands.h"

#include "agent/commands/served/ShowActions.h"
#include "agent/commands/served/Warnings.h"
#include "agent/language/PrintableText.h"

namespace ZelAgent {
namespace {

const char* sourceText(ConfigurationSource source) {
  switch (source) {
    case ConfigurationSource::start:
      return "start";
    case ConfigurationSource::reload:
      return "reload";
    case ConfigurationSource::event:
      break;
  }
  return "config";
}

void writeRecord(std::ostream& out, const ConfigurationRecord& record) {
  out << "file         " << printable(record.file, 1000) << '\n'
      << "in force     " << printable(record.inForce, 1000) << ", by " << sourceText(record.source)
      << '\n'
      << "reloads      " << record.reloadsApplied << " applied, " << record.reloadsRefused
      << " refused\n";
  if (record.refusal) out << "last reload  refused: " << *record.refusal << '\n';
}

OrderedJson recordJson(const ConfigurationRecord& record) {
  return {{"file", record.file},
          {"inForce", {{"file", record.inForce}, {"by", sourceText(record.source)}}},
          {"reloads",
           {{"applied", record.reloadsApplied},
            {"refused", record.reloadsRefused},
            {"lastRefusal", record.refusal ? OrderedJson(*record.refusal) : OrderedJson()}}}};
}

}  // namespace

CommandOutput showConfig(const CommandCall& call) {
  const ConfigurationRecord& record = call.served.record();
  return outputOf(
      call, [&](std::ostream& out) { writeRecord(out, record); },
      [&] { return recordJson(record); });
}

CommandOutput reload(const CommandCall& call) {
  const std::vector<std::string> warnings = call.served.reload();
  return withWarnings(call, warnings, showActions(call));
}

}  // namespace ZelAgent
