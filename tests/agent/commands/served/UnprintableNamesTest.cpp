// No output has characters that a terminal acts on, whatever VRFs, rules and interfaces are called.
#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

#include "Mox/PrintableText.h"
#include "Mox/QuotedString.h"
#include "agent/commands/served/CommandTable.h"
#include "agent/commands/served/ServedAgent.h"
#include "agent/serve/protocol/ControlService.h"
#include "tests/agent/SmallConfigurations.h"
#include "tests/agent/TestFiles.h"

namespace ZelAgent {
namespace {

// A C1 control, DEL, a control of text direction, and a separator of lines.
constexpr const char* badName = "n\u009b2J\x7f\u202e\u2028";

// The first unprintable character as bytes; empty if there is none. Ends of lines are allowed.
std::string unprintableIn(std::string_view text) {
  while (!text.empty()) {
    const std::size_t length = text.front() == '\n' ? 1 : Mox::printableAtFront(text);
    if (length == 0) return Mox::quoted(text.substr(0, 3));
    text.remove_prefix(length);
  }
  return {};
}

TEST(UnprintableNames, AreEscapedByEveryCommandInTextAndJson) {
  const std::string name = badName;
  ServedAgent served(
      writeSmall("bad.json",
                 {{{name, name}, {"blue", name}}, {name, name + "absent"}, {name + "1", "e2"}}),
      8);
  static_cast<void>(served.start());
  ControlService service(served, std::size_t{1} << 20U);
  const std::string word = Mox::quoted(name);
  std::vector<std::string> commands{
      "route " + word + " 10.0.0.0/8 via " + Mox::quoted(name + "1"),
      "route " + word + " 10.1.0.0/16 remove",
      "prefix-lens ipv4 " + word + " 24",
      "vrf " + word + " id 77",
      "vrf " + word + " unknown",
      "fallback " + word + " to blue",
      "chip fail " + word + " 1",
      "vrf " + word + " add",
      "config " + word,
      word,
      "explain " + Mox::quoted(name + "1") + " ipv4 10.0.0.1 to 10.0.0.2",
      "get ZelVrfSelectionPolicy::VrfHwConfig vrfRefCount",
      "get ZelVrfSelectionPolicy::VrfHwStatus hwStatus",
      "get " + word + " x",
      "complete " + word};
  for (const CommandRow& row : commandTable()) {
    const std::string form(row.form);
    if (form.starts_with("show")) commands.push_back(form.substr(0, form.find(" [")));
  }
  for (const std::string& command : commands) {
    const std::string json = nlohmann::json{{"command", command}, {"json", true}}.dump();
    for (const std::string& line : {command, json}) {
      EXPECT_EQ(unprintableIn(service.reply({RequestLine::Kind::whole, line}).bytes), "") << line;
    }
  }
  EXPECT_EQ(unprintableIn(service.reply({RequestLine::Kind::whole, name}).bytes), "");
  const std::string vrfs = service.reply({RequestLine::Kind::whole, "show vrfs"}).bytes;
  EXPECT_NE(vrfs.find("n\\xc2\\x9b2J\\x7f\\xe2\\x80\\xae\\xe2\\x80\\xa8"), std::string::npos)
      << vrfs;
}

}  // namespace
}  // namespace ZelAgent
