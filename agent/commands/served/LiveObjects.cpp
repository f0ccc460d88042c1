#include "agent/commands/served/LiveObjects.h"

#include <set>
#include <utility>

namespace ZelAgent {
namespace {

using Mox::AnyValue;
using Mox::Attribute;
using Mox::PtrInterface;
using Entity = Mox::Ptr<PtrInterface const>;

bool isEntity(const AnyValue& value) {
  return value.type() == &Mox::entityPtrType || value.type() == &Mox::constEntityPtrType;
}

Entity entityIn(const AnyValue& value) {
  return isEntity(value) ? value.as<Entity>() : Entity();
}

// Visits every object that can be reached through attributes.
class Walk {
 public:
  explicit Walk(const Mox::Type& wanted) : wanted_(wanted) {}

  // Visits an entity or a record of that key. `label` is the string form of the key.
  void visit(const std::string& label, const AnyValue& value, const AnyValue& key) {
    const Entity entity = entityIn(value);
    if (isEntity(value) && (!entity || !seen_.insert(entity.get()).second)) return;
    const LiveObject found{label, value, key};
    const Mox::Object object = found.object();
    if (&object.type() == &wanted_ && (entity || labels_.insert(label).second)) {
      found_.push_back(found);
    }
    if (entity && object.type().reflection != nullptr) visitAttributes(object);
  }
  [[nodiscard]] std::vector<LiveObject> takeFound() { return std::move(found_); }

 private:
  void visitAttributes(const Mox::Object& object) {
    for (const Attribute& attribute : object.type().reflection->attributes) {
      if (attribute.access.iterate != nullptr) {
        visitEntries(object, attribute);
      } else if (attribute.access.read != nullptr) {
        visit("", Mox::access(object, attribute.number, Mox::Operation::read).value, {});
      }
    }
  }

  void visitEntries(const Mox::Object& object, const Attribute& attribute) {
    for (const auto entry = Mox::iterate(object, attribute.number); *entry; entry->next()) {
      const AnyValue key = entry->key();
      const std::string label = key.text().str();
      visit(label, key, key);
      if (const AnyValue value = entry->value(); value.type() != nullptr) visit(label, value, key);
    }
  }

  const Mox::Type& wanted_;
  std::set<const PtrInterface*> seen_;
  std::set<std::string> labels_;  // of the records that were found
  std::vector<LiveObject> found_;
};

}  // namespace

Mox::Object LiveObject::object() const {
  if (const Entity entity = entityIn(value)) return *entity;
  return value;
}

std::vector<LiveObject> liveObjects(const PtrInterface& top, const Mox::Type& type) {
  Walk walk(type);
  walk.visit("", Entity(&top), {});
  return walk.takeFound();
}

}  // namespace ZelAgent
