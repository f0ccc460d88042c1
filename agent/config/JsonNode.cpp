#include "agent/config/JsonNode.h"

#include <algorithm>
#include <limits>

#include "agent/language/Limits.h"
#include "agent/language/PrintableText.h"
#include "agent/language/Words.h"

namespace ZelAgent {
namespace {

// A wrong value as a message names it.
std::string describe(const JsonValue& value) {
  if (value.as<JsonValue::Object>() != nullptr) return "an object";
  if (value.as<JsonValue::Array>() != nullptr) return "an array";
  if (const auto* const text = value.as<std::string>()) return inQuotes(*text);
  if (const auto* const flag = value.as<bool>()) return *flag ? "true" : "false";
  if (const auto* const number = value.as<std::uint64_t>()) return std::to_string(*number);
  if (const auto* const number = value.as<JsonOtherNumber>()) return printable(number->text);
  return "null";
}

// A list key as a path shows it.
std::string keyText(const JsonValue& value) {
  const auto* const text = value.as<std::string>();
  return text != nullptr ? printable(*text) : describe(value);
}

const JsonValue* findByName(const JsonValue& object, std::string_view name) {
  const auto* const members = object.as<JsonValue::Object>();
  if (members == nullptr) return nullptr;
  const auto found = std::find_if(members->begin(), members->end(), [name](const auto& member) {
    return withoutModulePrefix(member.name) == name;
  });
  return found == members->end() ? nullptr : &found->value;
}

std::string entryPath(const std::string& listPath, const JsonValue& entry, std::size_t position,
                      const std::vector<std::string>& keys) {
  std::string path = listPath;
  for (const std::string& key : keys) {
    const JsonValue* const value = findByName(entry, key);
    if (value == nullptr) return listPath + '[' + std::to_string(position) + ']';
    path += '[' + key + '=' + keyText(*value) + ']';
  }
  return path;
}

bool needNameBytes(const JsonNode& node, const std::string& name, const std::string& must) {
  if (name.size() <= Limits::nameBytes) return true;
  node.refuse(must + " have at most " + std::to_string(Limits::nameBytes) + " bytes, not " +
              std::to_string(name.size()));
  return false;
}

std::string pathOfMember(const JsonNode& parent, std::string_view name) {
  return (parent.path() == "/" ? "" : parent.path()) + '/' + printable(name);
}

// What says nothing about where packets go. The interfaces at the top of a document are those that
// the other members refer to.
bool isSkippedSilently(const JsonNode& parent, std::string_view name) {
  const bool isAtTheTop = parent.path() == "/";
  return name == "state" || name == "description" || (isAtTheTop && name == "interfaces");
}

std::string namesOf(const PathNode& schema) {
  std::vector<std::string> names;
  for (const auto& [name, member] : schema.members)
    names.push_back(name);
  return alternatives(names);
}

}  // namespace

std::string_view withoutModulePrefix(std::string_view name) {
  const std::size_t colon = name.find(':');
  const bool hasPrefix = colon != std::string_view::npos && name.starts_with("openconfig-");
  return hasPrefix ? name.substr(colon + 1) : name;
}

const JsonValue* peek(const JsonValue& value, std::initializer_list<std::string_view> names) {
  const JsonValue* found = &value;
  for (const std::string_view name : names)
    found = found == nullptr ? nullptr : findByName(*found, name);
  return found;
}

std::optional<std::string> peekText(const JsonNode& node,
                                    std::initializer_list<std::string_view> names) {
  const JsonValue* const value = peek(node.value(), names);
  const auto* const text = value == nullptr ? nullptr : value->as<std::string>();
  if (text == nullptr) return std::nullopt;
  return *text;
}

std::optional<std::string> peekIdentity(const JsonNode& node,
                                        std::initializer_list<std::string_view> names) {
  const auto text = peekText(node, names);
  if (!text) return std::nullopt;
  return std::string(withoutModulePrefix(*text));
}

std::optional<std::string> JsonNode::asText() const {
  const auto* const text = value_->as<std::string>();
  if (text == nullptr) return refuseExpecting("a string");
  return *text;
}

std::optional<std::uint64_t> JsonNode::asNumber(std::uint64_t least, std::uint64_t most) const {
  const auto* const number = value_->as<std::uint64_t>();
  if (number != nullptr && *number >= least && *number <= most) return *number;
  return refuseExpecting("a whole number from " + std::to_string(least) + " to " +
                         std::to_string(most));
}

std::optional<bool> JsonNode::asFlag() const {
  const auto* const flag = value_->as<bool>();
  if (flag == nullptr) return refuseExpecting("true or false");
  return *flag;
}

std::optional<std::string> JsonNode::asIdentity() const {
  const auto text = asText();
  if (!text) return std::nullopt;
  return std::string(withoutModulePrefix(*text));
}

std::vector<JsonNode> JsonNode::elements() const {
  std::vector<JsonNode> nodes;
  const auto* const array = value_->as<JsonValue::Array>();
  if (array == nullptr) {
    refuseExpecting("an array");
    return nodes;
  }
  for (const JsonValue& element : *array) {
    nodes.emplace_back(element, path_ + '[' + std::to_string(nodes.size() + 1) + ']', *schema_,
                       *findings_);
  }
  return nodes;
}

std::string JsonNode::shown() const {
  return describe(*value_);
}

std::nullopt_t JsonNode::refuseExpecting(const std::string& what) const {
  return refuse("must be " + what + ", not " + shown());
}

std::nullopt_t JsonNode::refuse(const std::string& what) const {
  findings_->error(order_, path_, what);
  return std::nullopt;
}

std::nullopt_t JsonNode::refuseUnsupported(const std::string& what) const {
  const bool isOfSet = schema_->unknown == UnknownMembers::spoilTheSet;
  findings_->unsupported(order_, path_, what,
                         isOfSet ? "rules that name the set are left out" : "the rule is left out");
  return std::nullopt;
}

void JsonNode::warn(const std::string& what) const {
  findings_->warning(order_, path_, what);
}

JsonNode JsonNode::absentMember(std::string_view name, const PathNode& schema) const {
  static const JsonValue empty(JsonValue::Object{}, 0);
  return {empty, pathOfMember(*this, name), schema, *findings_, order_};
}

JsonObject::JsonObject(const JsonNode& node) : node_(node) {
  const auto* const members = node.value().as<JsonValue::Object>();
  isObject_ = members != nullptr;
  if (!isObject_) {
    node.refuseExpecting("an object");
    return;
  }
  for (const JsonMember& member : *members)
    add(member.name, member.value);
}

void JsonObject::add(const std::string& member, const JsonValue& value) {
  const std::string name(withoutModulePrefix(member));
  const auto known = node_.schema().members.find(name);
  if (known == node_.schema().members.end()) {
    recordUnknown(name, {value, pathOfMember(node_, member), node_.schema(), node_.findings()});
    return;
  }
  const JsonNode child(value, pathOfMember(node_, name), known->second, node_.findings());
  if (members_.try_emplace(name, child).second) return;
  const JsonNode second(value, pathOfMember(node_, member), known->second, node_.findings());
  second.refuse("is given twice, with and without its module prefix; give each member once");
}

void JsonObject::recordUnknown(const std::string& name, const JsonNode& child) const {
  if (isSkippedSilently(node_, name)) return;
  if (child.schema().unknown == UnknownMembers::ignored) {
    child.warn("unknown member, ignored");
    return;
  }
  child.refuseUnsupported("is not supported; supported here: " + namesOf(child.schema()));
}

const JsonNode* JsonObject::find(std::string_view name) const {
  const auto member = members_.find(name);
  return member == members_.end() ? nullptr : &member->second;
}

const JsonNode* JsonObject::require(std::string_view name) const {
  const JsonNode* const member = find(name);
  if (member == nullptr && isObject_) {
    node_.refuse("lacks its member \"" + std::string(name) + '"');
  }
  return member;
}

JsonObject JsonObject::child(std::string_view name) const {
  const JsonNode* const member = find(name);
  if (member != nullptr) return JsonObject(*member);
  JsonObject absent(node_.absentMember(name, node_.schema().members.find(name)->second));
  absent.isObject_ = isObject_;
  return absent;
}

std::vector<JsonNode> JsonObject::list(std::string_view container, std::string_view list) const {
  const JsonObject holder = child(container);
  const JsonNode* const array = holder.find(list);
  std::vector<JsonNode> entries;
  if (array == nullptr) return entries;
  const auto* const values = array->value().as<JsonValue::Array>();
  if (values == nullptr) {
    array->refuseExpecting("an array of objects");
    return entries;
  }
  const PathNode& schema = array->schema();
  for (const JsonValue& entry : *values) {
    entries.emplace_back(entry, entryPath(array->path(), entry, entries.size() + 1, schema.keys),
                         schema, node_.findings());
  }
  return entries;
}

std::optional<std::string> readText(const JsonNode& node) {
  return node.asText();
}

std::optional<std::string> readName(const JsonNode& node) {
  auto name = node.asText();
  if (!name) return std::nullopt;
  if (name->empty()) return node.refuse("must not be empty");
  if (!needNameBytes(node, *name, "must")) return std::nullopt;
  return name;
}

std::string readInterface(const JsonObject& reference) {
  const JsonNode* const subinterface = reference.find("subinterface");
  const JsonNode* const interface = reference.find("interface");
  std::optional<std::uint64_t> number = 0;
  if (subinterface != nullptr) {
    number = subinterface->asNumber(0, std::numeric_limits<std::uint32_t>::max());
    if (number && interface == nullptr) subinterface->refuse("must stand beside \"interface\"");
  }
  if (interface == nullptr) return {};
  std::string name = readName(*interface).value_or("");
  if (name.empty() || number.value_or(0) == 0) return name;
  name += '.' + std::to_string(*number);
  return needNameBytes(*interface, name, "must, with its subinterface,") ? name : std::string();
}

bool isDisabled(const JsonNode& entry) {
  const JsonValue* const enabled = peek(entry.value(), {"config", "enabled"});
  const bool* const flag = enabled == nullptr ? nullptr : enabled->as<bool>();
  return flag != nullptr && !*flag;
}

void checkEnabled(const JsonObject& config) {
  if (const JsonNode* const enabled = config.find("enabled")) (void)enabled->asFlag();
}

}  // namespace ZelAgent
