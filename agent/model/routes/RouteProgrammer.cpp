#include "agent/model/routes/RouteProgrammer.h"

namespace ZelAgent {

void RouteProgrammer::configuredIs(const Configuration& configuration) {
  std::map<std::string, const std::vector<StaticRoute>*> routes;
  for (const NetworkInstance& instance : configuration.networkInstances) {
    routes.emplace(instance.name, &instance.staticRoutes);
    vrfs_[instance.name];
  }
  for (auto& [name, vrf] : vrfs_) {
    const auto configured = routes.find(name);
    static const std::vector<StaticRoute> none;
    if (vrf.routes.configuredIs(configured == routes.end() ? none : *configured->second)) {
      ++vrf.version;
    }
  }
}

void RouteProgrammer::routeIs(const std::string& vrf, const IpPrefix& prefix,
                              const SoftChip::Route& route) {
  Vrf& present = vrfs_[vrf];
  present.routes.routeIs(prefix, route);
  ++present.version;
}

bool RouteProgrammer::routeDel(const std::string& vrf, const IpPrefix& prefix) {
  const auto present = vrfs_.find(vrf);
  if (present == vrfs_.end() || !present->second.routes.routeDel(prefix)) return false;
  ++present->second.version;
  return true;
}

void RouteProgrammer::clear() {
  vrfs_.clear();
  program();
}

void RouteProgrammer::add() {
  for (const auto& [vrfId, content] : wantedContents()) {
    Table& present = programmed_[vrfId];
    if (present.content != content) addRoutes(vrfId, present, content);
  }
}

void RouteProgrammer::program() {
  const std::map<std::uint32_t, Content> wanted = wantedContents();
  std::erase_if(programmed_, [&](const auto& entry) {
    if (wanted.contains(entry.first)) return false;
    chip_.vrfDel(entry.first);
    return true;
  });
  for (const auto& [vrfId, content] : wanted) {
    Table& present = programmed_[vrfId];
    if (present.content == content) continue;
    addRoutes(vrfId, present, content);
    removeOthers(vrfId, present, content);
  }
}

std::map<std::uint32_t, RouteProgrammer::Content> RouteProgrammer::wantedContents() const {
  std::map<std::uint32_t, Content> contents;
  for (const auto& [name, vrf] : vrfs_) {
    const SoftChip::VrfFacts facts = SoftChip::factsOf(name, inputs_);
    if (facts.vrfId == 0) continue;
    Content& content = contents[facts.vrfId];
    content.versions.emplace(name, vrf.version);
    content.exactMatchLens = facts.exactMatchLens;
    content.exactMatchLensV6 = facts.exactMatchLensV6;
  }
  return contents;
}

void RouteProgrammer::addRoutes(std::uint32_t vrfId, Table& present, const Content& wanted) {
  chip_.exactMatchLensIs(vrfId, IpFamily::v4, wanted.exactMatchLens);
  chip_.exactMatchLensIs(vrfId, IpFamily::v6, wanted.exactMatchLensV6);
  for (const auto& [prefix, route] : routesOf(wanted)) {
    const auto [before, isNew] = present.routes.try_emplace(prefix, route);
    if (!isNew && before->second == route) continue;
    before->second = route;
    chip_.routeIs(vrfId, prefix, route);
  }
}

void RouteProgrammer::removeOthers(std::uint32_t vrfId, Table& present, const Content& wanted) {
  const RoutingTable::Routes routes = routesOf(wanted);
  std::erase_if(present.routes, [&](const auto& entry) {
    if (routes.contains(entry.first)) return false;
    chip_.routeDel(vrfId, entry.first);
    return true;
  });
  present.content = wanted;
}

RoutingTable::Routes RouteProgrammer::routesOf(const Content& content) const {
  RoutingTable::Routes routes;
  for (const auto& [name, version] : content.versions) {
    for (const auto& [prefix, route] : vrfs_.at(name).routes.resolved())
      routes.insert_or_assign(prefix, route);
  }
  return routes;
}

}  // namespace ZelAgent
