#pragma once

#include <concepts>

#include "Mox/Entity.h"
#include "Velo/Export.h"

namespace Mox {

/// Base of an entity that is held and handed on: a name and a type of its own. `Derived` brings
/// the entry of that type, `moxType`, and the static creator, which is named after it.
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
