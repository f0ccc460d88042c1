#include "testing/conformance/FactChanges.h"

#include <cstdint>

namespace ZelVrfSelectionPolicy::Testing::Conformance {
namespace {

void redIdIs(const ChipFacts& facts, std::uint32_t id) {
  facts.routes->vrfStatusIs("red")->vrfIdIs(id);
}

// The first id that a `Bench` assigns.
constexpr std::uint32_t redId = 1;

FactChange anotherId() {
  return {"VRF red got another hardware id", [](const ChipFacts& facts) { redIdIs(facts, 200); },
          [](const ChipFacts& facts) { redIdIs(facts, redId); }};
}

FactChange lostId() {
  return {"VRF red lost its hardware id", [](const ChipFacts& facts) { redIdIs(facts, 0); },
          [](const ChipFacts& facts) { redIdIs(facts, redId); }};
}

FactChange lostVrf() {
  return {"VRF red left the hardware",
          [](const ChipFacts& facts) { facts.routes->vrfStatusDel("red"); },
          [](const ChipFacts& facts) { redIdIs(facts, redId); }};
}

template <class Routes>
FactChange prefixLength(const char* family, Routes ChipFacts::*routes, unsigned char length) {
  return {std::string("an ") + family + " prefix length of VRF red entered exact match",
          [=](const ChipFacts& facts) {
            (facts.*routes)->vrfPrefixLensInExactMatchIs("red")->prefixLenIs(length);
          },
          [=](const ChipFacts& facts) { (facts.*routes)->vrfPrefixLensInExactMatchDel("red"); }};
}

FactChange configuredFallback() {
  return {"VRF red was configured to fall back to VRF green",
          [](const ChipFacts& facts) { facts.fallbacks->fallbackVrfIs("red", "green"); },
          [](const ChipFacts& facts) { facts.fallbacks->fallbackVrfDel("red"); }};
}

FactChange decapNextHops() {
  return {"next hops may decapsulate",
          [](const ChipFacts& facts) { facts.routes->decapNhEnabledIs(true); },
          [](const ChipFacts& facts) { facts.routes->decapNhEnabledIs(false); }};
}

FactChange decapNextHopFallback() {
  return {"decapsulating next hops may fall back",
          [](const ChipFacts& facts) { facts.routes->decapNhFallbackEnabledIs(true); },
          [](const ChipFacts& facts) { facts.routes->decapNhFallbackEnabledIs(false); }};
}

}  // namespace

const std::vector<FactChange>& factChanges() {
  static const std::vector<FactChange> changes = {anotherId(),
                                                  lostId(),
                                                  lostVrf(),
                                                  prefixLength("IPv4", &ChipFacts::routes, 24),
                                                  prefixLength("IPv6", &ChipFacts::routes6, 64),
                                                  configuredFallback(),
                                                  decapNextHops(),
                                                  decapNextHopFallback()};
  return changes;
}

}  // namespace ZelVrfSelectionPolicy::Testing::Conformance
