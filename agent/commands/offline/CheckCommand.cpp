#include <unistd.h>

#include <algorithm>
#include <nlohmann/json.hpp>
#include <optional>
#include <ostream>

#include "agent/commands/offline/OfflineCommands.h"
#include "agent/commands/offline/YangModels.h"
#include "agent/config/JsonText.h"
#include "agent/config/OpenConfigReader.h"
#include "agent/language/Errors.h"
#include "agent/language/Limits.h"
#include "agent/language/PrintableText.h"
#include "agent/language/Progress.h"
#include "agent/language/TextFile.h"

namespace ZelAgent {
namespace {

// Prints the warnings and errors of the reader.
ExitStatus checkByReader(const std::string& file, Leniency leniency, std::ostream& err) {
  Progress progress(Progress::terminal(STDERR_FILENO));
  try {
    reportWarnings(err, readOpenConfigFile(file, leniency, progress).warnings);
    return ExitStatus::success;
  } catch (const ConfigError& error) {
    reportWarnings(err, error.warnings());
    return reportError(err, error.what());
  }
}

// None if the file is not JSON. The reader has reported that.
std::optional<nlohmann::json> documentIn(const std::string& file) {
  try {
    return parseJson(readTextFile(file, "a readable JSON file"), file);
  } catch (const ConfigError&) {
    return std::nullopt;
  }
}

ExitStatus checkByModels(const std::string& file, const YangModels& models, std::ostream& err) {
  const auto document = documentIn(file);
  if (!document) return ExitStatus::badInput;
  ExitStatus status = ExitStatus::success;
  for (const std::string& finding : models.findingsIn(file, *document))
    status = reportError(err, finding);
  return status;
}

class Check final {
 public:
  Check(const CheckOptions& options, std::ostream& out, std::ostream& err)
      : options_(options), out_(out), err_(err) {}

  // Throws a `ConfigError` if the models cannot be used.
  [[nodiscard]] ExitStatus checkAll() const {
    std::optional<YangModels> models;
    if (options_.yangFolder) models.emplace(*options_.yangFolder);
    ExitStatus status = ExitStatus::success;
    for (const std::string& file : options_.configurations)
      status = std::max(status, checkFile(file, models));
    return status;
  }

 private:
  [[nodiscard]] ExitStatus checkFile(const std::string& file,
                                     const std::optional<YangModels>& models) const {
    out_.flush();
    ExitStatus status = checkByReader(file, options_.leniency, err_);
    if (models) status = std::max(status, checkByModels(file, *models, err_));
    if (status == ExitStatus::success) {
      out_ << printable(file, Limits::shownTextBytes) << ": right\n";
    }
    return status;
  }

  const CheckOptions& options_;
  std::ostream& out_;
  std::ostream& err_;
};

}  // namespace

ExitStatus checkConfigurations(const CheckOptions& options, std::ostream& out, std::ostream& err) {
  ExitStatus status = ExitStatus::success;
  try {
    status = Check(options, out, err).checkAll();
  } catch (const ConfigError& error) {
    out.flush();
    status = reportError(err, error.what());
  }
  return std::max(status, finishOutput(out, err));
}

}  // namespace ZelAgent
