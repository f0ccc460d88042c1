#pragma once

#include <filesystem>
#include <map>
#include <nlohmann/json_fwd.hpp>
#include <string>
#include <vector>

namespace ZelAgent {

/// The published YANG models in a folder and below it. `yanglint`, a program of the Debian package
/// libyang2-tools, validates configurations against them.
///
/// It validates the module `openconfig-network-instance` and the modules that it imports, the
/// types of interfaces, and each module that a member at the top of the configuration names. A
/// configuration is complete: each reference must be to something that the same file configures.
class YangModels final {
 public:
  /// Throws a `ConfigError` that names the folder if it lacks `openconfig-network-instance`.
  explicit YangModels(const std::string& folder);

  /// What is wrong with a configuration, as lines "FILE: WHAT". Empty if it is an instance of the
  /// models. `document` is the content of the file.
  ///
  /// Throws a `ConfigError` of one line if `yanglint` is not installed or cannot load the models.
  [[nodiscard]] std::vector<std::string> findingsIn(const std::string& file,
                                                    const nlohmann::json& document) const;

 private:
  [[nodiscard]] std::vector<std::string> argumentsFor(const std::string& file,
                                                      const nlohmann::json& document) const;

  std::string folder_;
  std::map<std::string, std::filesystem::path> modules_;  // by name; the newest revision
};

}  // namespace ZelAgent
