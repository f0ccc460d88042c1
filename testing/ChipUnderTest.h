#pragma once

#include <gtest/gtest.h>

#include <cstddef>
#include <functional>
#include <iosfwd>
#include <memory>
#include <optional>
#include <string>
#include <typeinfo>
#include <utility>

#include "Routing/Hardware/RouteStatus.h"
#include "Routing6/Hardware/RouteStatus.h"
#include "VrfSelectionPolicy/VrfSelectionFallbackVrf.h"
#include "ZelVrfSelectionPolicy/tables/VrfHelper.h"

namespace ZelVrfSelectionPolicy::Testing {

/// What a chip reads: the state that a `VrfHelper` is constructed with, empty at first. A test
/// changes it, and the chip sees it through the references that it was given.
struct ChipFacts {
  Mox::Ptr<VrfSelectionPolicy::VrfSelectionFallbackVrf> fallbacks =
      VrfSelectionPolicy::VrfSelectionFallbackVrf::VrfSelectionFallbackVrfIs();
  Mox::Ptr<Routing::Hardware::RouteStatus> routes = Routing::Hardware::RouteStatus::RouteStatusIs();
  Mox::Ptr<Routing6::Hardware::RouteStatus> routes6 =
      Routing6::Hardware::RouteStatus::RouteStatusIs();
};

/// A chip as the conformance suite sees it: how to make one, and what it can tell of itself.
///
/// Derive from it for your chip. Only `makeHelper` must be written. Everything else has a default
/// with which the suite gets along, and makes its verdicts sharper where the chip can do better:
///
///     class MyChipUnderTest final : public ChipUnderTest {
///      public:
///       Mox::Ptr<VrfHelper> makeHelper(const ChipFacts& facts) override {
///         chip_ = Mox::makePtr<MyChip>(facts.fallbacks, facts.routes, facts.routes6);
///         return chip_;
///       }
///       std::optional<std::size_t> resourcesInUse() const override { return chip_->inUse(); }
///
///      private:
///       Mox::Ptr<MyChip> chip_;
///     };
///
/// Each test makes one of these, calls `makeHelper` once, and destroys it.
class ChipUnderTest {
 public:
  ChipUnderTest() = default;
  ChipUnderTest(const ChipUnderTest&) = delete;
  ChipUnderTest& operator=(const ChipUnderTest&) = delete;
  virtual ~ChipUnderTest();

  /// A helper that reads `facts`, of a chip without VRF resources. The suite fills the chip again
  /// and again: make it small, or take away most of its resources here, if filling it takes long.
  [[nodiscard]] virtual Mox::Ptr<VrfHelper> makeHelper(const ChipFacts& facts) = 0;

  /// How many VRF resources are in use at this moment. A chip that does not tell is filled to see
  /// whether any is missing.
  [[nodiscard]] virtual std::optional<std::size_t> resourcesInUse() const;

  /// How many actions fit into the chip when it holds none. A chip that does not tell is taken at
  /// its word.
  [[nodiscard]] virtual std::optional<std::size_t> capacity() const;

  /// How many creations the suite tries to fill a chip that does not tell its capacity.
  [[nodiscard]] virtual std::size_t mostCreations() const;

  /// What the resource of `action` is programmed with, in any form that is equal exactly when the
  /// hardware does the same; nothing when there is no resource. A chip that does not tell is
  /// compared by its outcomes.
  [[nodiscard]] virtual std::optional<std::string> programOf(const VrfAction& action) const;

  /// Makes the next creation or update fail, as if the hardware had refused it, and returns that
  /// it will. A chip that cannot is made to fail by VRFs without a hardware id, and by filling it.
  [[nodiscard]] virtual bool failNextHook();
};

/// The parameter of the conformance suite: how to make a chip under test, as often as wanted.
class ChipMaker {
 public:
  using Make = std::function<std::unique_ptr<ChipUnderTest>()>;

  ChipMaker(std::string name, Make make);

  [[nodiscard]] std::unique_ptr<ChipUnderTest> make() const { return make_(); }
  /// What test runners show of the parameter.
  [[nodiscard]] const std::string& name() const noexcept { return name_; }

 private:
  std::string name_;
  Make make_;
};

/// Writes the name.
std::ostream& operator<<(std::ostream& stream, const ChipMaker& maker);

/// The type's name without the scopes that it is in.
[[nodiscard]] std::string shortTypeName(const std::type_info& type);

/// Makes chips under test of the type `Chip`, each constructed with `arguments`, by which it is
/// also named: `chipUnderTest<MyChipUnderTest>(8)` is "MyChipUnderTest(8)".
template <class Chip, class... Arguments>
[[nodiscard]] ChipMaker chipUnderTest(Arguments... arguments) {
  std::string name;
  ((name += (name.empty() ? "" : ",") + ::testing::PrintToString(arguments)), ...);
  if (!name.empty()) name = "(" + name + ")";
  return ChipMaker(shortTypeName(typeid(Chip)) + name,
                   [arguments...] { return std::make_unique<Chip>(arguments...); });
}

}  // namespace ZelVrfSelectionPolicy::Testing
