#pragma once

#include <initializer_list>
#include <memory>
#include <span>

#include "Mox/Reflection.h"
#include "Velo/Export.h"

namespace Mox {

/// How an operation by number was answered. These are codes, not exceptions: asking for what is
/// not there is not an error of the one who asks.
enum class ReturnCode : unsigned char {
  success = 0,
  /// The attribute is known but does not accept the operation.
  notSupported = 1,
  unknownAttribute = 2,
};

/// What an operation by number gives: its code, and on success the result, if it has one.
struct Answer {
  ReturnCode code;
  AnyValue value = {};
};

/// An entity or a record whose type is known at run time only, under the entry of its type.
///
/// It is made where an argument asks for it, and keeps nothing alive. An object that may only be
/// read accepts no operation that changes it.
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
  /// Null when it may only be read.
  [[nodiscard]] void* changeable() const noexcept { return changeable_; }

 private:
  const Type& type_;
  const void* readable_;
  void* changeable_ = nullptr;
};

/// Carries out `operation` on the attribute of that number. The arguments are, in this order: the
/// key for a collection, the value to write, what a handler takes. Throws `ArgumentException` when
/// they are not what the attribute takes, and whatever the attribute's own function throws.
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

/// Carries out `operation` on a record as a whole: `isSet`, or `isEqual` and `isLess` with the
/// other record as argument. Anything else, and anything of an entity, is not supported.
ZEL_EXPORT Answer accessWhole(const Object& object, Operation operation,
                              std::span<const AnyValue> arguments = {});
inline Answer accessWhole(const Object& object, Operation operation,
                          std::initializer_list<AnyValue> arguments) {
  return accessWhole(object, operation, std::span(arguments.begin(), arguments.size()));
}

/// A walk over the collection of that number, from its first entry or from that of `key`, which
/// leads to the end when it is absent. Null when the attribute is no collection.
[[nodiscard]] ZEL_EXPORT std::unique_ptr<Iterator> iterate(const Object& object,
                                                           AttributeId attribute);
[[nodiscard]] ZEL_EXPORT std::unique_ptr<Iterator> iterate(const Object& object,
                                                           AttributeId attribute,
                                                           const AnyValue& key);

/// A new entity of `type` from the arguments of its static creator. Null when the type has none;
/// throws `ArgumentException` when it takes other arguments.
///
///     Mox::create(*Mox::moxType("ZelVrfSelectionPolicy::VrfHwConfig"));
[[nodiscard]] ZEL_EXPORT Ptr<PtrInterface> create(const Type& type,
                                                  std::span<const AnyValue> arguments = {});
[[nodiscard]] inline Ptr<PtrInterface> create(const Type& type,
                                              std::initializer_list<AnyValue> arguments) {
  return create(type, std::span(arguments.begin(), arguments.size()));
}

}  // namespace Mox
