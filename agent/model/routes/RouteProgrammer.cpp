#include "agent/model/routes/RouteProgrammer.h"

namespace ZelAgent {

const ChipObserver& RouteProgrammer::noObserver() {
  static const ChipObserver none;
  return none;
}

void RouteProgrammer::observe(std::uint32_t vrfId, const IpPrefix& prefix,
                              const Chips::Route* route) const {
  if (observer_) observer_(RouteCall{vrfId, prefix, route});
}

void RouteProgrammer::configuredIs(const Configuration& configuration) {
  std::map<std::string, const std::vector<StaticRoute>*> routes;
  for (const NetworkInstance& instance : configuration.networkInstances) {
    routes.emplace(instance.name, &instance.staticRoutes);
    vrfs_[instance.name];
  }
  for (auto& [name, vrf] : vrfs_) {
    const auto configured = routes.find(name);
    static const std::vector<StaticRoute> none;
    vrf.configuredIs(configured == routes.end() ? none : *configured->second);
  }
}

void RouteProgrammer::routeIs(const std::string& vrf, const IpPrefix& prefix,
                              const Chips::Route& route) {
  vrfs_[vrf].routeIs(prefix, route);
}

bool RouteProgrammer::routeDel(const std::string& vrf, const IpPrefix& prefix) {
  const auto present = vrfs_.find(vrf);
  return present != vrfs_.end() && present->second.routeDel(prefix);
}

std::set<IpPrefix> RouteProgrammer::prefixesOf(const std::string& vrf) const {
  const auto found = vrfs_.find(vrf);
  return found == vrfs_.end() ? std::set<IpPrefix>() : found->second.prefixes();
}

void RouteProgrammer::clear() {
  vrfs_.clear();
  program();
}

std::uint32_t RouteProgrammer::vrfId(const std::string& vrf) const {
  return Chips::factsOf(vrf, inputs_).vrfId;
}

const Chips::Route* RouteProgrammer::programmed(std::uint32_t vrfId, const IpPrefix& prefix) const {
  const auto table = programmed_.find(vrfId);
  if (table == programmed_.end()) return nullptr;
  const auto route = table->second.routes.find(prefix);
  return route == table->second.routes.end() ? nullptr : &route->second;
}

void RouteProgrammer::add() {
  for (const auto& [vrfId, content] : wantedContents()) {
    Table& present = programmed_[vrfId];
    add(vrfId, present, content, affected(present, content));
  }
}

void RouteProgrammer::program() {
  const std::map<std::uint32_t, Content> wanted = wantedContents();
  std::erase_if(programmed_, [&](const auto& entry) {
    if (wanted.contains(entry.first)) return false;
    for (const auto& [prefix, route] : entry.second.routes)
      observe(entry.first, prefix, nullptr);
    chip_.vrfDel(entry.first);
    return true;
  });
  for (const auto& [vrfId, content] : wanted) {
    Table& present = programmed_[vrfId];
    const RoutingTable::Prefixes prefixes = affected(present, content);
    add(vrfId, present, content, prefixes);
    removeOthers(vrfId, present, content, prefixes);
    present.content = content;
  }
  for (auto& [name, vrf] : vrfs_)
    vrf.changesDelAll();
}

std::map<std::uint32_t, RouteProgrammer::Content> RouteProgrammer::wantedContents() const {
  std::map<std::uint32_t, Content> contents;
  for (const auto& [name, vrf] : vrfs_) {
    const Chips::VrfFacts facts = Chips::factsOf(name, inputs_);
    if (facts.vrfId == 0) continue;
    Content& content = contents[facts.vrfId];
    content.vrfs.push_back(name);
    content.exactMatchLens = facts.exactMatchLens;
    content.exactMatchLensV6 = facts.exactMatchLensV6;
  }
  return contents;
}

RoutingTable::Prefixes RouteProgrammer::affected(const Table& present,
                                                 const Content& wanted) const {
  RoutingTable::Prefixes prefixes;
  const bool isSame = present.content == wanted;
  for (const std::string& name : wanted.vrfs) {
    const RoutingTable& vrf = vrfs_.at(name);
    prefixes.insert(vrf.changes().begin(), vrf.changes().end());
    if (isSame) continue;
    for (const auto& [prefix, route] : vrf.resolved())
      prefixes.insert(prefix);
  }
  if (!isSame) {
    for (const auto& [prefix, route] : present.routes)
      prefixes.insert(prefix);
  }
  return prefixes;
}

void RouteProgrammer::add(std::uint32_t vrfId, Table& present, const Content& wanted,
                          const RoutingTable::Prefixes& prefixes) {
  if (present.content != wanted) {
    chip_.exactMatchLensIs(vrfId, IpFamily::v4, wanted.exactMatchLens);
    chip_.exactMatchLensIs(vrfId, IpFamily::v6, wanted.exactMatchLensV6);
  }
  for (const IpPrefix& prefix : prefixes) {
    const Chips::Route* const route = routeTo(prefix, wanted);
    if (route == nullptr) continue;
    const auto [before, isNew] = present.routes.try_emplace(prefix, *route);
    if (!isNew && before->second == *route) continue;
    before->second = *route;
    chip_.routeIs(vrfId, prefix, *route);
    observe(vrfId, prefix, route);
  }
}

void RouteProgrammer::removeOthers(std::uint32_t vrfId, Table& present, const Content& wanted,
                                   const RoutingTable::Prefixes& prefixes) {
  for (const IpPrefix& prefix : prefixes) {
    if (routeTo(prefix, wanted) != nullptr) continue;
    if (present.routes.erase(prefix) == 0) continue;
    observe(vrfId, prefix, nullptr);
    chip_.routeDel(vrfId, prefix);
  }
}

const Chips::Route* RouteProgrammer::routeTo(const IpPrefix& prefix, const Content& content) const {
  for (auto name = content.vrfs.rbegin(); name != content.vrfs.rend(); ++name) {
    const RoutingTable::Routes& routes = vrfs_.at(*name).resolved();
    const auto route = routes.find(prefix);
    if (route != routes.end()) return &route->second;
  }
  return nullptr;
}

}  // namespace ZelAgent
