#include "Mox/AnyValue.h"

#include "Mox/Reflection.h"

namespace Mox {
namespace {

const ValueOperations& operationsOf(const Type& type) {
  if (type.reflection == nullptr || type.reflection->value == nullptr) {
    throw ArgumentException(std::string(type.name) + " is not a type of values");
  }
  return *type.reflection->value;
}

}  // namespace

AnyValue::AnyValue(const AnyValue& other)
    : type_(other.type_),
      value_(type_ == nullptr ? nullptr : operationsOf(*type_).copy(other.value_)) {}

AnyValue& AnyValue::operator=(AnyValue other) noexcept {
  std::swap(type_, other.type_);
  std::swap(value_, other.value_);
  return *this;
}

AnyValue::~AnyValue() {
  if (type_ != nullptr) operationsOf(*type_).destroy(value_);
}

AnyValue AnyValue::ofType(const Type& type, std::span<const AnyValue> arguments) {
  return {&type, operationsOf(type).construct(Arguments(type.name, arguments))};
}

AnyValue AnyValue::copyOf(const Type& type, const void* value) {
  return {&type, operationsOf(type).copy(value)};
}

AnyValue AnyValue::parsed(const Type& type, std::string_view text) {
  return {&type, operationsOf(type).parse(text)};
}

void AnyValue::copyFrom(const Type& type, const void* value) {
  if (type_ != &type) refuse(std::string(type.name));
  *this = copyOf(type, value);
}

std::string AnyValue::describe() const {
  if (type_ == nullptr) return "no value";
  const std::string kind(type_->name);
  const bool isPtr = type_ == &entityPtrType || type_ == &constEntityPtrType;
  return isPtr ? kind + " to " + text().str() : kind;
}

unsigned AnyValue::hash() const {
  return type_ == nullptr ? 0 : operationsOf(*type_).hash(value_);
}

Velo::String AnyValue::text() const {
  return type_ == nullptr ? Velo::String() : operationsOf(*type_).text(value_);
}

bool AnyValue::isEqual(const AnyValue& other) const {
  return type_ == other.type_ &&
         (type_ == nullptr || operationsOf(*type_).isEqual(value_, other.value_));
}

void AnyValue::refuse(const std::string& expected) const {
  throw ArgumentException("expected a value of the kind " + expected + ", found " + describe());
}

}  // namespace Mox
