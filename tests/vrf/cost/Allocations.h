#pragma once

#include <cstddef>
#include <functional>

/// The allocation functions of this process, under the control of its tests: they count, fail on
/// demand, and can give each allocation pages of its own.
namespace Allocations {

/// Allocations so far, by whatever part of the process.
[[nodiscard]] std::size_t made() noexcept;
/// How many of them `work` makes.
[[nodiscard]] std::size_t madeBy(const std::function<void()>& work);
/// Bytes allocated now, those on pages of their own aside.
[[nodiscard]] std::size_t inUse() noexcept;

/// Lets `further` allocations succeed, and the one after them fail once.
void failAfter(std::size_t further) noexcept;
/// Lets `further` allocations succeed, and has all after them fail until that is withdrawn.
void failFrom(std::size_t further) noexcept;
/// Whether a failure that was asked for is still to come; withdraws it.
[[nodiscard]] bool failureWithdrawn() noexcept;
/// Failures so far.
[[nodiscard]] std::size_t failed() noexcept;

/// While one lives, allocations neither count nor fail: they are those of a test, not of what it
/// tests. They nest.
class Spared {
 public:
  Spared() noexcept;
  Spared(const Spared&) = delete;
  Spared& operator=(const Spared&) = delete;
  ~Spared();
};

/// While one lives, every allocation stands on pages that it shares with no other. They are not
/// given back.
class OnPagesOfTheirOwn {
 public:
  OnPagesOfTheirOwn() noexcept;
  OnPagesOfTheirOwn(const OnPagesOfTheirOwn&) = delete;
  OnPagesOfTheirOwn& operator=(const OnPagesOfTheirOwn&) = delete;
  ~OnPagesOfTheirOwn();
};

}  // namespace Allocations
