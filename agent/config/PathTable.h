#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <string_view>
#include <vector>

namespace ZelAgent {

/// The values that a leaf can have.
enum class PathType : std::uint8_t {
  name,           // a text of 1 to 100 bytes
  text,           // any text
  flag,           // true or false
  number,         // a whole number
  identity,       // one of some words, perhaps with a module prefix
  prefix,         // an IPv4 or IPv6 prefix
  nextHop,        // an IP address or DROP
  protocol,       // a number or an identity
  port,           // a number, "FIRST..LAST" or ANY
  numberList,     // an array of numbers
  identityList,   // an array of identities
  prefixList,     // an array of prefixes
  portList,       // an array of ports
  fragmentsList,  // an array of numbers, "FIRST..LAST", or ANY alone
};

/// Whether a leaf must be given.
enum class Presence : std::uint8_t {
  keyCopy,   // may repeat the key of its list entry
  required,  // must be given
  optional,
  skipped,  // is accepted, but has no effect
};

/// A leaf of the configuration that the agent knows. A list is in the path with its keys:
/// "/network-instances/network-instance[name]/config/type".
struct ConfigPath {
  std::string path;
  PathType type = PathType::text;
  Presence presence = Presence::optional;
  std::string_view example;  // as JSON
  std::string_view meaning;  // one sentence without its full stop
};

/// Every leaf that the agent knows, in the order of the documentation. The reader takes its
/// knowledge of members and of keys from this table.
[[nodiscard]] const std::vector<ConfigPath>& configPaths();

/// "name", "array of numbers": the type as the documentation shows it.
[[nodiscard]] std::string_view toText(PathType type);

/// What a member that is not in the table means for the thing that has it.
enum class UnknownMembers : std::uint8_t {
  ignored,       // a warning
  spoilTheRule,  // an error: the rule could match more than is written
  spoilTheSet,   // the same for a set that rules name
};

/// A container, list or leaf of the table, with its members by their names. The members of a list
/// are those of its entries, with the keys.
struct PathNode {
  std::map<std::string, PathNode, std::less<>> members{};
  std::vector<std::string> keys{};  // of a list
  UnknownMembers unknown = UnknownMembers::ignored;
};

/// The table as a tree. Its root is the document.
[[nodiscard]] const PathNode& pathTree();

}  // namespace ZelAgent
