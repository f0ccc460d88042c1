#include "ZelVrfSelectionPolicy/tables/ActionsByVrf.h"

#include <algorithm>
#include <array>

namespace ZelVrfSelectionPolicy {
namespace {

// Maximum capacity that an empty list keeps.
constexpr std::size_t maxKept = 16;

using Names = std::array<const L3::VrfName*, 3>;

Names namesOf(const VrfAction& action) noexcept {
  return {&action.vrfName(), &action.fallbackVrfName(), &action.postDecapVrfName()};
}

// Whether `field` is the first field with its name.
bool isFirstWithName(const Names& names, unsigned field) noexcept {
  return std::none_of(names.begin(), names.begin() + field,
                      [&](const L3::VrfName* earlier) { return *earlier == *names[field]; });
}

}  // namespace

void ActionsByVrf::insert(Position at, const VrfAction& action) {
  const std::size_t places = place(at + 1, 0);
  if (indexInList_.size() < places) indexInList_.resize(places);
  const Names names = namesOf(action);
  for (unsigned field = 0; field < fields; ++field) {
    if (isFirstWithName(names, field)) link(place(at, field), *names[field]);
  }
}

void ActionsByVrf::erase(Position at, const VrfAction& action) noexcept {
  const Names names = namesOf(action);
  for (unsigned field = 0; field < fields; ++field) {
    if (isFirstWithName(names, field)) unlink(place(at, field), *names[field]);
  }
}

void ActionsByVrf::clear() noexcept {
  for (List& list : lists_) {
    std::fill(list.places.begin(), list.places.end(), none);
    list.entries = 0;
    tidy(list);
  }
  indexInList_.clear();
  indexInList_.shrink_to_fit();
}

void ActionsByVrf::link(Place place, const L3::VrfName& name) {
  if (lists_.size() <= name.number()) lists_.resize(name.number() + 1);
  List& list = lists_[name.number()];
  indexInList_[place] = static_cast<std::uint32_t>(list.places.size());
  list.places.push_back(place);
  ++list.entries;
}

void ActionsByVrf::unlink(Place place, const L3::VrfName& name) noexcept {
  List& list = lists_[name.number()];
  list.places[indexInList_[place]] = none;
  --list.entries;
  tidy(list);
}

// Removes holes, unless there is a walk over the list.
void ActionsByVrf::tidy(List& list) noexcept {
  if (list.walks != 0) return;
  while (!list.places.empty() && list.places.back() == none)
    list.places.pop_back();
  if (list.places.empty() && list.places.capacity() > maxKept) {
    std::vector<Place>().swap(list.places);
  } else if (list.entries < list.places.size() / 2) {
    closeHoles(list);
  }
}

void ActionsByVrf::closeHoles(List& list) noexcept {
  std::erase(list.places, none);
  for (std::uint32_t index = 0; index < list.places.size(); ++index)
    indexInList_[list.places[index]] = index;
}

}  // namespace ZelVrfSelectionPolicy
