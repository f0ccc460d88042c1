// What a terminal shows while a configuration is applied, by a clock of the test.
#include "agent/model/forwarding/ApplyProgress.h"

#include <gtest/gtest.h>

#include "agent/model/forwarding/ForwardingAgent.h"
#include "tests/agent/SmallConfigurations.h"

namespace ZelAgent {
namespace {

const std::string erasedLine = "\r\x1b[K";

// A configuration with so many rules on each of two interfaces.
Configuration onTwoInterfaces(std::size_t rules) {
  return configurationOf({{{"red"}}, std::vector<std::string>(rules, "red"), {"e1", "e2"}});
}

class ApplyProgressTest : public ::testing::Test {
 protected:
  std::string shown_;
  Progress::Time now_;
  // An hour passes at each look.
  Progress progress_{[this](std::string_view text) { shown_ += text; },
                     [this] { return now_ += std::chrono::hours(1); }};
  ForwardingAgent agent_{16};
};

TEST_F(ApplyProgressTest, CountsTheRulesOfAllInterfaces) {
  const Configuration configuration = onTwoInterfaces(64);
  {
    const ApplyProgress work(agent_, progress_, "f.json", rulesOnInterfaces(configuration));
    agent_.apply(configuration);
  }
  EXPECT_EQ(shown_, erasedLine + "applying f.json: 64 of 128 rules" + erasedLine +
                        "applying f.json: 128 of 128 rules" + erasedLine);
}

TEST_F(ApplyProgressTest, EndsWithItsObject) {
  { const ApplyProgress work(agent_, progress_, "f.json", 0); }
  agent_.apply(onTwoInterfaces(64));
  EXPECT_EQ(shown_, "");
}

TEST(RulesOnInterfaces, AreThoseOfBothPoliciesOfEachInterface) {
  NetworkInstance instance;
  instance.policies = {
      {"P", std::vector<Rule>(3)}, {"Q", std::vector<Rule>(5)}, {"unused", std::vector<Rule>(100)}};
  instance.policyBindings = {{"e1", "P", "Q"}, {"e2", "P"}, {"e3", ""}};
  EXPECT_EQ(rulesOnInterfaces({{instance}}), 3U + 5U + 3U);
}

}  // namespace
}  // namespace ZelAgent
