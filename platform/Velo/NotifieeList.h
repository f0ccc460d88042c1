#pragma once

#include <algorithm>
#include <cstddef>
#include <vector>

#include "Velo/ScopeStack.h"

namespace Velo {

/// Access to the notifiees of an entity through its base class, for tools.
///
/// Kind `none` has no list, and its operations are null. `notifiee` is a
/// `Mox::PtrInterface::NotifieeConst*` for kind `reactors` and a `Velo::Subscriber*` for kind
/// `publisher`.
struct NotifieeListDescriptor {
  enum class Kind : unsigned char { none = 0, reactors = 1, publisher = 2 };
  using Visitor = void (*)(void* context, void* notifiee);

  Kind kind = Kind::none;
  /// The entity that notifies.
  const void* entity = nullptr;
  /// First argument of the operations below.
  void* list = nullptr;
  /// Adds a notifiee. Returns false if it was present.
  bool (*add)(void* list, void* notifiee) = nullptr;
  /// Removes a notifiee. Returns false if it was absent.
  bool (*remove)(void* list, void* notifiee) = nullptr;
  /// Calls the visitor for each notifiee.
  void (*visit)(void* list, Visitor visitor, void* context) = nullptr;
  /// Returns the notifiee after `previous`, the first one for null, and null at the end. Null while
  /// there is no notifiee.
  void* (*iterate)(void* list, const void* previous) = nullptr;
};

/// The notifiees of one object, in the order in which they were added.
///
/// Invariants: a notifiee is in the list at most once. During a visit, places are set to null but
/// never moved, so notifiees may be added, removed and destroyed. A visit calls no notifiee after
/// its removal, none twice, and none that was added after the visit began. If the list is
/// destroyed, the visit ends. Visits nest. Empty places are removed by the next use of the list
/// without a visit. A visit does not allocate.
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

  /// The notifiee after `previous`, the first one for null; null at the end.
  [[nodiscard]] Notifiee* next(const Notifiee* previous) const noexcept {
    auto place = places_.begin();
    if (previous != nullptr) place = std::find(place, places_.end(), previous);
    if (place != places_.end() && previous != nullptr) ++place;
    place = std::find_if(place, places_.end(), [](const Notifiee* n) { return n != nullptr; });
    return place == places_.end() ? nullptr : *place;
  }

  /// Calls `visitor(notifiee)` for each present notifiee that is not removed before its turn.
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
