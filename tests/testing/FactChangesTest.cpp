// Each change of a fact changes that fact alone, and its reversal restores it.
#include "testing/conformance/FactChanges.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace ZelVrfSelectionPolicy::Testing::Conformance {
namespace {

using ::testing::ElementsAre;

template <class Routes>
std::string prefixLengthsOf(const Routes& routes) {
  const auto lengths = routes->vrfPrefixLensInExactMatch("red");
  std::string text;
  for (unsigned char length = 0; lengths && length <= lengths->longest; ++length) {
    if (lengths->prefixLenHas(length)) text += std::to_string(length);
  }
  return text;
}

std::string factsOf(const ChipFacts& facts) {
  const auto status = facts.routes->vrfStatus("red");
  std::string text = status ? "id=" + std::to_string(status->vrfId()) : "no VRF";
  text += " v4=" + prefixLengthsOf(facts.routes) + " v6=" + prefixLengthsOf(facts.routes6);
  text += " fallback=" + facts.fallbacks->fallbackVrf("red").str();
  text += facts.routes->decapNhEnabled() ? " decap" : "";
  return text + (facts.routes->decapNhFallbackEnabled() ? " decapFallback" : "");
}

TEST(ChangesOfFacts, ChangeOneFactEachAndRestoreIt) {
  const ChipFacts facts;
  facts.routes->vrfStatusIs("red")->vrfIdIs(1);
  const std::string before = factsOf(facts);
  EXPECT_EQ(before, "id=1 v4= v6= fallback=");
  std::vector<std::string> changed;
  for (const FactChange& change : factChanges()) {
    change.make(facts);
    changed.push_back(change.what + ": " + factsOf(facts));
    change.undo(facts);
    EXPECT_EQ(factsOf(facts), before) << change.what;
  }
  EXPECT_THAT(
      changed,
      ElementsAre("VRF red got another hardware id: id=200 v4= v6= fallback=",
                  "VRF red lost its hardware id: id=0 v4= v6= fallback=",
                  "VRF red left the hardware: no VRF v4= v6= fallback=",
                  "an IPv4 prefix length of VRF red entered exact match: id=1 v4=24 v6= fallback=",
                  "an IPv6 prefix length of VRF red entered exact match: id=1 v4= v6=64 fallback=",
                  "VRF red was configured to fall back to VRF green: id=1 v4= v6= fallback=green",
                  "next hops may decapsulate: id=1 v4= v6= fallback= decap",
                  "decapsulating next hops may fall back: id=1 v4= v6= fallback= decapFallback"));
}

}  // namespace
}  // namespace ZelVrfSelectionPolicy::Testing::Conformance
