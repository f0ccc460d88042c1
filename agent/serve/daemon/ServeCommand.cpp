#include "agent/serve/daemon/ServeCommand.h"

#include <ostream>
#include <stdexcept>

#include "agent/language/Errors.h"

namespace ZelAgent {

ExitStatus serve(const DaemonOptions& options, std::ostream& out, std::ostream& err) {
  try {
    return Daemon(options, out, err).serve();
  } catch (const ConfigError& error) {
    return reportError(err, error.what());
  } catch (const std::runtime_error& error) {
    return reportError(err, error.what(), ExitStatus::failure);
  }
}

}  // namespace ZelAgent
