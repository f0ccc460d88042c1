#pragma once

#include <concepts>
#include <span>
#include <string>
#include <string_view>
#include <type_traits>
#include <utility>

#include "Mox/Exceptions.h"
#include "Mox/Ptr.h"
#include "Mox/Type.h"
#include "Velo/Export.h"
#include "Velo/String.h"

namespace Mox {

/// The entry of the type `T`: `TypeOf<T>::entry`. It is the member `moxType` of a class. Other
/// types have a specialisation.
template <class T>
struct TypeOf {};

template <class T>
requires requires {
  T::moxType;
}
struct TypeOf<T> {
  static constexpr const Type& entry = T::moxType;
};

/// The types that every module may use without registering them.
ZEL_EXPORT extern const Type boolType;
ZEL_EXPORT extern const Type unsignedType;
ZEL_EXPORT extern const Type stringType;
ZEL_EXPORT extern const Type entityPtrType;
ZEL_EXPORT extern const Type constEntityPtrType;

template <>
struct TypeOf<bool> {
  static constexpr const Type& entry = boolType;
};
template <>
struct TypeOf<unsigned> {
  static constexpr const Type& entry = unsignedType;
};
template <>
struct TypeOf<Velo::String> {
  static constexpr const Type& entry = stringType;
};
template <>
struct TypeOf<Ptr<PtrInterface>> {
  static constexpr const Type& entry = entityPtrType;
};
template <>
struct TypeOf<Ptr<PtrInterface const>> {
  static constexpr const Type& entry = constEntityPtrType;
};

/// A type whose values an `AnyValue` holds as they are.
template <class T>
concept ValueType = !std::derived_from<T, PtrInterface> && requires {
  TypeOf<T>::entry;
};

/// How an `AnyValue` holds a value of type `T`, and the name of its kind.
template <class T>
struct Kind;

/// One value of any registered value type, or no value. Attributes are read and written as such
/// values.
///
/// Use it where the type is known at run time only. It owns a copy of its value and knows the entry
/// of its type. Reading the value as another type throws `ArgumentException`. A counted pointer to
/// an entity is held as a pointer to `PtrInterface` and is returned as a pointer to the type of the
/// entity. A pointer to a constant entity stays one. A value costs one allocation. The module of
/// the type must stay loaded.
///
///     Mox::AnyValue count = 3u;
///     count.as<unsigned>();                    // 3
///     count.as<bool>();                        // throws
///     Mox::AnyValue helper = vrfHelper;        // a Mox::Ptr<VrfHelper>
///     helper.as<Mox::Ptr<VrfHelper const>>();  // the same object
class ZEL_EXPORT AnyValue {
 public:
  /// No value.
  AnyValue() noexcept = default;
  template <ValueType T>
  AnyValue(T value)  // NOLINT(google-explicit-constructor): any value is one
      : type_(&TypeOf<T>::entry), value_(new T(std::move(value))) {}
  template <class Entity>
  requires(!ValueType<Ptr<Entity>>)
      AnyValue(Ptr<Entity> entity)  // NOLINT(google-explicit-constructor): as above
      : AnyValue(typename Kind<Ptr<Entity>>::Carried(std::move(entity))) {}

  AnyValue(const AnyValue& other);
  AnyValue(AnyValue&& other) noexcept
      : type_(std::exchange(other.type_, nullptr)), value_(std::exchange(other.value_, nullptr)) {}
  AnyValue& operator=(AnyValue other) noexcept;
  ~AnyValue();

  /// The value of `type` that its constructor makes from `arguments`; the default value without
  /// arguments. Throws `ArgumentException` if it takes other arguments.
  [[nodiscard]] static AnyValue ofType(const Type& type, std::span<const AnyValue> arguments = {});
  /// A copy of the value of `type` at `value`.
  [[nodiscard]] static AnyValue copyOf(const Type& type, const void* value);
  /// The value of `type` with the string form `text`. Throws `RangeException` if there is none.
  [[nodiscard]] static AnyValue parsed(const Type& type, std::string_view text);

