#include "agent/serve/daemon/ReloadReport.h"

#include <algorithm>
#include <exception>
#include <iterator>
#include <new>

#include "Duolog/OutOfMemory.h"
#include "agent/language/Errors.h"
#include "agent/language/ExitStatus.h"
#include "agent/language/Limits.h"
#include "agent/language/PrintableText.h"

namespace ZelAgent {

std::vector<std::string> reportReload(const std::string& file,
                                      const std::function<std::vector<std::string>()>& reload) {
  try {
    std::vector<std::string> lines = warningLines(reload());
    lines.push_back(printable(file, Limits::shownTextBytes) + " applied");
    return lines;
  } catch (const ConfigError& error) {
    std::vector<std::string> lines = errorLines(error.what());
    lines.back() += "; the configuration in force is unchanged";
    return lines;
  } catch (const std::bad_alloc&) {
    Duolog::outOfMemory();
  } catch (const std::exception& error) {
    return {"error: the reload failed: " + printable(error.what(), Limits::shownTextBytes)};
  }
}

std::vector<std::string> warningLines(const std::vector<std::string>& warnings) {
  std::vector<std::string> lines;
  std::transform(warnings.begin(), warnings.end(), std::back_inserter(lines),
                 [](const std::string& warning) { return "warning: " + warning; });
  return lines;
}

}  // namespace ZelAgent
