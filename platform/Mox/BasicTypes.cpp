#include <charconv>
#include <functional>
#include <string>

#include "Mox/Entity.h"
#include "Mox/NotifieeConst.h"
#include "Mox/QuotedString.h"
#include "Mox/ValueTable.h"

// The entries of the types that every module may use: truth values, counts, strings and counted
// pointers to entities.

namespace Mox {
namespace {

Velo::String boolText(const void* value) {
  return Values::as<bool>(value) ? "true" : "false";
}

void* parsedBool(std::string_view text) {
  if (text != "true" && text != "false") CharRange(text).fail("true or false");
  return new bool(text == "true");
}

unsigned boolHash(const void* value) {
  return hashSingleAttr(0, boolText(value).bytes());
}

Velo::String unsignedText(const void* value) {
  return std::to_string(Values::as<unsigned>(value));
}

// Every number has one form: "07" and "+7" are malformed.
void* parsedUnsigned(std::string_view text) {
  unsigned value = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
  const bool isWhole = error == std::errc() && end == text.data() + text.size();
  if (!isWhole || std::to_string(value) != text) {
    CharRange(text).fail("a number from 0 to 4294967295");
  }
  return new unsigned(value);
}

unsigned unsignedHash(const void* value) {
  return hashSingleAttr(0, unsignedText(value).bytes());
}

// The name that is shown for `entity`. For a reactor it is the name of its notifier.
Velo::String nameOf(const PtrInterface& entity) {
  const Reflection* reflection = entity.fwkType()->reflection;
  if (reflection != nullptr && reflection->nameOf != nullptr) return reflection->nameOf(entity);
  if (const auto* named = dynamic_cast<const Entity*>(&entity)) return named->nameString();
  const auto* reactor = dynamic_cast<const PtrInterface::NotifieeConst*>(&entity);
  if (reactor != nullptr && reactor->notifier()) return nameOf(*reactor->notifier());
  return {};
}

template <class Pointer>
Velo::String pointerText(const void* value) {
  const auto& entity = Values::as<Pointer>(value);
  if (!entity) return "null";
  const Velo::String name = nameOf(*entity);
  std::string text(entity->fwkType()->name);
  if (!name.empty()) text += ' ' + quoted(name.bytes());
  return text;
}

// An entity cannot be parsed.
template <class Pointer>
void* parsedPointer(std::string_view text) {
  if (text != "null") CharRange(text).fail("null");
  return new Pointer();
}

template <class Pointer>
unsigned pointerHash(const void* value) {
  return static_cast<unsigned>(std::hash<const void*>()(Values::as<Pointer>(value).get()));
}

template <class Pointer>
constexpr ValueOperations pointerOperations{
    .construct = &Values::constructed<Pointer>,
    .copy = &Values::copied<Pointer>,
    .destroy = &Values::destroyed<Pointer>,
    .hash = &pointerHash<Pointer>,
    .text = &pointerText<Pointer>,
    .parse = &parsedPointer<Pointer>,
    .isEqual = &Values::areEqual<Pointer>,
};

constexpr ValueOperations boolOperations{
    .construct = &Values::constructed<bool>,
    .copy = &Values::copied<bool>,
    .destroy = &Values::destroyed<bool>,
    .hash = &boolHash,
    .text = &boolText,
    .parse = &parsedBool,
    .isEqual = &Values::areEqual<bool>,
};

constexpr ValueOperations unsignedOperations{
    .construct = &Values::constructed<unsigned>,
    .copy = &Values::copied<unsigned>,
    .destroy = &Values::destroyed<unsigned>,
    .hash = &unsignedHash,
    .text = &unsignedText,
    .parse = &parsedUnsigned,
    .isEqual = &Values::areEqual<unsigned>,
};

constexpr ValueOperations stringOperations = simpleOperations<Velo::String>();

constexpr Reflection boolReflection{.value = &boolOperations};
constexpr Reflection unsignedReflection{.value = &unsignedOperations};
constexpr Reflection stringReflection{.value = &stringOperations};
constexpr Reflection entityPtrReflection{.value = &pointerOperations<Ptr<PtrInterface>>};
constexpr Reflection constEntityPtrReflection{.value = &pointerOperations<Ptr<PtrInterface const>>};

}  // namespace

constinit const Type boolType{"bool", &boolReflection};
constinit const Type unsignedType{"unsigned", &unsignedReflection};
constinit const Type stringType{"Velo::String", &stringReflection};
constinit const Type entityPtrType{"Mox::Ptr<Mox::PtrInterface>", &entityPtrReflection};
constinit const Type constEntityPtrType{"Mox::Ptr<Mox::PtrInterface const>",
                                        &constEntityPtrReflection};

}  // namespace Mox
