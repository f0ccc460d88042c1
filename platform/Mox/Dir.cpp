#include "Mox/Dir.h"

#include "Mox/Exceptions.h"

namespace Mox {
namespace {

// The entry may have another parent by now.
void leave(const Dir* dir, Entity& entry) {
  if (entry.parent().get() == dir) entry.parentIs(nullptr);
}

}  // namespace

Ptr<Dir> Dir::DirIs(const Velo::String& name) {
  return makeActivePtr<Dir>(name);
}

Dir::Dir(const Velo::String& name) noexcept : Entity(name) {}

Dir::~Dir() {
  for (auto entry = entries_.iterator(); entry; ++entry)
    leave(this, *entry.value());
}

const Type* Dir::fwkType() const {
  return &moxType;
}

void Dir::entryIs(const Ptr<Entity>& entity) {
  if (!entity) throw NullArgumentException("entry");
  if (entry(entity->name()) == entity) return;
  entryDel(entity->name());
  entries_.insert(entity->name(), entity);
  entity->parentIs(Ptr<Entity>(this));
}

Ptr<Entity> Dir::entryDel(const Velo::String& name) {
  auto erased = entries_.erase(name);
  if (!erased) return nullptr;
  leave(this, *erased->second);
  return std::move(erased->second);
}

Ptr<Entity> Dir::entry(const Velo::String& name) const noexcept {
  const Ptr<Entity>* found = entries_.find(name);
  return found == nullptr ? Ptr<Entity>() : *found;
}

}  // namespace Mox
