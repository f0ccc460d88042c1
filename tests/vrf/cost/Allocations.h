#pragma once

#include <cstddef>
#include <functional>

/// The allocation functions of this process, under the control of its tests: they count, and can
/// give each allocation pages of its own.
namespace Allocations {

/// Allocations so far, by whatever part of the process.
[[nodiscard]] std::size_t made() noexcept;
/// How many of them `work` makes.
[[nodiscard]] std::size_t madeBy(const std::function<void()>& work);
/// While one lives, every allocation stands on pages that it shares with no other. Their addresses
/// are not used again.
class OnPagesOfTheirOwn {
 public:
  OnPagesOfTheirOwn() noexcept;
  OnPagesOfTheirOwn(const OnPagesOfTheirOwn&) = delete;
  OnPagesOfTheirOwn& operator=(const OnPagesOfTheirOwn&) = delete;
  ~OnPagesOfTheirOwn();
};

}  // namespace Allocations
