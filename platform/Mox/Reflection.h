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

/// What is asked of an attribute, or of a record as a whole, by number. Numbers without a name
/// here are asked of nothing.
enum class Operation : unsigned char {
  /// The value; of a collection that of a key, the default value when it is absent.
  read = 0,
  /// Sets the value; of a collection that of a key.
  write = 1,
  /// Deletes the entry of a key and gives what it held.
  remove = 2,
  /// Number of entries of a collection.
  count = 3,
  /// Number of entries that a collection holds before it must grow.
  capacity = 4,
  /// Whether a collection has a key.
  has = 5,
  /// Calls a handler or hook with its arguments and gives its result.
  call = 10,
  /// Whether a record differs from a default one.
  isSet = 11,
  /// Whether a record equals another one.
  isEqual = 12,
  /// Whether a record comes before another one.
  isLess = 13,
};

/// A walk over the entries of a collection attribute. It survives the deletion of the entry that it
/// stands on, and of any other, and keeps the entity alive.
///
///     for (auto entry = Mox::iterate(*table, 130); *entry; entry->next()) show(entry->key());
class ZEL_EXPORT Iterator {
 public:
  Iterator(const Iterator&) = delete;
  Iterator& operator=(const Iterator&) = delete;
  virtual ~Iterator();

  /// Whether it stands on an entry, or on the place of one that was deleted; false at the end.
  [[nodiscard]] virtual explicit operator bool() const noexcept = 0;
  /// Key and value of the entry. Precondition: the entry is there. A member of a set has no value.
  [[nodiscard]] virtual AnyValue key() const = 0;
  [[nodiscard]] virtual AnyValue value() const = 0;
  /// Goes on to the next entry. Precondition: it is not at the end.
  virtual void next() = 0;

 protected:
  Iterator() = default;
};

/// How the operations on one attribute are carried out; an operation without a function is not
/// accepted. The object is an entity's base or a record, of the type that the attribute belongs to.
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

  /// The functions by operation, null where it is not of that sort or not accepted.
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

/// One row of a type's table of attributes. `Mox/AttributeTable.h` has what rows are made of.
struct Attribute {
  AttributeId number;
  std::string_view name;
  Access access;

  [[nodiscard]] std::string kind() const { return access.kind(); }
  [[nodiscard]] constexpr bool accepts(Operation operation) const noexcept {
    return access.inspect(operation) != nullptr || access.change(operation) != nullptr;
  }
};

/// What can be done with values of a type that only their addresses are known of.
/// `Mox/ValueTable.h` has what such tables are made of.
struct ValueOperations {
  /// A new value from the arguments of its constructor, the default one when there are none.
  void* (*construct)(const Arguments& arguments);
  void* (*copy)(const void* value);
  void (*destroy)(void* value) noexcept;
  /// Equal values hash equally.
  unsigned (*hash)(const void* value);
  Velo::String (*text)(const void* value);
  /// A new value from its string form; throws `RangeException`.
  void* (*parse)(std::string_view text);
  bool (*isEqual)(const void* a, const void* b);
  /// Whether the value differs from a default one; null when that is not asked of the type.
  bool (*isSet)(const void* value) = nullptr;
  /// Whether `a` comes before `b`; null for a type without an order.
  bool (*isLess)(const void* a, const void* b) = nullptr;
};

/// All that can be done with a type by name and number.
struct ZEL_EXPORT Reflection {
  std::span<const Attribute> attributes = {};
  /// Of a type of values.
  const ValueOperations* value = nullptr;
  /// Of an enumeration: the names of its codes 0, 1, ...
  std::span<const std::string_view> (*names)() = nullptr;
  /// Of an entity that can be created: a new one from the arguments of its static creator.
  Ptr<PtrInterface> (*create)(const Arguments& arguments) = nullptr;
  /// Of an entity: the name by which it is shown, if it is no `Mox::Entity`.
  Velo::String (*nameOf)(const PtrInterface& entity) = nullptr;
};

/// The attribute of that number or name, null when the type has none.
[[nodiscard]] ZEL_EXPORT const Attribute* findAttribute(const Type& type,
                                                        AttributeId number) noexcept;
[[nodiscard]] ZEL_EXPORT const Attribute* findAttribute(const Type& type,
                                                        std::string_view name) noexcept;

}  // namespace Mox
