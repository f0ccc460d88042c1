#pragma once

#include "L3/VrfName.h"
#include "Mox/HashMap2018.h"
#include "Mox/NotifieeConst.h"
#include "Routing/Hardware/PrefixLensInExactMatch.h"
#include "Routing/Hardware/VrfStatus.h"
#include "Velo/Export.h"
#include "Velo/String.h"

namespace Routing::Hardware {

/// The status of the routes of one address family in the hardware; the base for both families.
///
/// Reactors are notified of a change of a flag, and of each entry that is added, removed or
/// replaced in a collection, with its key.
class ZEL_EXPORT RouteStatusBase : public Mox::PtrInterface {
 public:
  static constexpr Mox::AttributeId prefixLensAttribute = 259;
  static constexpr Mox::AttributeId vrfStatusAttribute = 392;
  static constexpr Mox::AttributeId decapNhFallbackEnabledAttribute = 404;
  static constexpr Mox::AttributeId decapNhEnabledAttribute = 406;

  using VrfStatuses = Mox::HashMap2018<L3::VrfName, Mox::Ptr<VrfStatus>, 0x51ed270b>;
  using PrefixLens = Mox::HashMap2018<Velo::String, Mox::Ptr<PrefixLensInExactMatch>, 0x2f9be6cc>;

  [[nodiscard]] Velo::NotifieeListDescriptor notifieeList() const override;
  ~RouteStatusBase() override;

  /// Returns the status of that VRF, and creates it if there is none.
  Mox::Ptr<VrfStatus> vrfStatusIs(const L3::VrfName& name);
  /// Adds `status` under its name, or replaces the present one. Throws `Mox::NullArgumentException`
  /// for null.
  void vrfStatusIs(const Mox::Ptr<VrfStatus>& status);
  /// Removes the status and returns it; null if there was none.
  Mox::Ptr<VrfStatus> vrfStatusDel(const L3::VrfName& name);
  void vrfStatusDelAll();
  /// The status of that VRF, or null.
  [[nodiscard]] Mox::Ptr<VrfStatus> vrfStatus(const L3::VrfName& name) const noexcept;
  [[nodiscard]] const VrfStatuses& vrfStatus() const noexcept { return vrfStatus_; }

  /// Returns the prefix lengths of the VRF of that name, and creates an empty set if there is none.
  Mox::Ptr<PrefixLensInExactMatch> vrfPrefixLensInExactMatchIs(const Velo::String& name);
  /// Adds `lengths` under their name, or replaces the present ones. Throws
  /// `Mox::NullArgumentException` for null.
  void vrfPrefixLensInExactMatchIs(const Mox::Ptr<PrefixLensInExactMatch>& lengths);
  /// Removes the prefix lengths and returns them; null if there were none.
  Mox::Ptr<PrefixLensInExactMatch> vrfPrefixLensInExactMatchDel(const Velo::String& name);
  void vrfPrefixLensInExactMatchDelAll();
  /// The prefix lengths of the VRF of that name, or null.
  [[nodiscard]] Mox::Ptr<PrefixLensInExactMatch> vrfPrefixLensInExactMatch(
      const Velo::String& name) const noexcept;
  [[nodiscard]] const PrefixLens& vrfPrefixLensInExactMatch() const noexcept { return prefixLens_; }

  /// Whether next hops may decapsulate.
  [[nodiscard]] bool decapNhEnabled() const noexcept { return decapNhEnabled_; }
  void decapNhEnabledIs(bool enabled);
  /// Whether a decapsulating next hop may fall back.
  [[nodiscard]] bool decapNhFallbackEnabled() const noexcept { return decapNhFallbackEnabled_; }
  void decapNhFallbackEnabledIs(bool enabled);

 protected:
  RouteStatusBase() = default;

 private:
  VrfStatuses vrfStatus_;
  PrefixLens prefixLens_;
  bool decapNhEnabled_ = false;
  bool decapNhFallbackEnabled_ = false;
  mutable Mox::ReactorList reactors_;
};

}  // namespace Routing::Hardware
