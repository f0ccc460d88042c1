#pragma once

#include <concepts>
#include <cstddef>
#include <utility>

#include "Mox/PtrInterface.h"

namespace Mox {

/// A counted pointer to an entity.
///
/// Use it wherever an entity must stay alive: as a member, and as a local variable during a call
/// that may release the entity. It has the size of a plain pointer, and a copy costs one increment.
/// `Ptr<T const>` gives read-only access to an entity that others may change.
///
///     Mox::Ptr<Mox::Dir> dir = Mox::makePtr<Mox::Dir>("routing");
///     Mox::Ptr<Mox::Dir const> view = dir;
template <class T>
class Ptr {
 public:
  Ptr() noexcept = default;
  Ptr(std::nullptr_t) noexcept {}  // NOLINT(google-explicit-constructor): null is null
  /// Shares an object that is already owned. For a new object use `makePtr`.
  explicit Ptr(T* object) noexcept : object_(object) { take(); }

  Ptr(const Ptr& other) noexcept : object_(other.object_) { take(); }
  Ptr(Ptr&& other) noexcept : object_(std::exchange(other.object_, nullptr)) {}
  template <class U>
  requires std::convertible_to<U*, T*> Ptr(const Ptr<U>& other)
  noexcept : object_(other.get()) {  // NOLINT(google-explicit-constructor)
    take();
  }
  template <class U>
  requires std::convertible_to<U*, T*> Ptr(Ptr<U>&& other)
  noexcept : object_(other.detach()) {}  // NOLINT(google-explicit-constructor)

  /// Acquires the new object before it releases the old one.
  Ptr& operator=(Ptr other) noexcept {
    swap(other);
    return *this;
  }
  ~Ptr() {
    if (object_ != nullptr) object_->referenceDel();
  }

  [[nodiscard]] T* get() const noexcept { return object_; }
  T* operator->() const noexcept { return object_; }
  T& operator*() const noexcept { return *object_; }
  explicit operator bool() const noexcept { return object_ != nullptr; }

  void swap(Ptr& other) noexcept { std::swap(object_, other.object_); }

  /// Returns the reference to the caller, which must release it.
  [[nodiscard]] T* detach() noexcept { return std::exchange(object_, nullptr); }
  /// Takes over a reference to `object` from the caller.
  [[nodiscard]] static Ptr attached(T* object) noexcept {
    Ptr owner;
    owner.object_ = object;
    return owner;
  }

  friend bool operator==(const Ptr& a, const Ptr& b) noexcept { return a.object_ == b.object_; }
  friend bool operator==(const Ptr& a, std::nullptr_t) noexcept { return a.object_ == nullptr; }

 private:
  void take() const noexcept {
    if (object_ != nullptr) object_->referenceIs();
  }

  T* object_ = nullptr;
};

/// Creates a `T` and returns its first pointer. Every entity is created by it.
template <class T, class... Arguments>
[[nodiscard]] Ptr<T> makePtr(Arguments&&... arguments) {
  return Ptr<T>::attached(new T(std::forward<Arguments>(arguments)...));
}

/// As `makePtr`, with notifications switched on. Every static creator of an entity uses it.
template <class T, class... Arguments>
[[nodiscard]] Ptr<T> makeActivePtr(Arguments&&... arguments) {
  Ptr<T> created = makePtr<T>(std::forward<Arguments>(arguments)...);
  created->hasNotificationActiveIs(true);
  return created;
}

/// `object` as a `T`; null if it is null or has another type.
template <class T, class U>
[[nodiscard]] Ptr<T> ptrCast(const Ptr<U>& object) noexcept {
  return Ptr<T>(dynamic_cast<T*>(object.get()));
}

}  // namespace Mox
