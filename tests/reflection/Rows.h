#pragma once

#include <functional>
#include <ostream>
#include <string>
#include <vector>

#include "World.h"

namespace ZelVrfSelectionPolicy::Testing {

/// What is expected of one attribute: its place in its type, its kind, the numbers of the
/// operations that it accepts, and arguments with which a `World` carries them out.
struct Row {
  using Values = std::function<std::vector<Mox::AnyValue>(const World&)>;

  const char* type;
  short number;
  const char* name;
  std::string kind;
  std::vector<int> operations;
  /// The key of an entry, if it is a collection.
  Values key = nothing;
  /// What to write, or to call with.
  Values value = nothing;

  static std::vector<Mox::AnyValue> nothing(const World& /*world*/) { return {}; }

  [[nodiscard]] bool accepts(int operation) const;
  /// The arguments of that operation.
  [[nodiscard]] std::vector<Mox::AnyValue> arguments(int operation, const World& world) const;

  friend void PrintTo(const Row& row, std::ostream* stream) {
    *stream << row.type << " " << row.number << " " << row.name;
  }
};

/// Every attribute of every registered type.
[[nodiscard]] const std::vector<Row>& everyRow();

}  // namespace ZelVrfSelectionPolicy::Testing
