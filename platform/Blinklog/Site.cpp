#include "Blinklog/Site.h"

#include <algorithm>
#include <deque>

namespace Blinklog {
namespace {

struct Registry {
  std::deque<Site> sites;
  std::vector<SiteNotifiee*> notifiees;
};

Registry& registry() {
  static Registry registered;
  return registered;
}

}  // namespace

SiteId siteIs(const Site& site) {
  std::deque<Site>& sites = registry().sites;
  const auto found = std::find(sites.begin(), sites.end(), site);
  const auto id = static_cast<SiteId>(found - sites.begin());
  if (found == sites.end()) {
    sites.push_back(site);
    for (SiteNotifiee* const notifiee : registry().notifiees)
      notifiee->onSite(sites.back());
  }
  return id;
}

std::size_t siteCount() noexcept {
  return registry().sites.size();
}

const Site& siteOf(SiteId id) {
  return registry().sites[id];
}

void siteNotifieeIs(SiteNotifiee& notifiee) {
  for (const Site& site : registry().sites)
    notifiee.onSite(site);
  registry().notifiees.push_back(&notifiee);
}

void siteNotifieeDel(const SiteNotifiee& notifiee) noexcept {
  std::erase(registry().notifiees, &notifiee);
}

}  // namespace Blinklog
