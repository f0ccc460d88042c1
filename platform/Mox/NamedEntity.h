#pragma once

#include <concepts>

#include "Mox/Entity.h"
#include "Velo/Export.h"

namespace Mox {

/// Base of an entity that has only a name and a type. `Derived` defines the entry of the type,
/// `moxType`, and the static creator, which is named after the type.
///
///     class ZEL_EXPORT Lamps final : public Mox::NamedEntity<Lamps> {
///      public:
///       static constexpr Mox::Type moxType{"House::Lamps"};
///
///       using NamedEntity::NamedEntity;
///       [[nodiscard]] static Mox::Ptr<Lamps> LampsIs(const Velo::String& name) {
///         return Mox::makeActivePtr<Lamps>(name);
///       }
///     };
template <class Derived, class Base = Entity>
class ZEL_EXPORT NamedEntity : public Base {
  static_assert(std::derived_from<Base, Entity>);

 public:
  explicit NamedEntity(const Velo::String& name) noexcept : Base(name) {}
  [[nodiscard]] const Type* fwkType() const override { return &Derived::moxType; }
};

}  // namespace Mox
