#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "Velo/Export.h"

namespace Blinklog {

/// The constant part of a message: its place in the source, its level and its text. `fragments` are
/// the parts of the text in order. "%s", "%u" and "%b" stand for an argument of that kind.
struct Site {
  std::string path;
  unsigned line = 0;
  std::string function;
  unsigned level = 0;
  std::vector<std::string> fragments;

  friend bool operator==(const Site&, const Site&) = default;
};

/// Whether the fragment stands for an argument.
[[nodiscard]] constexpr bool isPlaceholder(std::string_view fragment) noexcept {
  return fragment == "%s" || fragment == "%u" || fragment == "%b";
}

/// Number of a registered site, which each message holds. Sites are numbered from 0 in the order of
/// their registration.
using SiteId = std::uint32_t;

/// Registers `site` process-wide and returns its id. Equal sites have the same id. The site is
/// copied, so its messages can be dumped after the library that wrote them was unloaded.
[[nodiscard]] ZEL_EXPORT SiteId siteIs(const Site& site);

/// The number of registered sites. A static object that calls this in its constructor may use sites
/// until it is destroyed.
[[nodiscard]] std::size_t siteCount() noexcept;

/// The registered site of that id. The reference stays valid.
[[nodiscard]] const Site& siteOf(SiteId id);

/// Receives every registered site, for a copy of them outside the process.
class SiteNotifiee {
 public:
  SiteNotifiee() = default;
  SiteNotifiee(const SiteNotifiee&) = delete;
  SiteNotifiee& operator=(const SiteNotifiee&) = delete;
  virtual ~SiteNotifiee() = default;

  /// Called with each site, in the order of the ids.
  virtual void onSite(const Site& site) = 0;
};

/// Calls `notifiee` with every registered site, and later with each new one.
void siteNotifieeIs(SiteNotifiee& notifiee);
/// Ends the calls of `notifiee`.
void siteNotifieeDel(const SiteNotifiee& notifiee) noexcept;

}  // namespace Blinklog
