#pragma once

#include <optional>
#include <set>
#include <string>
#include <utility>

#include "agent/config/JsonNode.h"

namespace ZelAgent {

/// The VRF names of the network instances of one document.
///
/// The default instance may have any name. Its VRF is "default", and other members may also refer
/// to it as DEFAULT or default. Every other VRF has the name of its instance.
class InstanceNames final {
 public:
  InstanceNames() = default;
  explicit InstanceNames(std::string defaultName) : defaultName_(std::move(defaultName)) {}

  [[nodiscard]] std::string vrfOf(const std::string& name) const;
  /// The name of the default instance, if it is neither DEFAULT nor default. Otherwise empty.
  [[nodiscard]] std::string unusualDefaultName() const;
  /// Adds a VRF that is configured.
  void add(const std::string& vrf) { configured_.insert(vrf); }
  /// Reads a member that refers to an instance. Records a warning if it is not configured.
  [[nodiscard]] std::optional<std::string> readReference(const JsonNode& node) const;

 private:
  std::string defaultName_;
  std::set<std::string> configured_;
};

}  // namespace ZelAgent
