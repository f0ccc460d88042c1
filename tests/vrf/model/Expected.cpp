#include "Expected.h"

#include <array>

namespace VrfModel {
namespace {

// Both tables publish the first attribute of their type.
constexpr int tableAttribute = 130;

}  // namespace

void Expected::notice(Table table, const Action& action) {
  notices.add({table, tableAttribute, action});
}

std::string shown(const HookCall& call) {
  constexpr std::array<const char*, 3> names{"createVrf ", "updateVrf ", "deleteVrf "};
  return names[static_cast<std::size_t>(call.hook)] + shown(call.action);
}

std::string shown(const Message& message) {
  return "level " + std::to_string(message.level) + " line " + std::to_string(message.line) + " " +
         std::string(message.function) + ": \"" + message.text + '"';
}

std::string shown(const Notice& notice) {
  return std::string(notice.table == Table::counts ? "vrfRefCount" : "hwStatus") + " (" +
         std::to_string(notice.attribute) + ") " + shown(notice.action);
}

}  // namespace VrfModel
