#include "ZelVrfSelectionPolicy/tables/ActionsByVrf.h"

#include <algorithm>

namespace ZelVrfSelectionPolicy {
namespace {

using Names = std::array<const L3::VrfName*, 3>;

Names namesOf(const VrfAction& action) noexcept {
  return {&action.vrfName(), &action.fallbackVrfName(), &action.postDecapVrfName()};
}

// Whether no earlier field has the name of `field`.
bool isFirstWithName(const Names& names, unsigned field) noexcept {
  return std::none_of(names.begin(), names.begin() + field,
                      [&](const L3::VrfName* earlier) { return *earlier == *names[field]; });
}

}  // namespace

void ActionsByVrf::insert(Position at, const VrfAction& action) {
  if (links_.size() < place(at + 1, 0)) links_.resize(place(at + 1, 0));
  const Names names = namesOf(action);
  unsigned field = 0;
  try {
    for (; field < fields; ++field) {
      if (isFirstWithName(names, field)) link(place(at, field), *names[field]);
    }
  } catch (...) {
    while (field-- != 0) {
      if (isFirstWithName(names, field)) unlink(place(at, field), *names[field]);
    }
    throw;
  }
}

void ActionsByVrf::erase(Position at, const VrfAction& action) noexcept {
  const Names names = namesOf(action);
  for (unsigned field = 0; field < fields; ++field) {
    if (isFirstWithName(names, field)) unlink(place(at, field), *names[field]);
  }
}

void ActionsByVrf::clear() noexcept {
  first_.clear();
  links_.clear();
  links_.shrink_to_fit();
  for (Walk* walk = innermost_; walk != nullptr; walk = walk->outer_)
    walk->next_ = none;
}

void ActionsByVrf::link(Place place, const L3::VrfName& name) {
  const auto [list, isNew] = first_.insert(name, place);
  links_[place] = {none, isNew ? none : first_.value(list)};
  if (isNew) return;
  links_[first_.value(list)].previous = place;
  first_.value(list) = place;
}

void ActionsByVrf::unlink(Place place, const L3::VrfName& name) noexcept {
  const Links gone = links_[place];
  for (Walk* walk = innermost_; walk != nullptr; walk = walk->outer_) {
    if (walk->next_ == place) walk->next_ = gone.next;
  }
  if (gone.next != none) links_[gone.next].previous = gone.previous;
  if (gone.previous != none) {
    links_[gone.previous].next = gone.next;
  } else if (gone.next != none) {
    *first_.find(name) = gone.next;
  } else {
    first_.erase(name);
  }
}

ActionsByVrf::Walk::Walk(ActionsByVrf& actions, const L3::VrfName& vrfName) noexcept
    : actions_(actions), next_(none), outer_(actions.innermost_) {
  if (const Place* first = actions.first_.find(vrfName)) next_ = *first;
  actions.innermost_ = this;
}

ActionsByVrf::Walk::~Walk() {
  actions_.innermost_ = outer_;
}

ActionsByVrf::Position ActionsByVrf::Walk::next() noexcept {
  if (next_ == none) return none;
  const Place current = next_;
  next_ = actions_.links_[current].next;
  return current / fields;
}

}  // namespace ZelVrfSelectionPolicy
