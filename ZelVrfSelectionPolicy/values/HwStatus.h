#pragma once

#include <iosfwd>
#include <utility>

#include "Mox/CharRange.h"
#include "Mox/Type.h"
#include "Velo/Export.h"
#include "Velo/String.h"
#include "ZelVrfSelectionPolicy/values/FailureCode.h"
#include "ZelVrfSelectionPolicy/values/ProgrammingResult.h"

namespace ZelVrfSelectionPolicy {

/// The outcome of programming one hardware VRF resource, as the chip reports it.
///
/// A plain value. The default record means success.
class ZEL_EXPORT HwStatus {
 public:
  static const Mox::Type moxType;

  /// "programmedInHw", "failureNone" and no description.
  HwStatus() noexcept = default;
  /// Parses the string form, strictly. Throws `Mox::RangeException` with the name of the wrong
  /// field.
  explicit HwStatus(Mox::CharRange& range);

  [[nodiscard]] ProgrammingResult status() const noexcept { return status_; }
  void statusIs(ProgrammingResult status) noexcept { status_ = status; }
  [[nodiscard]] FailureCode failureReason() const noexcept { return failureReason_; }
  void failureReasonIs(FailureCode reason) noexcept { failureReason_ = reason; }
  /// Free text for the operator; empty if there is none.
  [[nodiscard]] const Velo::String& failureDescription() const noexcept {
    return failureDescription_;
  }
  void failureDescriptionIs(Velo::String text) noexcept { failureDescription_ = std::move(text); }

  /// Whether the records `a` and `b` are equal. Status and reason are compared first.
  [[nodiscard]] static bool isEq(const void* a, const void* b) noexcept {
    const auto& left = *static_cast<const HwStatus*>(a);
    const auto& right = *static_cast<const HwStatus*>(b);
    return left.status_ == right.status_ && left.failureReason_ == right.failureReason_ &&
           left.failureDescription_ == right.failureDescription_;
  }
  friend bool operator==(const HwStatus& a, const HwStatus& b) noexcept { return isEq(&a, &b); }

  /// Whether the record differs from a default one.
  explicit operator bool() const noexcept;

 private:
  ProgrammingResult status_ = ProgrammingResult::programmedInHw;
  FailureCode failureReason_ = FailureCode::failureNone;
  Velo::String failureDescription_;
};

/// The string form, from which an equal record can be parsed.
[[nodiscard]] ZEL_EXPORT Velo::String valueToStrep(const HwStatus& status);
/// Writes the string form.
ZEL_EXPORT std::ostream& operator<<(std::ostream& stream, const HwStatus& status);

}  // namespace ZelVrfSelectionPolicy
