#pragma once

#include "Mox/Ptr.h"
#include "Velo/Export.h"
#include "Velo/String.h"

namespace Mox {

/// An entity with a name and a parent, which it does not own.
class ZEL_EXPORT Entity : public PtrInterface {
 public:
  static constexpr Type moxType{"Mox::Entity"};

  [[nodiscard]] const Type* fwkType() const override;
  ~Entity() override;

  /// The name as it is shown.
  [[nodiscard]] virtual Velo::String nameString() const;
  /// Called after the parent has changed to `parent`, which may be null.
  virtual void handleParent(const Ptr<Entity>& parent);

  [[nodiscard]] const Velo::String& name() const noexcept { return name_; }
  /// The parent, or null.
  [[nodiscard]] Ptr<Entity> parent() const noexcept;
  /// Sets the parent, which must reset it before it is destroyed.
  void parentIs(const Ptr<Entity>& parent);

 protected:
  explicit Entity(Velo::String name) noexcept;

 private:
  Velo::String name_;
  Entity* parent_ = nullptr;
};

}  // namespace Mox
