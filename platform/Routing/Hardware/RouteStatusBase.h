#pragma once

#include "L3/VrfName.h"
#include "Mox/HashMap2018.h"
#include "Mox/NotifieeConst.h"
#include "Routing/Hardware/PrefixLensInExactMatch.h"
#include "Routing/Hardware/VrfStatus.h"
#include "Velo/Export.h"
#include "Velo/String.h"

namespace Routing::Hardware {

/// What the hardware knows of the routes of one address family; common to both families.
///
/// Reactors are told of a change of a flag, and with the key of each entry that enters, leaves or
/// is replaced in a collection.
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

  /// The status of that VRF, made if there is none.
  Mox::Ptr<VrfStatus> vrfStatusIs(const L3::VrfName& name);
  /// Puts `status` under its name, in place of any other. Throws `Mox::NullArgumentException`.
  void vrfStatusIs(const Mox::Ptr<VrfStatus>& status);
  /// Takes the status out and gives it; null when there was none.
  Mox::Ptr<VrfStatus> vrfStatusDel(const L3::VrfName& name);
  void vrfStatusDelAll();
  /// The status of that VRF, or null.
  [[nodiscard]] Mox::Ptr<VrfStatus> vrfStatus(const L3::VrfName& name) const noexcept;
  [[nodiscard]] const VrfStatuses& vrfStatus() const noexcept { return vrfStatus_; }

  /// The prefix lengths of the VRF of that name, made empty if there are none.
  Mox::Ptr<PrefixLensInExactMatch> vrfPrefixLensInExactMatchIs(const Velo::String& name);
  /// Puts `lengths` under their name, in place of any other. Throws `Mox::NullArgumentException`.
  void vrfPrefixLensInExactMatchIs(const Mox::Ptr<PrefixLensInExactMatch>& lengths);
  /// Takes the prefix lengths out and gives them; null when there were none.
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
