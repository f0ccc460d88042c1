#pragma once

#include <cstdint>
#include <initializer_list>
#include <map>
#include <nlohmann/json_fwd.hpp>
#include <set>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace ZelAgent {

/// The file that is read, and the warnings about it.
struct Findings {
  std::string file;
  std::vector<std::string> warnings;
};

/// One value of an OpenConfig document, with its path for messages.
///
/// A read of the wrong type or value throws a `ConfigError` "FILE: PATH: WHAT". The document and
/// the findings must outlive the node.
class JsonNode final {
 public:
  JsonNode(const nlohmann::json& value, std::string path, Findings& findings)
      : value_(&value), path_(std::move(path)), findings_(&findings) {}

  [[nodiscard]] const std::string& path() const noexcept { return path_; }
  [[nodiscard]] const nlohmann::json& value() const noexcept { return *value_; }
  [[nodiscard]] Findings& findings() const noexcept { return *findings_; }

  [[nodiscard]] std::string asText() const;
  [[nodiscard]] std::uint64_t asNumber(std::uint64_t least, std::uint64_t most) const;
  [[nodiscard]] bool asFlag() const;
  /// A text without its OpenConfig module prefix.
  [[nodiscard]] std::string asIdentity() const;
  [[nodiscard]] std::vector<JsonNode> elements() const;

  /// The value as a message shows it.
  [[nodiscard]] std::string shown() const;
  /// Throws "must be WHAT, not VALUE".
  [[noreturn]] void failExpecting(const std::string& what) const;
  [[noreturn]] void fail(const std::string& what) const;
  void warn(const std::string& what) const;

 private:
  const nlohmann::json* value_;
  std::string path_;
  Findings* findings_;
};

/// The known members of one JSON object.
///
/// Names are compared without an OpenConfig module prefix. The constructor warns of each unknown
/// member, which includes members with another prefix, and ignores it.
class JsonObject final {
 public:
  JsonObject(const JsonNode& node, std::initializer_list<std::string_view> known);

  [[nodiscard]] const JsonNode& node() const noexcept { return node_; }
  /// The member, or null if it is absent.
  [[nodiscard]] const JsonNode* find(std::string_view name) const;
  /// The member. Throws a `ConfigError` if it is absent.
  [[nodiscard]] const JsonNode& at(std::string_view name) const;
  /// A container. An absent one is the same as an empty one.
  [[nodiscard]] JsonObject child(std::string_view name,
                                 std::initializer_list<std::string_view> known) const;
  /// The entries of a list in its container, with their keys in their paths. An absent container
  /// or list is an empty list.
  [[nodiscard]] std::vector<JsonNode> list(std::string_view container, std::string_view list,
                                           std::initializer_list<std::string_view> keys) const;

 private:
  JsonNode node_;
  std::map<std::string, JsonNode, std::less<>> members_;
};

[[nodiscard]] std::string_view withoutModulePrefix(std::string_view name);

/// The key of a list entry. If `config` repeats the key, it must repeat it exactly.
template <class Parse>
[[nodiscard]] auto readKey(const JsonObject& entry, const JsonObject& config, std::string_view name,
                           Parse parse) {
  auto key = parse(entry.at(name));
  const JsonNode* const copy = config.find(name);
  if (copy != nullptr && parse(*copy) != key) {
    copy->fail("must repeat the list key " + entry.at(name).shown() + ", not differ from it");
  }
  return key;
}

/// The keys of one list. A second entry with the same key is a `ConfigError` that names the entry.
template <class Key>
class UniqueKeys final {
 public:
  void add(Key key, const JsonNode& entry) {
    if (!keys_.insert(std::move(key)).second) {
      entry.fail("is given twice; each key may stand once in its list");
    }
  }

 private:
  std::set<Key> keys_;
};

/// A name of 1 to 100 bytes.
[[nodiscard]] std::string readName(const JsonNode& node);

/// The VRF name of a network instance: "default" for DEFAULT, any other name unchanged.
[[nodiscard]] std::string readVrfName(const JsonNode& node);

/// The interface of a container with `interface` and `subinterface`: "Ethernet1", or "Ethernet1.7"
/// for a subinterface other than 0. It has at most 100 bytes. Empty if neither is given.
[[nodiscard]] std::string readInterface(const JsonObject& reference);

}  // namespace ZelAgent
