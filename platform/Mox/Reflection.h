#pragma once

#include <memory>
#include <span>
#include <string>
#include <string_view>

#include "Mox/AnyValue.h"
#include "Mox/Arguments.h"
#include "Mox/Ptr.h"
#include "Mox/Type.h"
#include "Velo/Export.h"

namespace Mox {

/// An operation on an attribute, or on a whole record. Its number is part of the interface. Numbers
/// without a name here are not used.
enum class Operation : unsigned char {
  /// Returns the value. Of a collection: the value of a key; the default value if the key is
  /// absent.
  read = 0,
  /// Sets the value. Of a collection: the value of a key.
  write = 1,
  /// Deletes the entry of a key and returns its value.
  remove = 2,
  /// Number of entries of a collection.
  count = 3,
  /// Number of entries of a collection that fit before it grows.
  capacity = 4,
  /// Whether a collection has a key.
  has = 5,
  /// Calls a handler or hook with its arguments and returns its result.
  call = 10,
  /// Whether a record differs from a default one.
  isSet = 11,
  /// Whether a record equals another one.
  isEqual = 12,
  /// Whether a record is less than another one.
  isLess = 13,
};

/// An iteration over the entries of a collection attribute. It stays valid when entries are
/// deleted, also the one that it stands on, and keeps the entity alive.
///
///     for (auto entry = Mox::iterate(*table, 130); *entry; entry->next()) show(entry->key());
class ZEL_EXPORT Iterator {
 public:
  Iterator(const Iterator&) = delete;
  Iterator& operator=(const Iterator&) = delete;
  virtual ~Iterator();

  /// Whether it stands on an entry or on the slot of a deleted one; false at the end.
  [[nodiscard]] virtual explicit operator bool() const noexcept = 0;
  /// Key and value of the entry. Precondition: the entry is not deleted. A member of a set has no
  /// value.
  [[nodiscard]] virtual AnyValue key() const = 0;
  [[nodiscard]] virtual AnyValue value() const = 0;
  /// Advances to the next entry. Precondition: it is not at the end.
  virtual void next() = 0;

 protected:
  Iterator() = default;
};

/// The functions that implement the operations on one attribute. An operation without a function is
/// not accepted. `object` points to the base of an entity, or to a record, of the type that has the
/// attribute.
struct Access {
  using Inspect = AnyValue (*)(const void* object, const Arguments& arguments);
  using Change = AnyValue (*)(void* object, const Arguments& arguments);
  using Iterate = std::unique_ptr<Iterator> (*)(const void* object, const AnyValue* from);

  /// The kind in words, such as "collection ZelVrfSelectionPolicy::VrfAction -> unsigned".
  std::string (*kind)() = nullptr;
  /// The type of the keys of a collection; null for anything else.
  const Type* key = nullptr;
  Inspect read = nullptr;
  Change write = nullptr;
  Change remove = nullptr;
  Inspect count = nullptr;
  Inspect capacity = nullptr;
  Inspect has = nullptr;
  Change call = nullptr;
  Iterate iterate = nullptr;

  /// The function of an operation; null if it is not accepted or not of that kind.
  [[nodiscard]] constexpr Inspect inspect(Operation operation) const noexcept {
    switch (operation) {
      case Operation::read:
        return read;
      case Operation::count:
        return count;
      case Operation::capacity:
        return capacity;
      case Operation::has:
        return has;
      default:
        return nullptr;
    }
  }
  [[nodiscard]] constexpr Change change(Operation operation) const noexcept {
    switch (operation) {
      case Operation::write:
        return write;
      case Operation::remove:
        return remove;
      case Operation::call:
        return call;
      default:
        return nullptr;
    }
  }
};

/// One row of a type's table of attributes. `Mox/AttributeTable.h` has functions that build rows.
struct Attribute {
  AttributeId number;
  std::string_view name;
  Access access;

  [[nodiscard]] std::string kind() const { return access.kind(); }
  [[nodiscard]] constexpr bool accepts(Operation operation) const noexcept {
    return access.inspect(operation) != nullptr || access.change(operation) != nullptr;
  }
};

/// The operations on the values of a type, which are passed by address. `Mox/ValueTable.h` has
/// functions that build this table.
struct ValueOperations {
  /// A new value from the arguments of its constructor; the default value without arguments.
  void* (*construct)(const Arguments& arguments);
  void* (*copy)(const void* value);
  void (*destroy)(void* value) noexcept;
  /// Equal values hash equally.
  unsigned (*hash)(const void* value);
  Velo::String (*text)(const void* value);
  /// A new value from its string form; throws `RangeException`.
  void* (*parse)(std::string_view text);
  bool (*isEqual)(const void* a, const void* b);
  /// Whether the value differs from the default value; null if the type has no such operation.
  bool (*isSet)(const void* value) = nullptr;
  /// Whether `a` is less than `b`; null for a type without an order.
  bool (*isLess)(const void* a, const void* b) = nullptr;
};

/// The operations of a type by name and number.
struct ZEL_EXPORT Reflection {
  std::span<const Attribute> attributes = {};
  /// Of a type of values.
  const ValueOperations* value = nullptr;
  /// Of an enumeration: the names of its codes 0, 1, ...
  std::span<const std::string_view> (*names)() = nullptr;
  /// Of an entity with a static creator: creates an entity from the arguments of that creator.
  Ptr<PtrInterface> (*create)(const Arguments& arguments) = nullptr;
  /// Of an entity that is not a `Mox::Entity`: the name that is shown.
  Velo::String (*nameOf)(const PtrInterface& entity) = nullptr;
};

/// The attribute of that number or name, or null.
[[nodiscard]] ZEL_EXPORT const Attribute* findAttribute(const Type& type,
                                                        AttributeId number) noexcept;
[[nodiscard]] ZEL_EXPORT const Attribute* findAttribute(const Type& type,
                                                        std::string_view name) noexcept;

}  // namespace Mox
