#pragma once

#include "Mox/Entity.h"
#include "Mox/PublishedMap.h"
#include "PolicyMap/ClassMatch.h"
#include "Velo/Export.h"

namespace PolicyMap {

/// The configured class maps. Rules of policy maps refer to a class map by its name. Subscribers
/// are notified of each real change.
class ZEL_EXPORT ClassMapTypeConfig final : public Mox::Entity {
 public:
  static constexpr Mox::Type moxType{"PolicyMap::ClassMapTypeConfig"};
  static constexpr Mox::AttributeId classMapAttribute = 130;

  using ClassMaps = Mox::PublishedMap<Velo::String, SharedClassMatch, 0x2d0c94b7>;

  [[nodiscard]] static Mox::Ptr<ClassMapTypeConfig> ClassMapTypeConfigIs(const Velo::String& name) {
    return Mox::makeActivePtr<ClassMapTypeConfig>(name);
  }
  explicit ClassMapTypeConfig(const Velo::String& name) noexcept : Entity(name) {}
  [[nodiscard]] Velo::NotifieeListDescriptor notifieeList() const override {
    return publisher_.notifieeList(this);
  }
  [[nodiscard]] const Mox::Type* fwkType() const override { return &moxType; }

  void classMapIs(const Velo::String& name, const SharedClassMatch& match) {
    classMap_.is(name, match);
  }
  /// Removes the class map. Returns whether there was one.
  bool classMapDel(const Velo::String& name) { return classMap_.del(name); }
  /// The class map of that name, or null.
  [[nodiscard]] const SharedClassMatch* classMap(const Velo::String& name) const noexcept {
    return classMap_.map().find(name);
  }
  [[nodiscard]] const ClassMaps::Map& classMap() const noexcept { return classMap_.map(); }

  /// Subscribing does not change the configuration, so it needs no write access.
  [[nodiscard]] Velo::Publisher& publisher() const noexcept { return publisher_; }

 private:
  mutable Velo::Publisher publisher_;
  ClassMaps classMap_{publisher_, classMapAttribute};
};

}  // namespace PolicyMap
