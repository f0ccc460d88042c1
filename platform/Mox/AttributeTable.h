#pragma once

#include <concepts>
#include <functional>
#include <memory>
#include <string>
#include <tuple>
#include <type_traits>
#include <utility>

#include "Mox/HashMap2018.h"
#include "Mox/Reflection.h"

/// Functions that build the rows of a table of attributes. A row names the functions of the class
/// that implement the operations of the attribute. An operation without a function is not accepted.
///
///     constexpr Mox::Attribute attributes[] = {
///         {130, "owner", Mox::reference<&Lamp::owner>()},
///         {131, "colour", Mox::field<&Lamp::colour, &Lamp::colourIs>()},
///         {132, "switches", Mox::collection<Lamp, Lamp::Switches, &Lamp::switches>()},
///         {133, "handlePower", Mox::handler<&Lamp::handlePower>()},
///     };

namespace Mox {

/// The functions behind the rows.
namespace Rows {

/// Parameters and result of a member function, or of a free function whose first parameter is the
/// object.
template <class Function>
struct Signature;
template <class R, class O, class... P>
struct Signature<R (*)(O&, P...)> {
  using Object = std::remove_const_t<O>;
  using Result = std::remove_cvref_t<R>;
  using Parameters = std::tuple<std::remove_cvref_t<P>...>;
};
template <class R, class O, class... P>
struct Signature<R (O::*)(P...)> : Signature<R (*)(O&, P...)> {};
template <class R, class O, class... P>
struct Signature<R (O::*)(P...) noexcept> : Signature<R (*)(O&, P...)> {};
template <class R, class O, class... P>
struct Signature<R (O::*)(P...) const> : Signature<R (*)(O&, P...)> {};
template <class R, class O, class... P>
struct Signature<R (O::*)(P...) const noexcept> : Signature<R (*)(O&, P...)> {};

template <auto function>
using ObjectOf = typename Signature<decltype(function)>::Object;
template <auto function>
using ResultOf = typename Signature<decltype(function)>::Result;
template <auto function>
using ParametersOf = typename Signature<decltype(function)>::Parameters;

/// An entity is passed as a pointer to its base, a record as a pointer to itself.
template <class T>
using BaseOf = std::conditional_t<std::derived_from<T, PtrInterface>, PtrInterface, T>;
template <class T>
T& changeable(void* object) noexcept {
  return static_cast<T&>(*static_cast<BaseOf<T>*>(object));
}
template <class T>
const T& readable(const void* object) noexcept {
  return static_cast<const T&>(*static_cast<const BaseOf<T>*>(object));
}

template <auto function, class Object>
AnyValue invoke(Object& object, const Arguments& arguments) {
  using Result = ResultOf<function>;
  const auto call = [&](const auto&... each) -> decltype(auto) {
    return std::invoke(function, object, each...);
  };
  const auto given = arguments.as<ParametersOf<function>>();
  if constexpr (std::is_void_v<Result>) {
    std::apply(call, given);
    return {};
  } else {
    return Result(std::apply(call, given));
  }
}
template <auto function>
AnyValue inspected(const void* object, const Arguments& arguments) {
  return invoke<function>(readable<ObjectOf<function>>(object), arguments);
}
template <auto function>
AnyValue changed(void* object, const Arguments& arguments) {
  return invoke<function>(changeable<ObjectOf<function>>(object), arguments);
}

/// The changing function, or null.
template <auto function>
constexpr Access::Change changeOrNone() {
  if constexpr (std::is_null_pointer_v<decltype(function)>) {
    return nullptr;
  } else {
    return &changed<function>;
  }
}

template <class T>
std::string kindName() {
  if constexpr (std::is_void_v<T>) {
    return "nothing";
  } else {
    return Kind<T>::name();
  }
}
template <class... Parameters>
std::string joined(std::type_identity<std::tuple<Parameters...>> /*parameters*/) {
  std::string names;
  ((names += names.empty() ? "" : ", ", names += kindName<Parameters>()), ...);
  return names;
}
template <auto function>
std::string callKind(std::string kind) {
  kind += '(';
  kind += joined(std::type_identity<ParametersOf<function>>());
  kind += ") -> ";
  kind += kindName<ResultOf<function>>();
  return kind;
}

template <class Collection>
struct TypesOf;
template <class K, class V, unsigned salt>
struct TypesOf<HashMap2018<K, V, salt>> {
  using Key = K;
  using Value = V;
  static constexpr bool isSet = std::same_as<V, NoValue>;
};

/// One collection of an entity, read through the function that returns the collection.
template <class Entity, class Map, const Map& (Entity::*all)() const noexcept>
struct CollectionOf {
  using Key = typename TypesOf<Map>::Key;
  using Value = typename TypesOf<Map>::Value;
  static constexpr bool isSet = TypesOf<Map>::isSet;

  static const Map& whole(const void* object) noexcept { return (readable<Entity>(object).*all)(); }

  static AnyValue read(const void* object, const Arguments& arguments) {
    arguments.needCount(1);
    const Value* found = whole(object).find(arguments.at<Key>(0));
    return found == nullptr ? absent() : AnyValue(*found);
  }
  static AnyValue has(const void* object, const Arguments& arguments) {
    arguments.needCount(1);
    return whole(object).has(arguments.at<Key>(0));
  }
  static AnyValue count(const void* object, const Arguments& arguments) {
    arguments.needCount(0);
    return whole(object).count();
  }
  static AnyValue capacity(const void* object, const Arguments& arguments) {
    arguments.needCount(0);
    return whole(object).capacity();
  }
  static std::unique_ptr<Iterator> iterate(const void* object, const AnyValue* from) {
    return std::make_unique<Walk>(readable<Entity>(object), from);
  }
  static std::string kind() {
    if constexpr (isSet) {
      return std::string("set of ") + kindName<Key>();
    } else {
      return std::string("collection ") + kindName<Key>() + " -> " + kindName<Value>();
    }
  }

