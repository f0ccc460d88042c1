#include "agent/config/Names.h"

#include <cstdint>
#include <limits>

#include "agent/config/Configuration.h"

namespace ZelAgent {
namespace {

constexpr std::size_t maxNameBytes = 100;

}  // namespace

std::string readName(const JsonNode& node) {
  std::string name = node.asText();
  if (name.empty()) node.fail("must not be empty");
  if (name.size() > maxNameBytes) {
    node.fail("must have at most 100 bytes, not " + std::to_string(name.size()));
  }
  return name;
}

std::string readVrfName(const JsonNode& node) {
  std::string name = readName(node);
  if (name == defaultInstanceName) return defaultVrfName;
  if (name == defaultVrfName) {
    node.fail("must be \"DEFAULT\" for the default instance; no other may be called \"default\"");
  }
  return name;
}

std::string readInterface(const JsonObject& reference) {
  const JsonNode* const subinterface = reference.find("subinterface");
  const std::uint64_t number =
      subinterface == nullptr
          ? 0
          : subinterface->asNumber(0, std::numeric_limits<std::uint32_t>::max());
  if (subinterface != nullptr && reference.find("interface") == nullptr) {
    subinterface->fail("must stand beside \"interface\"");
  }
  const JsonNode* const interface = reference.find("interface");
  if (interface == nullptr) return {};
  const std::string name = readName(*interface);
  return number == 0 ? name : name + '.' + std::to_string(number);
}

}  // namespace ZelAgent
