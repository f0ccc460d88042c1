#pragma once

#include <initializer_list>
#include <memory>
#include <span>

#include "Mox/Reflection.h"
#include "Velo/Export.h"

namespace Mox {

/// The result code of an operation by number. It is a code and not an exception, since the caller
/// need not know which attributes exist.
enum class ReturnCode : unsigned char {
  success = 0,
  /// The attribute is known but does not accept the operation.
  notSupported = 1,
  unknownAttribute = 2,
};

/// The result of an operation by number: its code and, on success, the returned value if there is
/// one.
struct Answer {
  ReturnCode code;
  AnyValue value = {};
};

/// A reference to an entity or a record whose type is known at run time only.
///
/// It is made by implicit conversion for the functions below, and keeps nothing alive. A constant
/// object accepts no operation that changes it.
class ZEL_EXPORT Object {
 public:
  Object(PtrInterface& entity)  // NOLINT(google-explicit-constructor): every entity is one
      : type_(*entity.fwkType()), readable_(&entity), changeable_(&entity) {}
  Object(const PtrInterface& entity)  // NOLINT(google-explicit-constructor): as above
      : type_(*entity.fwkType()), readable_(&entity) {}
  /// Precondition: there is a value.
  Object(AnyValue& record)  // NOLINT(google-explicit-constructor): as above
      : type_(*record.type()), readable_(record.value()), changeable_(record.value()) {}
  Object(const AnyValue& record)  // NOLINT(google-explicit-constructor): as above
      : type_(*record.type()), readable_(record.value()) {}

  [[nodiscard]] const Type& type() const noexcept { return type_; }
  [[nodiscard]] const void* readable() const noexcept { return readable_; }
  /// Null for a constant object.
  [[nodiscard]] void* changeable() const noexcept { return changeable_; }

 private:
  const Type& type_;
  const void* readable_;
  void* changeable_ = nullptr;
};

/// Executes `operation` on the attribute of that number. The arguments are, in this order: the key
/// for a collection, the value to write, the arguments of a handler. Throws `ArgumentException` for
/// wrong arguments, and any exception of the attribute's function.
///
///     Mox::access(*users, 130, Mox::Operation::write, {action, 3u});
///     Mox::access(*users, 130, Mox::Operation::read, {action}).value.as<unsigned>();    // 3
///     Mox::access(*users, 131, Mox::Operation::read).code;               // unknownAttribute
ZEL_EXPORT Answer access(const Object& object, AttributeId attribute, Operation operation,
                         std::span<const AnyValue> arguments = {});
inline Answer access(const Object& object, AttributeId attribute, Operation operation,
                     std::initializer_list<AnyValue> arguments) {
  return access(object, attribute, operation, std::span(arguments.begin(), arguments.size()));
}

/// Executes `operation` on a whole record: `isSet`, or `isEqual` and `isLess` with the other record
/// as argument. Other operations, and all operations on an entity, are not supported.
ZEL_EXPORT Answer accessWhole(const Object& object, Operation operation,
                              std::span<const AnyValue> arguments = {});
inline Answer accessWhole(const Object& object, Operation operation,
                          std::initializer_list<AnyValue> arguments) {
  return accessWhole(object, operation, std::span(arguments.begin(), arguments.size()));
}

/// An iteration over the collection of that number, from its first entry or from the entry of
/// `key`. It is at the end if `key` is absent. Null if the attribute is not a collection.
[[nodiscard]] ZEL_EXPORT std::unique_ptr<Iterator> iterate(const Object& object,
                                                           AttributeId attribute);
[[nodiscard]] ZEL_EXPORT std::unique_ptr<Iterator> iterate(const Object& object,
                                                           AttributeId attribute,
                                                           const AnyValue& key);

/// A new entity of `type` from the arguments of its static creator. Null if the type has no
/// creator. Throws `ArgumentException` for wrong arguments.
///
///     Mox::create(*Mox::moxType("ZelVrfSelectionPolicy::VrfHwConfig"));
[[nodiscard]] ZEL_EXPORT Ptr<PtrInterface> create(const Type& type,
                                                  std::span<const AnyValue> arguments = {});
[[nodiscard]] inline Ptr<PtrInterface> create(const Type& type,
                                              std::initializer_list<AnyValue> arguments) {
  return create(type, std::span(arguments.begin(), arguments.size()));
}

}  // namespace Mox
