// Runs the conformance suite on a correct chip and on faulty chips. Most of these tests must fail.
// conformance_faults_test.py runs this program and checks which tests fail.

#include <cstddef>

#include "testing/VrfHelperConformance.h"
#include "tests/testing/PoolChip.h"

namespace ZelVrfSelectionPolicy::Testing {
namespace {

auto both(Fault fault, std::size_t capacity = PoolChip::usualCapacity) {
  return ::testing::Values(chipUnderTest<ObservablePoolChip>(fault, capacity),
                           chipUnderTest<OpaquePoolChip>(fault, capacity));
}

// A maker without a chip: each test fails before it begins.
INSTANTIATE_TEST_SUITE_P(noChip, VrfHelperConformance,
                         ::testing::Values(ChipMaker("none", [] { return nullptr; })));

INSTANTIATE_TEST_SUITE_P(none, VrfHelperConformance, both(Fault::none));
INSTANTIATE_TEST_SUITE_P(noneOfOneResource, VrfHelperConformance, both(Fault::none, 1));
INSTANTIATE_TEST_SUITE_P(flagsTakeRoom, VrfHelperConformance, both(Fault::flagsTakeRoom));
INSTANTIATE_TEST_SUITE_P(decapNeedsItsFlag, VrfHelperConformance, both(Fault::decapNeedsItsFlag));
INSTANTIATE_TEST_SUITE_P(creationLeaks, VrfHelperConformance, both(Fault::creationLeaks));
INSTANTIATE_TEST_SUITE_P(updateLeaks, VrfHelperConformance, both(Fault::updateLeaks));
INSTANTIATE_TEST_SUITE_P(updateTakesAnother, VrfHelperConformance, both(Fault::updateTakesAnother));
INSTANTIATE_TEST_SUITE_P(updateHoardsUntilDeletion, VrfHelperConformance,
                         both(Fault::updateHoardsUntilDeletion));
INSTANTIATE_TEST_SUITE_P(updateDoesNothing, VrfHelperConformance, both(Fault::updateDoesNothing));
INSTANTIATE_TEST_SUITE_P(outcomesDiffer, VrfHelperConformance, both(Fault::outcomesDiffer));
INSTANTIATE_TEST_SUITE_P(descriptionHasRawNames, VrfHelperConformance,
                         both(Fault::descriptionHasRawNames));
INSTANTIATE_TEST_SUITE_P(failureWithoutReason, VrfHelperConformance,
                         both(Fault::failureWithoutReason));
INSTANTIATE_TEST_SUITE_P(creationWithoutDescription, VrfHelperConformance,
                         both(Fault::creationWithoutDescription));
INSTANTIATE_TEST_SUITE_P(updateWithoutDescription, VrfHelperConformance,
                         both(Fault::updateWithoutDescription));
INSTANTIATE_TEST_SUITE_P(hardwareRefusalWithoutReason, VrfHelperConformance,
                         both(Fault::hardwareRefusalWithoutReason));
INSTANTIATE_TEST_SUITE_P(successWhenFull, VrfHelperConformance, both(Fault::successWhenFull));
INSTANTIATE_TEST_SUITE_P(throwsWhenFull, VrfHelperConformance, both(Fault::throwsWhenFull));
INSTANTIATE_TEST_SUITE_P(anotherReasonWhenFull, VrfHelperConformance,
                         both(Fault::anotherReasonWhenFull));
INSTANTIATE_TEST_SUITE_P(deletionFreesNothing, VrfHelperConformance,
                         both(Fault::deletionFreesNothing));
INSTANTIATE_TEST_SUITE_P(deletionFreesAnother, VrfHelperConformance,
                         both(Fault::deletionFreesAnother));
INSTANTIATE_TEST_SUITE_P(refusalFreesAnother, VrfHelperConformance,
                         both(Fault::refusalFreesAnother));
INSTANTIATE_TEST_SUITE_P(deletionIsForever, VrfHelperConformance, both(Fault::deletionIsForever));
INSTANTIATE_TEST_SUITE_P(defaultVrfRefused, VrfHelperConformance, both(Fault::defaultVrfRefused));
INSTANTIATE_TEST_SUITE_P(firstCreationRefused, VrfHelperConformance,
                         both(Fault::firstCreationRefused));
INSTANTIATE_TEST_SUITE_P(holdsFewer, VrfHelperConformance, both(Fault::holdsFewer));
INSTANTIATE_TEST_SUITE_P(holdsNothing, VrfHelperConformance, both(Fault::holdsNothing));
INSTANTIATE_TEST_SUITE_P(refusalIsCounted, VrfHelperConformance, both(Fault::refusalIsCounted));
INSTANTIATE_TEST_SUITE_P(successHasReason, VrfHelperConformance, both(Fault::successHasReason));
INSTANTIATE_TEST_SUITE_P(freedIsNotAvailable, VrfHelperConformance,
                         both(Fault::freedIsNotAvailable));
INSTANTIATE_TEST_SUITE_P(creationIgnoresHardware, VrfHelperConformance,
                         both(Fault::creationIgnoresHardware));
INSTANTIATE_TEST_SUITE_P(hardwareRefusalLeaks, VrfHelperConformance,
                         both(Fault::hardwareRefusalLeaks));
INSTANTIATE_TEST_SUITE_P(equalUpdateRefused, VrfHelperConformance, both(Fault::equalUpdateRefused));
INSTANTIATE_TEST_SUITE_P(updateAppends, VrfHelperConformance, both(Fault::updateAppends));
INSTANTIATE_TEST_SUITE_P(updateKeepsIds, VrfHelperConformance, both(Fault::updateKeepsIds));
INSTANTIATE_TEST_SUITE_P(updateKeepsLengths, VrfHelperConformance, both(Fault::updateKeepsLengths));
INSTANTIATE_TEST_SUITE_P(updateKeepsLengths6, VrfHelperConformance,
                         both(Fault::updateKeepsLengths6));
INSTANTIATE_TEST_SUITE_P(updateKeepsFallbacks, VrfHelperConformance,
                         both(Fault::updateKeepsFallbacks));
INSTANTIATE_TEST_SUITE_P(updateKeepsDecap, VrfHelperConformance, both(Fault::updateKeepsDecap));
INSTANTIATE_TEST_SUITE_P(updateKeepsDecapFallback, VrfHelperConformance,
                         both(Fault::updateKeepsDecapFallback));
INSTANTIATE_TEST_SUITE_P(flagLeaks, VrfHelperConformance, both(Fault::flagLeaks));
INSTANTIATE_TEST_SUITE_P(anotherIdRefused, VrfHelperConformance, both(Fault::anotherIdRefused));
INSTANTIATE_TEST_SUITE_P(failureIsForever, VrfHelperConformance, both(Fault::failureIsForever));
INSTANTIATE_TEST_SUITE_P(throwsANumberWhenFull, VrfHelperConformance,
                         both(Fault::throwsANumberWhenFull));
INSTANTIATE_TEST_SUITE_P(updateThrows, VrfHelperConformance, both(Fault::updateThrows));
INSTANTIATE_TEST_SUITE_P(deletionThrows, VrfHelperConformance, both(Fault::deletionThrows));
INSTANTIATE_TEST_SUITE_P(deletionSpoilsOthers, VrfHelperConformance,
                         both(Fault::deletionSpoilsOthers));

}  // namespace
}  // namespace ZelVrfSelectionPolicy::Testing
