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

/// The facts that a chip reads: the arguments of the constructor of `VrfHelper`, empty at first. A
/// test changes them, and the chip reads them through its references.
struct ChipFacts {
  Mox::Ptr<VrfSelectionPolicy::VrfSelectionFallbackVrf> fallbacks =
      VrfSelectionPolicy::VrfSelectionFallbackVrf::VrfSelectionFallbackVrfIs();
  Mox::Ptr<Routing::Hardware::RouteStatus> routes = Routing::Hardware::RouteStatus::RouteStatusIs();
  Mox::Ptr<Routing6::Hardware::RouteStatus> routes6 =
      Routing6::Hardware::RouteStatus::RouteStatusIs();
};

/// The interface of the conformance suite to a chip: it creates the chip and reports its state.
///
/// Derive from it for your chip. Only `makeHelper` must be implemented. The other functions have
/// defaults. If you override them, the suite checks more precisely:
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
/// Each test creates one object, calls `makeHelper` once, and destroys it.
class ChipUnderTest {
 public:
  ChipUnderTest() = default;
  ChipUnderTest(const ChipUnderTest&) = delete;
  ChipUnderTest& operator=(const ChipUnderTest&) = delete;
  virtual ~ChipUnderTest();

  /// Returns a helper that reads `facts`, of a chip without VRF resources in use. The suite fills
  /// the chip many times: if that takes long, create a small chip, or remove most of its resources
  /// here.
  [[nodiscard]] virtual Mox::Ptr<VrfHelper> makeHelper(const ChipFacts& facts) = 0;

  /// The number of VRF resources in use. If it is not reported, the suite fills the chip to find
  /// lost resources.
  [[nodiscard]] virtual std::optional<std::size_t> resourcesInUse() const;

  /// The number of actions that fit into the empty chip. If it is not reported, the suite does not
  /// check it.
  [[nodiscard]] virtual std::optional<std::size_t> capacity() const;

  /// The maximum number of creations to fill a chip that does not report its capacity: 65,536,
  /// unless it is overridden.
  [[nodiscard]] virtual std::size_t mostCreations() const;

  /// The programmed contents of the resource of `action`, in any form that is equal exactly when
  /// the hardware behaves the same; nothing if there is no resource. If it is not reported, the
  /// suite compares the outcomes.
  [[nodiscard]] virtual std::optional<std::string> programOf(const VrfAction& action) const;

  /// Makes the next creation or update fail, as if the hardware had refused it, and returns true.
  /// If it returns false, the suite causes failures by VRFs without a hardware id, and by filling
  /// the chip.
  [[nodiscard]] virtual bool failNextHook();
};

/// The parameter of the conformance suite: creates chips under test.
class ChipMaker {
 public:
  using Make = std::function<std::unique_ptr<ChipUnderTest>()>;

  ChipMaker(std::string name, Make make);

  [[nodiscard]] std::unique_ptr<ChipUnderTest> make() const { return make_(); }
  /// The name of the parameter in test reports.
  [[nodiscard]] const std::string& name() const noexcept { return name_; }

 private:
  std::string name_;
  Make make_;
};

/// Writes the name.
std::ostream& operator<<(std::ostream& stream, const ChipMaker& maker);

/// The type's name without its namespaces and classes.
[[nodiscard]] std::string shortTypeName(const std::type_info& type);

/// Creates chips under test of the type `Chip`, each constructed with `arguments`. The name
/// contains them: `chipUnderTest<MyChipUnderTest>(8)` is "MyChipUnderTest(8)".
template <class Chip, class... Arguments>
[[nodiscard]] ChipMaker chipUnderTest(Arguments... arguments) {
  std::string name;
  ((name += (name.empty() ? "" : ",") + ::testing::PrintToString(arguments)), ...);
  if (!name.empty()) name = "(" + name + ")";
  return ChipMaker(shortTypeName(typeid(Chip)) + name,
                   [arguments...] { return std::make_unique<Chip>(arguments...); });
}

}  // namespace ZelVrfSelectionPolicy::Testing
