#pragma once

#include <string>
#include <string_view>

#include "Velo/Export.h"

namespace Mox {

/// A text that a strict parser reads from the front.
///
/// A reading function either consumes exactly what it expects or throws a `RangeException` that
/// states what was expected, at which byte, and what was found. The text must outlive the range.
///
///     Mox::CharRange range(text);
///     range.needString("{'name': ");
///     L3::VrfName name = Mox::deserializeAttr<L3::VrfName>(range, "name");
///     range.needString("}");
class ZEL_EXPORT CharRange {
 public:
  explicit CharRange(std::string_view text) noexcept : text_(text) {}

  [[nodiscard]] bool atEnd() const noexcept { return next_ == text_.size(); }
  /// The text that is not consumed yet.
  [[nodiscard]] std::string_view rest() const noexcept { return text_.substr(next_); }
  /// Consumes `size` bytes. Precondition: at least `size` bytes are left.
  void advance(std::size_t size) noexcept { next_ += size; }

  /// Consumes `literal`, which must be next.
  void needString(std::string_view literal) {
    if (!rest().starts_with(literal)) failLiteral(literal);
    next_ += literal.size();
  }
  /// Throws unless the whole text is consumed.
  void needEnd() const {
    if (!atEnd()) fail("the end of the text");
  }
  /// Consumes letters, digits and underscores, at least one.
  [[nodiscard]] std::string_view needWord();

  /// Throws the range exception that `expected` was not found here.
  [[noreturn]] void fail(const std::string& expected) const;

 private:
  [[noreturn]] void failLiteral(std::string_view expected) const;

  std::string_view text_;
  std::size_t next_ = 0;
};

}  // namespace Mox
