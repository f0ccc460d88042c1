#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <utility>
#include <variant>
#include <vector>

namespace ZelAgent {

struct JsonMember;

/// A number that is not a whole number from 0 to 2^64 - 1, as its document writes it.
struct JsonOtherNumber {
  std::string text;
};

/// One value of a JSON document, with its place in the order of the document.
///
/// The members of an object keep their order, and each name occurs once. A value nests at most
/// `Limits::documentLevels` levels.
class JsonValue final {
 public:
  using Array = std::vector<JsonValue>;
  using Object = std::vector<JsonMember>;
  using Content = std::variant<std::nullptr_t, bool, std::uint64_t, JsonOtherNumber, std::string,
                               Array, Object>;

  JsonValue();
  JsonValue(Content content, std::size_t order);

  /// The content if it is of the type, otherwise null.
  template <class Type>
  [[nodiscard]] const Type* as() const noexcept {
    return std::get_if<Type>(&content_);
  }
  template <class Type>
  [[nodiscard]] Type* as() noexcept {
    return std::get_if<Type>(&content_);
  }
  /// A value has a smaller number than every value that begins after it in the document.
  [[nodiscard]] std::size_t order() const noexcept { return order_; }

 private:
  Content content_;
  std::size_t order_ = 0;
};

struct JsonMember {
  std::string name;
  JsonValue value;
};

inline JsonValue::JsonValue() = default;
inline JsonValue::JsonValue(Content content, std::size_t order)
    : content_(std::move(content)), order_(order) {}

}  // namespace ZelAgent
