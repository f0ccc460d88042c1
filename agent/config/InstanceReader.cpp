#include "agent/config/InstanceReader.h"

#include <utility>

#include "agent/config/PolicyReader.h"
#include "agent/config/StaticRouteReader.h"
#include "agent/language/PrintableText.h"

namespace ZelAgent {
namespace {

constexpr const char* defaultType = "DEFAULT_INSTANCE";
constexpr const char* vrfType = "L3VRF";

bool isUsualDefaultName(const std::string& name) {
  return name == defaultVrfName || name == defaultInstanceName;
}

// The name of the first instance that is used and has the type of the default instance.
std::string findDefaultName(const std::vector<JsonNode>& entries) {
  for (const JsonNode& entry : entries) {
    if (isDisabled(entry) || peekIdentity(entry, {"config", "type"}) != defaultType) continue;
    if (auto name = peekText(entry, {"name"})) return *name;
  }
  return {};
}

// The type of an instance that is not read.
std::optional<std::string> foreignTypeOf(const JsonNode& node) {
  auto type = peekIdentity(node, {"config", "type"});
  const auto name = peekText(node, {"name"});
  const bool isOurs = type == defaultType || type == vrfType;
  if (isOurs || (name && isUsualDefaultName(*name))) return std::nullopt;
  return type;
}

}  // namespace

void InterfaceOwners::add(const std::string& interface, const JsonNode& entry) {
  const auto [owner, added] = owners_.try_emplace(interface, entry.path());
  if (added) return;
  entry.refuse("binds interface " + inQuotes(interface) + " again, which " + owner->second +
               " does; bind it once");
}

Configuration InstancesReader::read(const std::vector<JsonNode>& entries) {
  names_ = InstanceNames(findDefaultName(entries));
  for (const JsonNode& node : entries)
    readHeader(node);
  Configuration configuration{{}, sets_.prefixSets(), names_.unusualDefaultName()};
  for (Header& header : headers_) {
    readContent(header);
    configuration.networkInstances.push_back(std::move(header.instance));
  }
  configuration.otherInterfaces = std::move(disabledInterfaces_);
  return configuration;
}

void InstancesReader::readHeader(const JsonNode& node) {
  const auto foreign = foreignTypeOf(node);
  if (foreign) {
    node.warn("is an instance of type " + inQuotes(*foreign) + "; only " + defaultType + " and " +
              vrfType + " are read, ignored");
  }
  if (foreign || isDisabled(node)) {
    const auto name = peekText(node, {"name"});
    if (name) keys_.add(names_.vrfOf(*name), node);
    return;
  }
  const JsonObject entry(node);
  Header header{entry, entry.child("config"), {}};
  checkEnabled(header.config);
  const auto name = readKey(entry, header.config, "name", [this](const JsonNode& key) {
    auto text = readName(key);
    return text ? std::optional(names_.vrfOf(*text)) : std::nullopt;
  });
  header.instance.name = name.value_or("");
  const bool isNew = keys_.add(name, node);
  header.instance.type = readType(header);
  const bool isDefault = header.instance.type == InstanceType::defaultInstance;
  if (isNew) names_.add(header.instance.name);
  if (isNew && isDefault) defaultInstance_ = entry.find("name")->shown();
  headers_.push_back(std::move(header));
}

InstanceType InstancesReader::readType(const Header& header) const {
  const JsonNode* const name = header.entry.find("name");
  const auto* const text = name == nullptr ? nullptr : name->value().as<std::string>();
  const bool hasDefaultName = text != nullptr && isUsualDefaultName(*text);
  if (hasDefaultName && header.config.find("type") == nullptr) return InstanceType::defaultInstance;
  const JsonNode* const type = header.config.require("type");
  const auto identity = type == nullptr ? std::nullopt : type->asIdentity();
  if (!identity) return InstanceType::l3Vrf;
  if (hasDefaultName && *identity != defaultType) {
    type->refuse("must be DEFAULT_INSTANCE for the instance called " + name->shown());
  }
  const bool isDefault = *identity == defaultType;
  const bool isSecond = isDefault && defaultInstance_ && header.instance.name != defaultVrfName;
  if (isSecond) {
    type->refuse("must be L3VRF; the default instance is " + *defaultInstance_);
  }
  return isDefault && !isSecond ? InstanceType::defaultInstance : InstanceType::l3Vrf;
}

void InstancesReader::readContent(Header& header) {
  if (const JsonNode* const fallback = header.config.find("fallback-network-instance")) {
    header.instance.fallback = names_.readReference(*fallback).value_or("");
  }
  readInterfaces(header.entry, header.instance);
  header.instance.staticRoutes = readStaticRoutes(header.entry);
  readPolicyForwarding(header.entry.child("policy-forwarding"), header.instance);
}

void InstancesReader::readInterfaces(const JsonObject& instanceEntry, NetworkInstance& instance) {
  UniqueKeys<std::string> ids;
  for (const JsonNode& node : instanceEntry.list("interfaces", "interface")) {
    const JsonObject entry(node);
    const JsonObject config = entry.child("config");
    checkEnabled(config);
    const auto id = readKey(entry, config, "id", readName);
    const bool isNew = ids.add(id, node);
    const std::string named = readInterface(config);
    if (!isNew) continue;
    const std::string interface = named.empty() ? *id : named;
    if (isDisabled(node)) {
      disabledInterfaces_.insert(interface);
    } else {
      instance.interfaces.push_back(interface);
      vrfOfInterface_.add(interface, node);
    }
  }
}

void InstancesReader::readPolicyForwarding(const JsonObject& policyForwarding,
                                           NetworkInstance& instance) {
  ReadPolicies read = readPolicies(policyForwarding, names_, sets_, progress_);
  UniqueKeys<std::string> ids;
  for (const JsonNode& node : policyForwarding.list("interfaces", "interface")) {
    auto binding = BindingReader(read).read(node, ids);
    if (!binding) continue;
    if (isDisabled(node)) {
      disabledInterfaces_.insert(binding->interface);
    } else {
      policyOfInterface_.add(binding->interface, node);
      instance.policyBindings.push_back(*std::move(binding));
    }
  }
  instance.policies = std::move(read.policies);
}

}  // namespace ZelAgent
