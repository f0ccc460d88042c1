#include "Outcome.h"

namespace VrfModel {
namespace {

unsigned scrambled(unsigned value) {
  value = (value ^ value >> 16) * 0x45d9f3bU;
  return value ^ value >> 16;
}

unsigned numberOf(const Action& action) {
  unsigned number = action.type;
  for (const Name* name : {&action.vrf, &action.fallback, &action.postDecap}) {
    for (const char byte : *name)
      number = number * 31 + static_cast<unsigned char>(byte);
    number = number * 31 + 1;
  }
  return number;
}

}  // namespace

Status outcomeOf(const Action& action, unsigned call) {
  switch (scrambled(numberOf(action) + call * 0x9e3779b9U) % 10) {
    case 0:
      return {1, 1, "no room"};
    case 1:
      return {1, 2, "all used"};
    case 2:
      return {1, 2, "still all used"};
    case 3:
      return {0, 0, "after a retry"};
    case 4:
      return {0, 1, ""};
    default:
      return {};
  }
}

std::string shown(const Status& status) {
  return "result " + std::to_string(status.result) + ", reason " + std::to_string(status.reason) +
         ", '" + status.description + "'";
}

}  // namespace VrfModel
