// The library loaded, used and unloaded again and again: the process is as it was before, in
// memory, mappings, types and slabs.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <fstream>
#include <string>
#include <vector>

#include "Mox/AttributeText.h"
#include "Mox/ReflectiveAccess.h"
#include "Mox/Type.h"
#include "PolicyMap/ActionType.h"
#include "Quarry/Slab.h"
#include "Routing/Hardware/RouteStatus.h"
#include "tests/library/LoadedLibrary.h"
#include "tests/memory/AllocatedMemory.h"

namespace {

using namespace LoadedLibrary;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

constexpr int times = 1000;
// By then every table of the platform and of the loader has its size.
constexpr int warmUp = 100;
constexpr int middle = warmUp + (times - warmUp) / 2;
// Freed blocks that the C library keeps count as allocated, and how many it keeps changes now and
// then; but a single block left over each time would be four times as much.
constexpr std::size_t slack = std::size_t{8} * (times - middle);

std::size_t mappings() {
  std::ifstream maps("/proc/self/maps");
  std::size_t lines = 0;
  for (std::string line; std::getline(maps, line);)
    ++lines;
  return lines;
}

/// Writes a row by reflection, so that the library's own code reads, hashes and shows it.
void useTable(const Object& users) {
  const Mox::Type& actionType = *Mox::moxType("ZelVrfSelectionPolicy::VrfAction");
  const Mox::AnyValue action = Mox::AnyValue::ofType(
      actionType, std::vector<Mox::AnyValue>{L3::VrfName("red"), PolicyMap::ActionType::vrf});
  const Mox::Attribute* count = Mox::findAttribute(*users->fwkType(), "vrfRefCount");
  Mox::access(*users, count->number, Mox::Operation::write, {action, 3U});
  EXPECT_EQ(Mox::attributeText(*users, "vrfRefCount").text, action.text().str() + ": 3\n");
}

/// Has a machine follow VRFs, prefix lengths and fallback VRFs.
void useMachine(const Library& library) {
  const auto fallback = VrfSelectionPolicy::VrfSelectionFallbackVrf::VrfSelectionFallbackVrfIs();
  const auto routes = Routing::Hardware::RouteStatus::RouteStatusIs();
  fallback->fallbackVrfIs("red", "blue");
  const Object machine = library.factory<SixArgumentFactory>(vrfSmFactory)(
      library.makeTable(vrfHwConfigFactory), library.makeTable(vrfHwStatusFactory), nullptr,
      fallback, routes, nullptr);
  routes->vrfStatusIs("red")->vrfIdIs(7);
  routes->vrfPrefixLensInExactMatchIs("red")->prefixLenIs(24);
  routes->decapNhEnabledIs(true);
  fallback->fallbackVrfIs("red", "green");
}

void loadAndUse() {
  const Library library;
  useTable(library.makeTable(vrfHwConfigFactory));
  useMachine(library);
  const Object mounts = library.makeTable(policySmMountsFactory);
  const Object top = library.factory<SixArgumentFactory>(policySmFactory)(
      nullptr, mounts, nullptr, nullptr, nullptr, nullptr);
  EXPECT_EQ(top->references(), 1U);
}

TEST(Reloaded, AThousandTimesItLeavesMemoryMappingsTypesAndSlabsAsTheyWere) {
  std::size_t memoryOfFirstHalf = 0;
  std::size_t memoryOfSecondHalf = 0;
  std::size_t mappingsAfterWarmUp = 0;
  for (int time = 0; time < times; ++time) {
    loadAndUse();
    ASSERT_THAT(Quarry::Slab::typeNames(), IsEmpty()) << "after " << time;
    ASSERT_THAT(Mox::moxModules(), ElementsAre("ZelPlatform")) << "after " << time;
    ASSERT_EQ(Mox::moxType("ZelVrfSelectionPolicy::VrfSm"), nullptr) << "after " << time;
    if (time < warmUp) continue;
    std::size_t& highest = time < middle ? memoryOfFirstHalf : memoryOfSecondHalf;
    highest = std::max(highest, allocatedMemory());
    if (time == warmUp) mappingsAfterWarmUp = mappings();
  }
  RecordProperty("memoryOfFirstHalf", std::to_string(memoryOfFirstHalf));
  RecordProperty("memoryOfSecondHalf", std::to_string(memoryOfSecondHalf));
  EXPECT_GT(memoryOfFirstHalf, 0U);
  // A sanitizer maps some memory for itself now and then; one mapping left over each time would be
  // hundreds.
  EXPECT_LE(mappings(), mappingsAfterWarmUp + (memoryIsOfSanitizer() ? 16 : 0));
  // Under it the dynamic loader keeps a little of each library that it has unloaded.
  if (memoryIsOfSanitizer()) return;
  EXPECT_LE(memoryOfSecondHalf, memoryOfFirstHalf + slack);
}

}  // namespace
