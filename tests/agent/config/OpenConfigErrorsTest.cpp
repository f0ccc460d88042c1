#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

#include "agent/config/OpenConfigReader.h"
#include "agent/language/Errors.h"
#include "tests/agent/config/BadInputs.h"

namespace ZelAgent {
namespace {

using nlohmann::json;

class OpenConfigErrors : public ::testing::TestWithParam<BadInput> {};

TEST_P(OpenConfigErrors, IsOneLineThatNamesFilePlaceAndWhatIsRight) {
  const json document = documentOf(GetParam());
  try {
    (void)readOpenConfig(document.dump(), "f.json");
    FAIL() << "was read without an error";
  } catch (const ConfigError& error) {
    EXPECT_EQ(std::string(error.what()), "f.json: " + messageOf(GetParam()));
  }
}

INSTANTIATE_TEST_SUITE_P(Each, OpenConfigErrors, ::testing::ValuesIn(badInputs),
                         [](const auto& input) { return std::string(input.param.name); });

TEST(OpenConfigErrorsBase, TheUnchangedDocumentIsRight) {
  EXPECT_EQ(readOpenConfig(rightDocument().dump(), "f.json").warnings, std::vector<std::string>{});
}

TEST(OpenConfigErrorsBase, ANameOverHundredBytesIsNamedByItsPath) {
  json document = rightDocument();
  auto& instance = document["network-instances"]["network-instance"][1];
  instance["config"]["fallback-network-instance"] = std::string(101, 'n');
  try {
    (void)readOpenConfig(document.dump(), "f.json");
    FAIL() << "was read without an error";
  } catch (const ConfigError& error) {
    EXPECT_STREQ(error.what(),
                 "f.json: /network-instances/network-instance[name=red]/config/"
                 "fallback-network-instance: must have at most 100 bytes, not 101");
  }
}

TEST(OpenConfigErrorsBase, AnInterfaceWithItsSubinterfaceHasAtMostHundredBytes) {
  json document = rightDocument();
  auto& interface =
      document["network-instances"]["network-instance"][1]["interfaces"]["interface"][0]["config"];
  interface = {{"interface", std::string(98, 'e')}, {"subinterface", 7}};
  EXPECT_NO_THROW((void)readOpenConfig(document.dump(), "f.json"));
  interface["subinterface"] = 10;
  try {
    (void)readOpenConfig(document.dump(), "f.json");
    FAIL() << "was read without an error";
  } catch (const ConfigError& error) {
    EXPECT_STREQ(error.what(),
                 "f.json: /network-instances/network-instance[name=red]/interfaces/"
                 "interface[id=e2]/config/interface: must, with its subinterface, have at most 100 "
                 "bytes, not 101");
  }
}

TEST(OpenConfigErrorsBase, AKeyWithLineBreaksStaysOneLine) {
  json document = rightDocument();
  document["network-instances"]["network-instance"][1]["name"] = "r\ned";
  try {
    (void)readOpenConfig(document.dump(), "f.json");
    FAIL() << "was read without an error";
  } catch (const ConfigError& error) {
    EXPECT_STREQ(error.what(),
                 "f.json: /network-instances/network-instance[name=r\\x0aed]/config/name: must "
                 "repeat the list key \"r\\x0aed\", not differ from it");
  }
}

}  // namespace
}  // namespace ZelAgent
