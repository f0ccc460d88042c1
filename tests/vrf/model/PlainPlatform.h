#pragma once

#include <array>
#include <map>
#include <memory>
#include <set>

#include "Cast.h"
#include "Event.h"

namespace VrfModel {

// The platform's state as plain values. An entity that a machine may still watch after its removal
// has a number. Numbers follow the order of creation.

struct VrfStatus {
  unsigned number = 0;
  Name name;
  unsigned id = 0;
};

struct PrefixLens {
  unsigned number = 0;
  Name name;
  std::set<unsigned> lengths;
};

/// Entities by name, and the last entity that was removed or replaced under each name.
template <class Entity>
struct Entities {
  using Pointer = std::shared_ptr<Entity>;

  std::map<Name, Pointer> present;
  std::map<Name, Pointer> retired;

  [[nodiscard]] Pointer find(const Name& name, bool isRetired = false) const {
    const auto& entities = isRetired ? retired : present;
    const auto found = entities.find(name);
    return found == entities.end() ? nullptr : found->second;
  }
  void put(const Pointer& entity) {
    take(entity->name);
    present[entity->name] = entity;
  }
  /// Removes the entity. Returns whether there was one.
  bool take(const Name& name) {
    const auto found = present.find(name);
    if (found == present.end()) return false;
    retired[name] = found->second;
    present.erase(found);
    return true;
  }
};

struct RouteStatus {
  Entities<VrfStatus> statuses;
  Entities<PrefixLens> lens;
  bool decapNh = false;
  bool decapNhFallback = false;
};

using FallbackConfig = std::map<Name, Name>;

struct PlainPlatform {
  std::array<std::array<RouteStatus, sets>, 2> routes;
  std::array<FallbackConfig, sets> fallbacks;
};

}  // namespace VrfModel
