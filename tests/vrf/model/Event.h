#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <string_view>

#include "Cast.h"

namespace VrfModel {

/// What can happen to the VRF state machine and to what it depends on.
enum class Kind : std::uint8_t {
  countRaise,
  countLower,
  countSet,
  countDelete,
  countDeleteAll,
  fallbackSet,
  fallbackDelete,
  fallbackDeleteAll,
  statusMake,
  statusReplace,
  statusDelete,
  statusDeleteAll,
  statusId,
  lensMake,
  lensReplace,
  lensDelete,
  lensDeleteAll,
  lenAdd,
  lenDelete,
  lenDeleteAll,
  decapNh,
  decapNhFallback,
  topActive,
  machineActive,
  machineZombie,
  machineBuild,
  machineDrop,
  callUpdates,
  callUpdateAction,
  callUpdateAll,
  callFallback,
  callCount,
  callDecapNh,
  callDecapNhFallback,
};
inline constexpr std::size_t kinds = static_cast<std::size_t>(Kind::callDecapNhFallback) + 1;

/// The address families, as indices.
inline constexpr std::uint8_t v4 = 0;
inline constexpr std::uint8_t v6 = 1;

/// There are two of each platform object, so that a machine can be rebuilt on the other one.
inline constexpr std::uint8_t sets = 2;
/// Stands for a null object where a set is expected.
inline constexpr std::uint8_t noSet = sets;

/// What a machine is built with.
struct Inputs {
  std::uint8_t routes = 0;
  std::uint8_t routes6 = 0;
  std::uint8_t fallback = 0;
  bool withCounts = true;

  friend bool operator==(const Inputs&, const Inputs&) = default;
};

/// One thing that happens. It means the same wherever it stands in a history; its fields are
/// indices into the cast, or mean what the kind says, and those that a kind does not use are
/// ignored.
struct Event {
  Kind kind = Kind::countRaise;
  std::uint8_t action = 0;
  std::uint8_t name = 0;
  std::uint8_t other = 0;
  std::uint8_t family = v4;
  std::uint8_t set = 0;
  /// Befalls the entity that was last taken out under the name, not the present one.
  bool retired = false;
  bool on = false;
  std::uint32_t number = 0;
  Inputs inputs;
};

/// The event as one readable line.
[[nodiscard]] std::string shown(const Event& event, const Cast& cast);

}  // namespace VrfModel
