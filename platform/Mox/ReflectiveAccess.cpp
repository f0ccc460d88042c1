#include "Mox/ReflectiveAccess.h"

namespace Mox {
namespace {

const void* sameType(const Type& type, const AnyValue& other) {
  if (other.type() == &type) return other.value();
  throw ArgumentException(std::string(type.name) + ": expected another of its kind, found " +
                          other.describe());
}

std::unique_ptr<Iterator> iterateFrom(const Object& object, AttributeId number,
                                      const AnyValue* key) {
  const Attribute* attribute = findAttribute(object.type(), number);
  if (attribute == nullptr || attribute->access.iterate == nullptr) return nullptr;
  return attribute->access.iterate(object.readable(), key);
}

}  // namespace

Answer access(const Object& object, AttributeId attribute, Operation operation,
              std::span<const AnyValue> arguments) {
  const Attribute* found = findAttribute(object.type(), attribute);
  if (found == nullptr) return {ReturnCode::unknownAttribute};
  const Arguments given(found->name, arguments);
  if (const auto inspect = found->access.inspect(operation)) {
    return {ReturnCode::success, inspect(object.readable(), given)};
  }
  const auto change = found->access.change(operation);
  if (change == nullptr || object.changeable() == nullptr) return {ReturnCode::notSupported};
  return {ReturnCode::success, change(object.changeable(), given)};
}

Answer accessWhole(const Object& object, Operation operation, std::span<const AnyValue> arguments) {
  const Type& type = object.type();
  if (type.reflection == nullptr || type.reflection->value == nullptr) {
    return {ReturnCode::notSupported};
  }
  const ValueOperations& record = *type.reflection->value;
  const Arguments given(type.name, arguments);
  if (operation == Operation::isSet && record.isSet != nullptr) {
    given.needCount(0);
    return {ReturnCode::success, record.isSet(object.readable())};
  }
  const auto compare = operation == Operation::isEqual  ? record.isEqual
                       : operation == Operation::isLess ? record.isLess
                                                        : nullptr;
  if (compare == nullptr) return {ReturnCode::notSupported};
  given.needCount(1);
  return {ReturnCode::success, compare(object.readable(), sameType(type, arguments[0]))};
}

std::unique_ptr<Iterator> iterate(const Object& object, AttributeId attribute) {
  return iterateFrom(object, attribute, nullptr);
}

std::unique_ptr<Iterator> iterate(const Object& object, AttributeId attribute,
                                  const AnyValue& key) {
  return iterateFrom(object, attribute, &key);
}

Ptr<PtrInterface> create(const Type& type, std::span<const AnyValue> arguments) {
  if (type.reflection == nullptr || type.reflection->create == nullptr) return nullptr;
  return type.reflection->create(Arguments(type.name, arguments));
}

}  // namespace Mox
