// Why: every complaint about a configuration names the member it is about, so a JSON value is
// handled together with its path.
// Always: reading the wrong type or value throws a ConfigError of the form FILE: PATH: WHAT. Names
// are compared without an OpenConfig module prefix; members with any other prefix are unknown. An
// unknown member is one warning and nothing else.
#pragma once

#include <cstdint>
#include <initializer_list>
#include <map>
#include <nlohmann/json_fwd.hpp>
#include <string>
#include <string_view>
#include <vector>

namespace ZelAgent {

// What reading one file has to say besides its result.
struct Findings {
  std::string file;
  std::vector<std::string> warnings;
};

// A view of one value; the document and the findings outlive it.
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
  // A text without its OpenConfig module prefix.
  [[nodiscard]] std::string asIdentity() const;
  [[nodiscard]] std::vector<JsonNode> elements() const;

  // How a message calls the value.
  [[nodiscard]] std::string shown() const;

  // "must be WHAT, not VALUE"
  [[noreturn]] void failExpecting(const std::string& what) const;
  [[noreturn]] void fail(const std::string& what) const;
  void warn(const std::string& what) const;

 private:
  const nlohmann::json* value_;
  std::string path_;
  Findings* findings_;
};

// The members of one object that the reader knows. Building it warns of all others.
class JsonObject final {
 public:
  JsonObject(const JsonNode& node, std::initializer_list<std::string_view> known);

  [[nodiscard]] const JsonNode& node() const noexcept { return node_; }

  // The member, or null where it is absent.
  [[nodiscard]] const JsonNode* find(std::string_view name) const;
  // The member, or the error that it is lacking.
  [[nodiscard]] const JsonNode& at(std::string_view name) const;
  // A container. An absent one is the same as an empty one.
  [[nodiscard]] JsonObject child(std::string_view name,
                                 std::initializer_list<std::string_view> known) const;
  // The entries of a list in its container, their keys in their paths. No container or no list is
  // an empty list.
  [[nodiscard]] std::vector<JsonNode> list(std::string_view container, std::string_view list,
                                           std::initializer_list<std::string_view> keys) const;

 private:
  JsonNode node_;
  std::map<std::string, JsonNode, std::less<>> members_;
};

[[nodiscard]] std::string_view withoutModulePrefix(std::string_view name);

// The key of a list entry. Where `config` repeats it, it repeats it exactly.
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

}  // namespace ZelAgent
