#include "agent/serve/daemon/ServeCommand.h"

#include <ostream>
#include <stdexcept>

#include "agent/language/ConfigError.h"

namespace ZelAgent {

ExitStatus serve(const DaemonOptions& options, std::ostream& out, std::ostream& err) {
  try {
    return Daemon(options, out, err).serve();
  } catch (const ConfigError& error) {
    err << "error: " << error.what() << '\n';
    return ExitStatus::badInput;
  } catch (const std::runtime_error& error) {
    err << "error: " << error.what() << '\n';
    return ExitStatus::failure;
  }
}

}  // namespace ZelAgent
