// Outcomes of creations and updates.

#include "testing/Shown.h"
#include "testing/VrfHelperConformance.h"
#include "testing/conformance/Bench.h"
#include "testing/conformance/Contract.h"
#include "testing/conformance/PrintableLine.h"
#include "testing/conformance/TestFiles.h"

namespace ZelVrfSelectionPolicy::Testing {
namespace Conformance {

void linkOutcomeTests() {}

}  // namespace Conformance

using namespace Conformance;

TEST_P(VrfHelperConformance, ACreationWithAllThatItNeedsIsReportedAsProgrammed) {
  for (const char* vrf : {"red", "default"}) {
    const VrfAction action = bench().plain(vrf);
    EXPECT_EQ(result(bench().create(action)), "programmed")
        << "createVrf of " << shown(action) << ", whose VRF has a hardware id, on an empty chip\n"
        << contract(
               "createVrf allocates and programs the resource, and success is the default "
               "record");
    bench().remove(action);
  }
}

TEST_P(VrfHelperConformance, AFailureHasAReasonAndADescriptionAndASuccessNoReason) {
  std::vector<Outcome> outcomes = bench().failureOutcomes();
  const VrfAction action = bench().plain("red");
  outcomes.push_back({"createVrf of " + shown(action), bench().create(action)});
  outcomes.push_back({"updateVrf of " + shown(action), bench().update(action)});
  bench().remove(action);
  for (const auto& [of, status] : outcomes) {
    const bool hasReason = status.failureReason() != FailureCode::failureNone;
    EXPECT_EQ(hasReason, !isProgrammed(status))
        << of << " returned " << status << '\n'
        << contract("a failure has a failureReason, and a success is \"failureNone\"");
    EXPECT_TRUE(isProgrammed(status) || !status.failureDescription().bytes().empty())
        << of << " returned " << status << '\n'
        << contract("a failure has a failureDescription that an operator understands");
  }
}

TEST_P(VrfHelperConformance, ADescriptionFitsOnOneLineWhateverTheVrfsAreCalled) {
  for (const auto& [of, status] : bench().failureOutcomes()) {
    EXPECT_EQ(faultOfLine(status.failureDescription().bytes()), "")
        << of << " returned " << status << '\n'
        << contract("a failureDescription is one line of printable UTF-8 of at most " +
                    std::to_string(longestDescription) +
                    " bytes, and names of VRFs, which are any bytes, are escaped in it");
  }
}

}  // namespace ZelVrfSelectionPolicy::Testing
