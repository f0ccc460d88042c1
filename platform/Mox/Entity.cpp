#include "Mox/Entity.h"

#include <utility>

namespace Mox {

Entity::Entity(Velo::String name) noexcept : name_(std::move(name)) {}

Entity::~Entity() = default;

const Type* Entity::fwkType() const {
  return &moxType;
}

Velo::String Entity::nameString() const {
  return name_;
}

void Entity::handleParent(const Ptr<Entity>& /*parent*/) {}

Ptr<Entity> Entity::parent() const noexcept {
  return Ptr<Entity>(parent_);
}

void Entity::parentIs(const Ptr<Entity>& parent) {
  if (parent_ == parent.get()) return;
  parent_ = parent.get();
  handleParent(parent);
}

}  // namespace Mox
