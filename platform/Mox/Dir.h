#pragma once

#include "Mox/Entity.h"
#include "Mox/HashMap2018.h"
#include "Velo/Export.h"

namespace Mox {

/// A directory: an entity that holds others under their names.
class ZEL_EXPORT Dir final : public Entity {
 public:
  static constexpr Type moxType{"Mox::Dir"};

  /// A new empty directory.
  [[nodiscard]] static Ptr<Dir> DirIs(const Velo::String& name);
  explicit Dir(const Velo::String& name) noexcept;
  ~Dir() override;
  [[nodiscard]] const Type* fwkType() const override;

  /// Adds `entity` under its name, or replaces the entry of that name, and becomes its parent.
  /// Throws `NullArgumentException` for null.
  void entryIs(const Ptr<Entity>& entity);
  /// Removes the entry and returns it; null if there was none.
  Ptr<Entity> entryDel(const Velo::String& name);
  /// The entry of that name, or null.
  [[nodiscard]] Ptr<Entity> entry(const Velo::String& name) const noexcept;
  [[nodiscard]] unsigned entries() const noexcept { return entries_.count(); }

 private:
  HashMap2018<Velo::String, Ptr<Entity>, 0x3c1d7be9> entries_;
};

}  // namespace Mox
