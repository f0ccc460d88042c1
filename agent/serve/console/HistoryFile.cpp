#include "agent/serve/console/HistoryFile.h"

#include <cstdlib>
#include <filesystem>

namespace ZelAgent {
namespace {

namespace fs = std::filesystem;

// The value where it is the absolute path of a folder; otherwise empty.
fs::path folderIn(const char* variable) {
  const char* const value = std::getenv(variable);
  const fs::path folder = value == nullptr ? "" : value;
  return folder.is_absolute() ? folder : fs::path();
}

}  // namespace

std::string historyFile() {
  if (const fs::path state = folderIn("XDG_STATE_HOME"); !state.empty()) {
    const fs::path folder = state / "zel-agent";
    std::error_code error;
    fs::create_directories(folder, error);
    return error ? std::string() : (folder / "history").string();
  }
  const fs::path home = folderIn("HOME");
  return home.empty() ? std::string() : (home / ".zel-agent_history").string();
}

}  // namespace ZelAgent
