#pragma once

#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "agent/config/Findings.h"
#include "agent/config/JsonValue.h"
#include "agent/config/PathTable.h"

namespace ZelAgent {

/// One value of an OpenConfig document, with its path for messages and its place in the path table.
///
/// A read of a wrong type or value returns nothing, after it has recorded an error. The document
/// and the findings must outlive the node.
class JsonNode final {
 public:
  JsonNode(const JsonValue& value, std::string path, const PathNode& schema, Findings& findings)
      : JsonNode(value, std::move(path), schema, findings, value.order()) {}

  [[nodiscard]] const std::string& path() const noexcept { return path_; }
  [[nodiscard]] const JsonValue& value() const noexcept { return *value_; }
  [[nodiscard]] const PathNode& schema() const noexcept { return *schema_; }
  [[nodiscard]] Findings& findings() const noexcept { return *findings_; }
  [[nodiscard]] std::size_t order() const noexcept { return order_; }

  [[nodiscard]] std::optional<std::string> asText() const;
  [[nodiscard]] std::optional<std::uint64_t> asNumber(std::uint64_t least,
                                                      std::uint64_t most) const;
  [[nodiscard]] std::optional<bool> asFlag() const;
  /// A text without its OpenConfig module prefix.
  [[nodiscard]] std::optional<std::string> asIdentity() const;
  /// The elements of an array. None, after an error, for another value.
  [[nodiscard]] std::vector<JsonNode> elements() const;

  /// The value as a message shows it.
  [[nodiscard]] std::string shown() const;
  /// Records the error "must be WHAT, not VALUE".
  std::nullopt_t refuseExpecting(const std::string& what) const;
  std::nullopt_t refuse(const std::string& what) const;
  /// The same for something that the agent does not support. If the reader is lenient, the rule or
  /// the set is left out instead.
  std::nullopt_t refuseUnsupported(const std::string& what) const;
  void warn(const std::string& what) const;

  /// An absent member, with the place of this node in the document.
  [[nodiscard]] JsonNode absentMember(std::string_view name, const PathNode& schema) const;

 private:
  JsonNode(const JsonValue& value, std::string path, const PathNode& schema, Findings& findings,
           std::size_t order)
      : value_(&value),
        path_(std::move(path)),
        schema_(&schema),
        findings_(&findings),
        order_(order) {}

  const JsonValue* value_;
  std::string path_;
  const PathNode* schema_;
  Findings* findings_;
  std::size_t order_;
};

/// The members of one JSON object that the path table has.
///
/// Names are compared without an OpenConfig module prefix. The constructor skips the containers
/// `state`, the leaves `description` and the interfaces at the top without a word. It records each
/// other member that the table does not have, with the meaning that the table gives it. A value
/// that is not an object is an error, and then nothing is lacking.
class JsonObject final {
 public:
  explicit JsonObject(const JsonNode& node);

  [[nodiscard]] const JsonNode& node() const noexcept { return node_; }
  /// Whether the value is an object.
  [[nodiscard]] bool isObject() const noexcept { return isObject_; }
  /// The member, or null if it is absent.
  [[nodiscard]] const JsonNode* find(std::string_view name) const;
  /// The member. If it is absent, records an error and returns null.
  [[nodiscard]] const JsonNode* require(std::string_view name) const;
  /// A container. An absent one is the same as an empty one.
  [[nodiscard]] JsonObject child(std::string_view name) const;
  /// The entries of a list in its container, with their keys in their paths. An absent container
  /// or list is an empty list.
  [[nodiscard]] std::vector<JsonNode> list(std::string_view container, std::string_view list) const;

 private:
  void add(const std::string& member, const JsonValue& value);
  void recordUnknown(const std::string& name, const JsonNode& child) const;

  JsonNode node_;
  bool isObject_ = true;
  std::map<std::string, JsonNode, std::less<>> members_;
};

[[nodiscard]] std::string_view withoutModulePrefix(std::string_view name);

/// The value of a member inside a value, by names without module prefix. Null if there is none.
/// Nothing is recorded: for a look at an entry that may have to be skipped as a whole.
[[nodiscard]] const JsonValue* peek(const JsonValue& value,
                                    std::initializer_list<std::string_view> names);

/// The text of such a member, if it is a text.
[[nodiscard]] std::optional<std::string> peekText(const JsonNode& node,
                                                  std::initializer_list<std::string_view> names);

/// The same without its module prefix.
[[nodiscard]] std::optional<std::string> peekIdentity(
    const JsonNode& node, std::initializer_list<std::string_view> names);

/// The key of a list entry. If `config` repeats the key, it must repeat it exactly.
template <class Parse>
[[nodiscard]] auto readKey(const JsonObject& entry, const JsonObject& config, std::string_view name,
                           Parse parse) -> decltype(parse(entry.node())) {
  const JsonNode* const member = entry.require(name);
  if (member == nullptr) return std::nullopt;
  auto key = parse(*member);
  const JsonNode* const copyMember = config.find(name);
  if (copyMember == nullptr) return key;
  const auto copy = parse(*copyMember);
  if (key && copy && *key != *copy) {
    copyMember->refuse("must repeat the list key " + member->shown() + ", not differ from it");
  }
  return key;
}

/// The keys of one list. A second entry with the same key is an error that names the entry.
template <class Key>
class UniqueKeys final {
 public:
  /// Returns whether the key is there and is new.
  bool add(std::optional<Key> key, const JsonNode& entry) {
    if (!key) return false;
    if (keys_.insert(*std::move(key)).second) return true;
    entry.refuse("is given twice; each key may stand once in its list");
    return false;
  }

 private:
  std::set<Key> keys_;
};

/// Any text.
[[nodiscard]] std::optional<std::string> readText(const JsonNode& node);

/// A name of 1 to 100 bytes.
[[nodiscard]] std::optional<std::string> readName(const JsonNode& node);

/// The interface of a container with `interface` and `subinterface`: "Ethernet1", or "Ethernet1.7"
/// for a subinterface other than 0. It has at most 100 bytes. Empty if neither is given.
[[nodiscard]] std::string readInterface(const JsonObject& reference);

/// Whether `config/enabled` of the list entry is false, so that the entry is not used.
[[nodiscard]] bool isDisabled(const JsonNode& entry);

/// Records an error if `enabled` is neither true nor false.
void checkEnabled(const JsonObject& config);

}  // namespace ZelAgent
