#pragma once

#include "Classification/PrefixSet.h"
#include "Mox/Entity.h"
#include "Mox/Ptr.h"
#include "Mox/PublishedMap.h"
#include "Velo/Export.h"
#include "Velo/String.h"

namespace Classification {

/// The name of a prefix set. Sets of the two families may have the same name.
struct ZEL_EXPORT PrefixSetName {
  Ip::Family family = Ip::Family::v4;
  Velo::String name;

  [[nodiscard]] unsigned hash(unsigned seed) const noexcept;
  auto operator<=>(const PrefixSetName&) const = default;  // NOLINT(modernize-use-nullptr): misread
};

/// The configured sets of field values. Class maps refer to a set by its name. Subscribers are
/// notified of each real change.
class ZEL_EXPORT FieldSetConfig final : public Mox::Entity {
 public:
  static constexpr Mox::Type moxType{"Classification::FieldSetConfig"};
  static constexpr Mox::AttributeId prefixSetAttribute = 130;

  using PrefixSets = Mox::PublishedMap<PrefixSetName, SharedPrefixSet, 0x3f6a81d5>;

  [[nodiscard]] static Mox::Ptr<FieldSetConfig> FieldSetConfigIs(const Velo::String& name) {
    return Mox::makeActivePtr<FieldSetConfig>(name);
  }
  explicit FieldSetConfig(const Velo::String& name) noexcept : Entity(name) {}
  [[nodiscard]] Velo::NotifieeListDescriptor notifieeList() const override {
    return publisher_.notifieeList(this);
  }
  [[nodiscard]] const Mox::Type* fwkType() const override { return &moxType; }

  /// Precondition: the prefixes of the set are of the family.
  void prefixSetIs(const PrefixSetName& name, const SharedPrefixSet& set) {
    prefixSet_.is(name, set);
  }
  /// Removes the set. Returns whether there was one.
  bool prefixSetDel(const PrefixSetName& name) { return prefixSet_.del(name); }
  /// The set of that name, or null.
  [[nodiscard]] const SharedPrefixSet* prefixSet(const PrefixSetName& name) const noexcept {
    return prefixSet_.map().find(name);
  }
  [[nodiscard]] const PrefixSets::Map& prefixSet() const noexcept { return prefixSet_.map(); }

  /// Subscribing does not change the configuration, so it needs no write access.
  [[nodiscard]] Velo::Publisher& publisher() const noexcept { return publisher_; }

 private:
  mutable Velo::Publisher publisher_;
  PrefixSets prefixSet_{publisher_, prefixSetAttribute};
};

}  // namespace Classification
