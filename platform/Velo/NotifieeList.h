#pragma once

#include <algorithm>
#include <cstddef>
#include <vector>

#include "Velo/ScopeStack.h"

namespace Velo {

/// How a tool that knows an entity only by its base reaches those whom it notifies.
///
/// Kind `none` has no list and null operations. `notifiee` is a `Mox::PtrInterface::NotifieeConst*`
/// for kind `reactors` and a `Velo::Subscriber*` for kind `publisher`.
struct NotifieeListDescriptor {
  enum class Kind : unsigned char { none = 0, reactors = 1, publisher = 2 };
  using Visitor = void (*)(void* context, void* notifiee);

  Kind kind = Kind::none;
  /// The entity that notifies.
  const void* entity = nullptr;
  /// First argument of the operations below.
  void* list = nullptr;
  /// Adds a notifiee; false when it was there already.
  bool (*add)(void* list, void* notifiee) = nullptr;
  /// Removes a notifiee; false when it was not there.
  bool (*remove)(void* list, void* notifiee) = nullptr;
  /// Calls the visitor for each notifiee.
  void (*visit)(void* list, Visitor visitor, void* context) = nullptr;
  /// The notifiee after `previous` (the first one after null), null at the end. Given only while
  /// there is at least one notifiee.
  void* (*iterate)(void* list, const void* previous) = nullptr;
};

/// Those whom one object notifies, in the order in which they were added.
///
/// Invariants: a notifiee is in the list at most once. While a visit is under way places are
/// emptied but never moved, so a visit goes on whatever is added, removed or destroyed under it:
/// nobody is visited after removal, nobody twice, nobody who was added after the visit began, and
/// a visit of a list that is destroyed meanwhile ends quietly. Visits nest. Holes are closed when
/// the list is used next with no visit under way. A visit does not allocate.
template <class Notifiee>
class NotifieeList {
 public:
  bool add(Notifiee& notifiee) {
    if (has(notifiee)) return false;
    closeHoles();
    places_.push_back(&notifiee);
    ++size_;
    return true;
  }

  bool remove(const Notifiee& notifiee) noexcept {
    const auto place = std::find(places_.begin(), places_.end(), &notifiee);
    if (place == places_.end()) return false;
    *place = nullptr;
    --size_;
    closeHoles();
    return true;
  }

  [[nodiscard]] bool has(const Notifiee& notifiee) const noexcept {
    return std::find(places_.begin(), places_.end(), &notifiee) != places_.end();
  }
  [[nodiscard]] std::size_t size() const noexcept { return size_; }
  [[nodiscard]] bool empty() const noexcept { return size_ == 0; }

  /// The notifiee after `previous`, the first one after null; null at the end.
  [[nodiscard]] Notifiee* next(const Notifiee* previous) const noexcept {
    auto place = places_.begin();
    if (previous != nullptr) place = std::find(place, places_.end(), previous);
    if (place != places_.end() && previous != nullptr) ++place;
    place = std::find_if(place, places_.end(), [](const Notifiee* n) { return n != nullptr; });
    return place == places_.end() ? nullptr : *place;
  }

  /// Calls `visitor(notifiee)` for each notifiee present now and still there at its turn.
  template <class Visitor>
  void visit(Visitor&& visitor) {
    closeHoles();
    const typename Visits::Scope current(visits_);
    const std::size_t size = places_.size();
    for (std::size_t place = 0; place < size; ++place) {
      Notifiee* notifiee = places_[place];
      if (notifiee == nullptr) continue;
      visitor(*notifiee);
      if (current.isOrphan()) return;
    }
  }

 private:
  struct Visit {};
  using Visits = ScopeStack<Visit>;

  void closeHoles() noexcept {
    if (places_.size() != size_ && visits_.empty()) std::erase(places_, nullptr);
  }

  std::vector<Notifiee*> places_;
  std::size_t size_ = 0;
  Visits visits_;
};

/// The descriptor of `list`, which `entity` owns.
template <class Notifiee>
NotifieeListDescriptor describe(NotifieeListDescriptor::Kind kind, const void* entity,
                                NotifieeList<Notifiee>& list) noexcept {
  using List = NotifieeList<Notifiee>;
  NotifieeListDescriptor descriptor;
  descriptor.kind = kind;
  descriptor.entity = entity;
  descriptor.list = &list;
  descriptor.add = [](void* to, void* notifiee) {
    return static_cast<List*>(to)->add(*static_cast<Notifiee*>(notifiee));
  };
  descriptor.remove = [](void* from, void* notifiee) {
    return static_cast<List*>(from)->remove(*static_cast<Notifiee*>(notifiee));
  };
  descriptor.visit = [](void* visited, NotifieeListDescriptor::Visitor visitor, void* context) {
    static_cast<List*>(visited)->visit([&](Notifiee& notifiee) { visitor(context, &notifiee); });
  };
  if (!list.empty()) {
    descriptor.iterate = [](void* iterated, const void* previous) -> void* {
      return static_cast<List*>(iterated)->next(static_cast<const Notifiee*>(previous));
    };
  }
  return descriptor;
}

}  // namespace Velo
