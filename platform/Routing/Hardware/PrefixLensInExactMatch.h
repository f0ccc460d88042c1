#pragma once

#include <bitset>

#include "Mox/NotifieeConst.h"
#include "Velo/Export.h"
#include "Velo/String.h"

namespace Routing::Hardware {

/// The prefix lengths of one VRF that are in exact match. Reactors are notified of each length that
/// is added or removed.
class ZEL_EXPORT PrefixLensInExactMatch final : public Mox::PtrInterface {
 public:
  static const Mox::Type moxType;
  static constexpr Mox::AttributeId prefixLenAttribute = 258;
  /// The longest prefix of either address family.
  static constexpr unsigned char longest = 128;

  /// `name` is the name of the VRF.
  [[nodiscard]] static Mox::Ptr<PrefixLensInExactMatch> PrefixLensInExactMatchIs(
      const Velo::String& name);
  explicit PrefixLensInExactMatch(const Velo::String& name) noexcept;
  [[nodiscard]] Velo::NotifieeListDescriptor notifieeList() const override;
  [[nodiscard]] const Mox::Type* fwkType() const override;
  ~PrefixLensInExactMatch() override;

  [[nodiscard]] const Velo::String& name() const noexcept { return name_; }
  /// Adds a length. Throws `Mox::RangeException` if it is above `longest`.
  void prefixLenIs(unsigned char length);
  /// Removes a length. Returns whether it was present.
  bool prefixLenDel(unsigned char length);
  /// Removes every length.
  void prefixLenDelAll();
  [[nodiscard]] bool prefixLenHas(unsigned char length) const noexcept;
  [[nodiscard]] unsigned prefixLens() const noexcept;
  /// All lengths, with a bit for each.
  [[nodiscard]] const std::bitset<longest + 1>& lengths() const noexcept { return lengths_; }

 private:
  Velo::String name_;
  std::bitset<longest + 1> lengths_;
  mutable Mox::ReactorList reactors_;
};

}  // namespace Routing::Hardware