 private:
  // The shared default value if there is one.
  static AnyValue absent() {
    if constexpr (ValueType<Value>) {
      if (const AnyValue* shared = moxDefault(TypeOf<Value>::entry)) return *shared;
    }
    return Value();
  }

  class Walk final : public Iterator {
   public:
    Walk(const Entity& entity, const AnyValue* from)
        : entity_(&entity), at_(begin((entity.*all)(), from)) {}
    explicit operator bool() const noexcept override { return static_cast<bool>(at_); }
    [[nodiscard]] AnyValue key() const override { return at_.key(); }
    [[nodiscard]] AnyValue value() const override {
      if constexpr (isSet) {
        return {};
      } else {
        return at_.value();
      }
    }
    void next() override { ++at_; }

   private:
    static typename Map::Iterator begin(const Map& map, const AnyValue* from) {
      return from == nullptr ? map.iterator() : map.iterator(from->as<Key>());
    }

    Ptr<const Entity> entity_;
    typename Map::Iterator at_;
  };
};

/// Adds a member to a set. Nothing else can be written.
template <auto add>
AnyValue added(void* object, const Arguments& arguments) {
  using Key = std::tuple_element_t<0, ParametersOf<add>>;
  arguments.needCount(2);
  const Key key = arguments.at<Key>(0);
  if (!arguments.at<bool>(1)) throw FalseMemberException(arguments.callee());
  std::invoke(add, changeable<ObjectOf<add>>(object), key);
  return {};
}

template <class Function>
struct CreatorSignature;
template <class R, class... P>
struct CreatorSignature<R (*)(P...)> {
  using Parameters = std::tuple<std::remove_cvref_t<P>...>;
};

}  // namespace Rows

/// One value, which `reader` reads and `writer`, if there is one, writes.
template <auto reader, auto writer = nullptr>
[[nodiscard]] constexpr Access field() {
  return {
      .kind = &Rows::kindName<Rows::ResultOf<reader>>,
      .read = &Rows::inspected<reader>,
      .write = Rows::changeOrNone<writer>(),
  };
}

/// A counted pointer to another entity.
template <auto reader, auto writer = nullptr>
[[nodiscard]] constexpr Access reference() {
  static_assert(!ValueType<Rows::ResultOf<reader>>, "a value is a field");
  return field<reader, writer>();
}

/// A keyed collection, which `all` returns. `writer` takes a key and a value. `remover` takes a key
/// and returns the removed value.
template <class Entity, class Map, const Map& (Entity::*all)() const noexcept,
          auto writer = nullptr, auto remover = nullptr>
[[nodiscard]] constexpr Access collection() {
  using Collection = Rows::CollectionOf<Entity, Map, all>;
  return {
      .kind = &Collection::kind,
      .key = &TypeOf<typename Collection::Key>::entry,
      .read = &Collection::read,
      .write = Rows::changeOrNone<writer>(),
      .remove = Rows::changeOrNone<remover>(),
      .count = &Collection::count,
      .capacity = &Collection::capacity,
      .has = &Collection::has,
      .iterate = &Collection::iterate,
  };
}

/// A set of keys, which `all` returns. Reading returns whether a key is a member. Writing true adds
/// the key by `adder`; writing false throws `FalseMemberException`. `remover` takes a key and
/// returns whether it was a member.
template <class Entity, class Set, const Set& (Entity::*all)() const noexcept, auto adder,
          auto remover>
[[nodiscard]] constexpr Access set() {
  using Collection = Rows::CollectionOf<Entity, Set, all>;
  return {
      .kind = &Collection::kind,
      .key = &TypeOf<typename Collection::Key>::entry,
      .read = &Collection::has,
      .write = &Rows::added<adder>,
      .remove = &Rows::changed<remover>,
      .count = &Collection::count,
      .capacity = &Collection::capacity,
      .has = &Collection::has,
      .iterate = &Collection::iterate,
  };
}

/// A function of the entity that can be called by name or number.
template <auto function>
[[nodiscard]] constexpr Access handler() {
  return {
      .kind = [] { return Rows::callKind<function>("handler"); },
      .call = &Rows::changed<function>,
  };
}

/// A function that a derived class implements.
template <auto function>
[[nodiscard]] constexpr Access hook() {
  return {
      .kind = [] { return Rows::callKind<function>("hook"); },
      .call = &Rows::changed<function>,
  };
}

/// For `Reflection::create`: calls the static creator with the arguments.
template <auto creator>
Ptr<PtrInterface> createdBy(const Arguments& arguments) {
  using Parameters = typename Rows::CreatorSignature<decltype(creator)>::Parameters;
  return std::apply(creator, arguments.as<Parameters>());
}

/// For `Reflection::nameOf`: the name that `reader` returns.
template <auto reader>
Velo::String namedBy(const PtrInterface& entity) {
  return std::invoke(reader, static_cast<const Rows::ObjectOf<reader>&>(entity)).bytes();
}

}  // namespace Mox
