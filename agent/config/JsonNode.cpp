#include "agent/config/JsonNode.h"

#include <algorithm>
#include <limits>
#include <nlohmann/json.hpp>

#include "agent/config/Configuration.h"
#include "agent/language/Errors.h"
#include "agent/language/Limits.h"
#include "agent/language/PrintableText.h"

namespace ZelAgent {
namespace {

using nlohmann::json;

// A wrong value as a message names it.
std::string describe(const json& value) {
  if (value.is_object()) return "an object";
  if (value.is_array()) return "an array";
  if (value.is_string()) return inQuotes(value.get_ref<const std::string&>());
  return value.dump();
}

// A list key as a path shows it.
std::string keyText(const json& value) {
  return value.is_string() ? printable(value.get_ref<const std::string&>()) : describe(value);
}

const json* findByName(const json& object, std::string_view name) {
  for (const auto& [member, value] : object.items()) {
    if (withoutModulePrefix(member) == name) return &value;
  }
  return nullptr;
}

std::string entryPath(const std::string& listPath, const json& entry, std::size_t position,
                      std::initializer_list<std::string_view> keys) {
  std::string path = listPath;
  for (const std::string_view key : keys) {
    const json* const value = entry.is_object() ? findByName(entry, key) : nullptr;
    if (value == nullptr) return listPath + '[' + std::to_string(position) + ']';
    path += '[' + std::string(key) + '=' + keyText(*value) + ']';
  }
  return path;
}

void needNameBytes(const JsonNode& node, const std::string& name, const std::string& must) {
  if (name.size() <= Limits::nameBytes) return;
  node.fail(must + " have at most " + std::to_string(Limits::nameBytes) + " bytes, not " +
            std::to_string(name.size()));
}

}  // namespace

std::string_view withoutModulePrefix(std::string_view name) {
  const std::size_t colon = name.find(':');
  const bool hasPrefix = colon != std::string_view::npos && name.starts_with("openconfig-");
  return hasPrefix ? name.substr(colon + 1) : name;
}

std::string JsonNode::asText() const {
  if (!value_->is_string()) failExpecting("a string");
  return value_->get<std::string>();
}

std::uint64_t JsonNode::asNumber(std::uint64_t least, std::uint64_t most) const {
  const bool fits = value_->is_number_unsigned() && value_->get<std::uint64_t>() >= least &&
                    value_->get<std::uint64_t>() <= most;
  if (!fits) {
    failExpecting("a whole number from " + std::to_string(least) + " to " + std::to_string(most));
  }
  return value_->get<std::uint64_t>();
}

bool JsonNode::asFlag() const {
  if (!value_->is_boolean()) failExpecting("true or false");
  return value_->get<bool>();
}

std::string JsonNode::asIdentity() const {
  return std::string(withoutModulePrefix(asText()));
}

std::vector<JsonNode> JsonNode::elements() const {
  if (!value_->is_array()) failExpecting("an array");
  std::vector<JsonNode> nodes;
  for (const json& element : *value_) {
    nodes.emplace_back(element, path_ + '[' + std::to_string(nodes.size() + 1) + ']', *findings_);
  }
  return nodes;
}

std::string JsonNode::shown() const {
  return describe(*value_);
}

void JsonNode::failExpecting(const std::string& what) const {
  fail("must be " + what + ", not " + shown());
}

void JsonNode::fail(const std::string& what) const {
  throw ConfigError(printable(findings_->file, Limits::shownTextBytes) + ": " + path_ + ": " +
                    what);
}

void JsonNode::warn(const std::string& what) const {
  findings_->warnings.push_back(printable(findings_->file, Limits::shownTextBytes) + ": " + path_ +
                                ": " + what);
}

JsonObject::JsonObject(const JsonNode& node, std::initializer_list<std::string_view> known)
    : node_(node) {
  if (!node.value().is_object()) node.failExpecting("an object");
  const std::string parent = node.path() == "/" ? "" : node.path();
  for (const auto& [member, value] : node.value().items()) {
    const std::string_view name = withoutModulePrefix(member);
    const JsonNode child(value, parent + '/' + printable(member), node.findings());
    if (std::find(known.begin(), known.end(), name) == known.end()) {
      child.warn("unknown member, ignored");
    } else if (!members_
                    .try_emplace(std::string(name), value, parent + '/' + std::string(name),
                                 node.findings())
                    .second) {
      child.fail("is given twice, with and without its module prefix; give each member once");
    }
  }
}

const JsonNode* JsonObject::find(std::string_view name) const {
  const auto member = members_.find(name);
  return member == members_.end() ? nullptr : &member->second;
}

const JsonNode& JsonObject::at(std::string_view name) const {
  const JsonNode* const member = find(name);
  if (member == nullptr) node_.fail("lacks its member \"" + std::string(name) + '"');
  return *member;
}

JsonObject JsonObject::child(std::string_view name,
                             std::initializer_list<std::string_view> known) const {
  static const json empty = json::object();
  const JsonNode* const member = find(name);
  if (member != nullptr) return {*member, known};
  return {JsonNode(empty, node_.path() + '/' + std::string(name), node_.findings()), known};
}

std::vector<JsonNode> JsonObject::list(std::string_view container, std::string_view list,
                                       std::initializer_list<std::string_view> keys) const {
  const JsonObject holder = child(container, {list});
  const JsonNode* const array = holder.find(list);
  if (array == nullptr) return {};
  if (!array->value().is_array()) array->failExpecting("an array of objects");
  std::vector<JsonNode> entries;
  for (const json& entry : array->value()) {
    entries.emplace_back(entry, entryPath(array->path(), entry, entries.size() + 1, keys),
                         node_.findings());
  }
  return entries;
}

std::string readName(const JsonNode& node) {
  std::string name = node.asText();
  if (name.empty()) node.fail("must not be empty");
  needNameBytes(node, name, "must");
  return name;
}

std::string readVrfName(const JsonNode& node) {
  std::string name = readName(node);
  return name == defaultInstanceName ? defaultVrfName : name;
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
  std::string name = readName(*interface);
  if (number == 0) return name;
  name += '.' + std::to_string(number);
  needNameBytes(*interface, name, "must, with its subinterface,");
  return name;
}

}  // namespace ZelAgent