  /// The entry of the value's type, null for no value.
  [[nodiscard]] const Type* type() const noexcept { return type_; }
  /// The value itself, null for no value.
  [[nodiscard]] const void* value() const noexcept { return value_; }
  [[nodiscard]] void* value() noexcept { return value_; }

  /// Whether `as<T>()` returns a value.
  template <class T>
  [[nodiscard]] bool holds() const noexcept {
    return Kind<T>::isIn(*this);
  }
  /// The value as a `T`. Throws `ArgumentException` if it has another type.
  template <class T>
  [[nodiscard]] T as() const {
    if (!holds<T>()) refuse(Kind<T>::name());
    return Kind<T>::outOf(*this);
  }

  /// Replaces the value by a copy of the value of `type` at `value`. Throws `ArgumentException` if
  /// the present value has another type.
  void copyFrom(const Type& type, const void* value);

  /// A description for messages: the kind of the value and, for a pointer, the type of the entity.
  [[nodiscard]] std::string describe() const;
  /// Hash of the value; equal values hash equally. 0 for no value.
  [[nodiscard]] unsigned hash() const;
  /// The string form; empty for no value.
  [[nodiscard]] Velo::String text() const;

  friend bool operator==(const AnyValue& a, const AnyValue& b) { return a.isEqual(b); }

 private:
  AnyValue(const Type* type, void* value) noexcept : type_(type), value_(value) {}

  [[nodiscard]] bool isEqual(const AnyValue& other) const;
  [[noreturn]] void refuse(const std::string& expected) const;

  const Type* type_ = nullptr;
  void* value_ = nullptr;
};

/// A value type is held as it is.
template <ValueType T>
struct Kind<T> {
  static std::string name() { return std::string(TypeOf<T>::entry.name); }
  static bool isIn(const AnyValue& value) noexcept { return value.type() == &TypeOf<T>::entry; }
  static const T& outOf(const AnyValue& value) noexcept {
    return *static_cast<const T*>(value.value());
  }
};

/// A counted pointer is held as a pointer to `PtrInterface`, and returned as a pointer to the type
/// of the entity. Null can be read as any kind of pointer. A pointer to a constant entity stays
/// one.
template <class Entity>
struct Kind<Ptr<Entity>> {
  static constexpr bool isConst = std::is_const_v<Entity>;
  using Changeable = Ptr<PtrInterface>;
  using Readable = Ptr<PtrInterface const>;
  using Carried = std::conditional_t<isConst, Readable, Changeable>;

  static std::string name() {
    if constexpr (ValueType<Ptr<Entity>>) {
      return std::string(TypeOf<Ptr<Entity>>::entry.name);
    } else {
      return std::string("Mox::Ptr<") + entityName() + (isConst ? " const>" : ">");
    }
  }
  static bool isIn(const AnyValue& value) noexcept {
    if (value.type() == &entityPtrType) return isOrNull(carried<Changeable>(value));
    if (value.type() == &constEntityPtrType) return isOrNull(carried<Readable>(value));
    return false;
  }
  static Ptr<Entity> outOf(const AnyValue& value) noexcept {
    if (value.type() == &entityPtrType) return ptrCast<Entity>(carried<Changeable>(value));
    if constexpr (isConst) return ptrCast<Entity>(carried<Readable>(value));
    return nullptr;
  }

 private:
  static std::string entityName() {
    if constexpr (requires { Entity::typeName; }) {
      return Entity::typeName;
    } else {
      return std::string(TypeOf<std::remove_const_t<Entity>>::entry.name);
    }
  }
  template <class Pointer>
  static const Pointer& carried(const AnyValue& value) noexcept {
    return *static_cast<const Pointer*>(value.value());
  }
  template <class Pointer>
  static bool isOrNull(const Pointer& pointer) noexcept {
    constexpr bool isReadable = isConst || std::same_as<Pointer, Changeable>;
    return !pointer || (isReadable && ptrCast<const Entity>(pointer));
  }
};

}  // namespace Mox
