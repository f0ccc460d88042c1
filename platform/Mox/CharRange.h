#pragma once

#include <string>
#include <string_view>

#include "Velo/Export.h"

namespace Mox {

/// Text under a strict parser, read from the front.
///
/// Every reader either consumes exactly what it names or throws a `RangeException` that says what
/// was expected, at which byte, and what stands there instead. The text must outlive the range.
///
///     Mox::CharRange range(text);
///     range.needString("{'name': ");
///     L3::VrfName name = Mox::deserializeAttr<L3::VrfName>(range, "name");
///     range.needString("}");
class ZEL_EXPORT CharRange {
 public:
  explicit CharRange(std::string_view text) noexcept : text_(text) {}

  [[nodiscard]] bool atEnd() const noexcept { return next_ == text_.size(); }
  /// What has not been consumed yet.
  [[nodiscard]] std::string_view rest() const noexcept { return text_.substr(next_); }
  /// Consumes `size` bytes. Precondition: so many are left.
  void advance(std::size_t size) noexcept { next_ += size; }

  /// Consumes `literal`, which must come next.
  void needString(std::string_view literal) {
    if (!rest().starts_with(literal)) failLiteral(literal);
    next_ += literal.size();
  }
  /// The text must be used up.
  void needEnd() const {
    if (!atEnd()) fail("the end of the text");
  }
  /// Consumes letters, digits and underscores, at least one.
  [[nodiscard]] std::string_view needWord();

  /// Throws the range exception for not finding `expected` here.
  [[noreturn]] void fail(const std::string& expected) const;

 private:
  [[noreturn]] void failLiteral(std::string_view expected) const;

  std::string_view text_;
  std::size_t next_ = 0;
};

}  // namespace Mox
