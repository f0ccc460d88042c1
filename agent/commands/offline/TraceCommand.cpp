#include "agent/commands/offline/OfflineCommands.h"

#include <chrono>
#include <nlohmann/json.hpp>
#include <ostream>
#include <utility>

#include "Blinklog/Ring.h"
#include "Blinklog/RingImage.h"
#include "agent/commands/offline/TruncatedRing.h"
#include "agent/language/Limits.h"
#include "agent/language/PrintableText.h"
#include "agent/language/TimeText.h"
#include "agent/reports/TraceReport.h"

namespace ZelAgent {
namespace {

ExitStatus fail(std::ostream& err, const Blinklog::RingFileError& error, ExitStatus status) {
  return reportError(err,
                     printable(error.path(), Limits::shownTextBytes) + ": " +
                         printable(error.problem(), Limits::shownTextBytes),
                     status);
}

std::string madeAtText(const Blinklog::RingImage& image) {
  return secondText(std::chrono::sys_seconds(std::chrono::seconds(image.madeAt())));
}

void writeText(std::ostream& out, const Blinklog::RingImage& image) {
  out << "process " << image.process() << " since " << madeAtText(image) << ", "
      << image.records().size() << " messages\n";
  writeTrace(out, image.records());
}

void writeJson(std::ostream& out, const Blinklog::RingImage& image) {
  out << R"({"process":)" << image.process() << R"(,"madeAt":")" << madeAtText(image)
      << R"(","messages":)";
  writeJsonTrace(out, image.records());
  out << "}\n";
}

}  // namespace

ExitStatus showTraceFile(const TraceOptions& options, std::ostream& out, std::ostream& err) {
  try {
    const Blinklog::RingImage image(options.file);
    if (options.json) {
      writeJson(out, image);
    } else {
      writeText(out, image);
    }
  } catch (const Blinklog::RingFileError& error) {
    return fail(err, error, ExitStatus::badInput);
  }
  return finishOutput(out, err);
}

ExitStatus keepTraceIn(const std::string& file, std::ostream& err, LineStart start) {
  try {
    Blinklog::ring().fileIs(file);
    surviveTruncationOf(file, std::move(start));
    return ExitStatus::success;
  } catch (const Blinklog::RingFileError& error) {
    return fail(err, error, ExitStatus::failure);
  }
}

}  // namespace ZelAgent
