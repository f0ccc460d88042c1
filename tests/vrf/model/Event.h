#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <string_view>

#include "Cast.h"

namespace VrfModel {

/// The kinds of events: changes of the VRF state machine and of its inputs, and calls of its
/// operations.
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

/// The number of objects of each platform type. With two, a machine can be rebuilt on the other
/// one.
inline constexpr std::uint8_t sets = 2;
/// Stands for a null object in place of a set.
inline constexpr std::uint8_t noSet = sets;

/// The inputs that a machine is built with.
struct Inputs {
  std::uint8_t routes = 0;
  std::uint8_t routes6 = 0;
  std::uint8_t fallback = 0;
  bool withCounts = true;

  friend bool operator==(const Inputs&, const Inputs&) = default;
};

/// One event of a history. Its meaning does not depend on its place in the history. Fields are
/// indices into the cast, or have the meaning that the kind gives them. A kind ignores the fields
/// that it does not use.
struct Event {
  Kind kind = Kind::countRaise;
  std::uint8_t action = 0;
  std::uint8_t name = 0;
  std::uint8_t other = 0;
  std::uint8_t family = v4;
  std::uint8_t set = 0;
  /// Changes the entity that was last removed under the name, not the present one.
  bool retired = false;
  bool on = false;
  std::uint32_t number = 0;
  Inputs inputs;
};

/// The event as one readable line.
[[nodiscard]] std::string shown(const Event& event, const Cast& cast);

}  // namespace VrfModel
