#pragma once

#include <cstdint>
#include <map>
#include <set>
#include <utility>
#include <vector>

#include "L3/VrfName.h"
#include "Mox/NotifieeConst.h"
#include "Mox/Ptr.h"
#include "Velo/Subscriber.h"
#include "chips/programs/VrfProgram.h"

namespace Chips {

/// The VRFs of which a fact has changed: the status, the hardware id, the prefix lengths in exact
/// match, or the fallback VRF. The flags of decapsulation are not facts of a VRF.
///
///     ChangedVrfs changed({fallbackConfig, routeStatus, routeStatusV6});
///     routeStatus->vrfStatusIs("red");
///     changed.take();                       // red
///     changed.take();                       // none
class ChangedVrfs final {
 public:
  /// Any input may be null. A null input does not change.
  explicit ChangedVrfs(ProgramInputs inputs);
  ChangedVrfs(const ChangedVrfs&) = delete;
  ChangedVrfs& operator=(const ChangedVrfs&) = delete;
  ~ChangedVrfs();

  /// The VRFs with a change since the last call.
  [[nodiscard]] std::set<L3::VrfName> take();

 private:
  class Watch;  // of one entity
  enum class Fact : std::uint8_t { status, lengths, lengthsV6 };
  using RouteStatusBase = Routing::Hardware::RouteStatusBase;
  using EntityPtr = Mox::Ptr<Mox::PtrInterface const>;

  void watchRoutes(const Mox::Ptr<RouteStatusBase const>& routes, Fact lengths);
  void watchStatus(const L3::VrfName& vrf);
  void watchLengths(const RouteStatusBase& routes, Fact lengths, const Velo::String& name);
  // `entity` is null if the fact has none now.
  void watch(Fact fact, const L3::VrfName& vrf, const EntityPtr& entity);

  ProgramInputs inputs_;
  std::set<L3::VrfName> changed_;
  std::vector<Mox::Ptr<Watch>> routeWatches_;
  std::map<std::pair<Fact, L3::VrfName>, Mox::Ptr<Watch>> watches_;
  Velo::MemberSubscriber<ChangedVrfs> fallbackSubscriber_{*this};
};

}  // namespace Chips
