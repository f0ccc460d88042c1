#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "Velo/Export.h"

namespace Blinklog {

/// Where and what a message is. `fragments` are its text in order; "%s", "%u" and "%b" stand for
/// an argument of that kind.
struct Site {
  std::string path;
  unsigned line = 0;
  std::string function;
  unsigned level = 0;
  std::vector<std::string> fragments;

  friend bool operator==(const Site&, const Site&) = default;
};

/// Names a registered site; small enough to be written with each message. Sites are numbered from 0
/// in the order in which they are registered.
using SiteId = std::uint32_t;

/// Registers `site` process-wide and gives its id, the same one for an equal site. The site is
/// copied, so messages can be dumped after the library that wrote them was unloaded.
[[nodiscard]] ZEL_EXPORT SiteId siteIs(const Site& site);

/// How many are registered. Whatever static has asked once may use sites until it is destroyed.
[[nodiscard]] std::size_t siteCount() noexcept;

/// The registered site of that id, which stays where it is.
[[nodiscard]] const Site& siteOf(SiteId id);

/// Follows the registered sites, for whoever must know them without asking this process.
class SiteNotifiee {
 public:
  SiteNotifiee() = default;
  SiteNotifiee(const SiteNotifiee&) = delete;
  SiteNotifiee& operator=(const SiteNotifiee&) = delete;
  virtual ~SiteNotifiee() = default;

  /// The next site, in the order of their ids.
  virtual void onSite(const Site& site) = 0;
};

/// Tells `notifiee` every site: those that there are now, and then each when it is registered.
void siteNotifieeIs(SiteNotifiee& notifiee);
void siteNotifieeDel(const SiteNotifiee& notifiee) noexcept;

}  // namespace Blinklog
