// `zel-agent forward` as an operator runs it: what it reads, writes and refuses.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstddef>
#include <fstream>
#include <tuple>

#include "tests/agent/AgentProcess.h"
#include "tests/agent/CaptureFile.h"
#include "tests/agent/OpenConfigBuilder.h"

namespace ZelAgent {
namespace {

using ::testing::ElementsAre;

constexpr const char* captureAdvice = "; give a capture (pcap) of Ethernet or of raw IP";

class ForwardCommandTest : public ::testing::Test {
 protected:
  ForwardCommandTest() {
    OpenConfigBuilder configuration;
    configuration.vrf("red").intf("red", "Ethernet5");
    configuration.intf("DEFAULT", "Ethernet7").intf("DEFAULT", std::string(100, 'e'));
    configuration.policy("edge", {ruleOf(1, "ipv4", {{"protocol", 4}}, toVrf("red"))},
                         {"Ethernet1"});
    configuration.route("DEFAULT", "0.0.0.0/0", "Ethernet2");
    configuration.route("red", "0.0.0.0/0", "Ethernet1/3");
    configuration_ = writeFile("edge.json", configuration.text());
  }

  std::string capture(const std::string& name, CaptureLink link,
                      const std::vector<CaptureFrame>& frames) {
    writeCapture(in_ / name, link, frames);
    return in_ / name;
  }

  AgentOutcome forward(const std::vector<std::string>& captures,
                       const std::vector<std::string>& more = {}) {
    std::vector<std::string> arguments{"forward", configuration_, "--out", out_};
    for (const std::string& one : captures)
      arguments.insert(arguments.end(), {"--in", one});
    arguments.insert(arguments.end(), more.begin(), more.end());
    return runAgent(arguments);
  }

  void expectRefused(const AgentOutcome& outcome, const std::string& message) {
    EXPECT_EQ(outcome.status, 2);
    EXPECT_EQ(outcome.err, "error: " + message + '\n');
    EXPECT_EQ(outcome.out, "");
    EXPECT_THAT(namesIn(out_), ElementsAre());
  }

  const std::filesystem::path in_ = emptyFolder("in");
  const std::filesystem::path out_ = emptyFolder("out");
  std::string configuration_;
};

const PacketBytes plain = ipv4Packet({"192.0.2.1", "203.0.113.1"}, 1);
const PacketBytes tunnel = inIpv4({"192.0.2.1", "203.0.113.1"}, plain);

TEST_F(ForwardCommandTest, PrintsCountersAsTables) {
  const auto file =
      capture("a.pcap", CaptureLink::ethernet,
              {{inEthernet(plain)}, {inEthernet(tunnel)}, {inEthernet(tunnel)}, {PacketBytes(60)}});
  const AgentOutcome outcome = forward({"Ethernet1=" + file});
  EXPECT_EQ(outcome.status, 0);
  EXPECT_EQ(outcome.err, "");
  EXPECT_EQ(outcome.out,
            "  INTERFACE  POLICY  RULE  MATCH            ACTION         PACKETS  BYTES\n"
            "  Ethernet1  edge    1     ipv4 protocol 4  actionVrf red  2        100\n"
            "  VRF      PACKETS  BYTES\n"
            "  default  1        30\n"
            "  red      2        100\n"
            "  frames without IP: 1\n");
  EXPECT_THAT(namesIn(out_), ElementsAre("Ethernet1_3.pcap", "Ethernet2.pcap"));
}

TEST_F(ForwardCommandTest, PacketsOfSeveralCapturesAreTakenByTheirTimes) {
  const auto packet = [](std::uint16_t number) {
    return ipv4Packet({"192.0.2.1", "203.0.113.1"}, number);
  };
  const auto a = capture("a.pcap", CaptureLink::rawIp,
                         {{packet(1), 10, 5}, {packet(3), 10, 7}, {packet(2), 9, 0}});
  const auto b = capture("b.pcap", CaptureLink::ethernet,
                         {{inEthernet(packet(11)), 10, 5}, {inEthernet(packet(12)), 10, 6}});
  const AgentOutcome outcome = forward({"Ethernet1=" + a, "Ethernet7=" + b});
  EXPECT_EQ(outcome.status, 0);
  EXPECT_THAT(readRawIpCapture(out_ / "Ethernet2.pcap"),
              ElementsAre(CaptureFrame{asForwarded(packet(1)), 10, 5},
                          CaptureFrame{asForwarded(packet(11)), 10, 5},
                          CaptureFrame{asForwarded(packet(12)), 10, 6},
                          CaptureFrame{asForwarded(packet(3)), 10, 7},
                          CaptureFrame{asForwarded(packet(2)), 9, 0}));
}

TEST_F(ForwardCommandTest, APacketIsTakenWithoutThePaddingOfItsFrame) {
  PacketBytes frame = inEthernet(plain);
  frame.resize(frame.size() + 16, 0xee);
  const AgentOutcome outcome =
      forward({"Ethernet1=" + capture("a.pcap", CaptureLink::ethernet, {{frame}})});
  EXPECT_EQ(outcome.status, 0);
  EXPECT_THAT(readRawIpCapture(out_ / "Ethernet2.pcap"),
              ElementsAre(CaptureFrame{asForwarded(plain)}));
}

TEST_F(ForwardCommandTest, APathMayHaveAnEqualsSignInIt) {
  const auto file = capture("a=b.pcap", CaptureLink::rawIp, {{plain}});
  EXPECT_EQ(forward({"Ethernet1=" + file}).status, 0);
  EXPECT_THAT(namesIn(out_), ElementsAre("Ethernet2.pcap"));
}

TEST_F(ForwardCommandTest, WithoutPacketsNothingIsWritten) {
  const AgentOutcome outcome =
      forward({"Ethernet5=" + capture("a.pcap", CaptureLink::rawIp, {})}, {"--json"});
  EXPECT_EQ(outcome.status, 0);
  EXPECT_THAT(namesIn(out_), ElementsAre());
  const auto documents = outcome.documents();
  ASSERT_EQ(documents.size(), 1U);
  EXPECT_EQ(documents[0]["vrfs"], nlohmann::json::array());
  EXPECT_EQ(documents[0]["drops"], nlohmann::json::array());
  EXPECT_EQ(documents[0]["notIp"], 0);
}

TEST_F(ForwardCommandTest, ADroppedPacketIsInNoCapture) {
  const auto file = capture("a.pcap", CaptureLink::rawIp, {{withTtl(plain, 1)}, {{0x45}}, {plain}});
  const AgentOutcome outcome = forward({"Ethernet1=" + file}, {"--json"});
  EXPECT_EQ(outcome.status, 0);
  EXPECT_THAT(readRawIpCapture(out_ / "Ethernet2.pcap"),
              ElementsAre(CaptureFrame{asForwarded(plain)}));
  EXPECT_EQ(outcome.documents().at(0)["drops"],
            (nlohmann::json::parse(R"([{"reason": "malformed", "packets": 1, "bytes": 1},
                                       {"reason": "ttlExpired", "packets": 1, "bytes": 30}])")));
}

TEST_F(ForwardCommandTest, APacketThatTheCaptureHoldsInPartIsDroppedAsMalformed) {
  const std::size_t whole = plain.size();
  for (const auto& [name, link, frame, cutAt] :
       {std::tuple("raw.pcap", CaptureLink::rawIp, plain, whole - 1),
        std::tuple("frame.pcap", CaptureLink::ethernet, inEthernet(plain), 14 + whole - 1)}) {
    writeCapture(in_ / name, link, {{frame}, {frame}}, cutAt);
    const AgentOutcome outcome = forward({"Ethernet1=" + (in_ / name).string()}, {"--json"});
    EXPECT_EQ(outcome.status, 0);
    EXPECT_THAT(namesIn(out_), ElementsAre());
    EXPECT_EQ(
        outcome.documents().at(0)["drops"],
        (nlohmann::json{{{"reason", "malformed"}, {"packets", 2}, {"bytes", 2 * (whole - 1)}}}));
  }
}

TEST_F(ForwardCommandTest, AFrameThatTheCaptureHoldsInPartIsForwardedWhenItsPacketIsWhole) {
  PacketBytes padded = inEthernet(plain);
  padded.resize(padded.size() + 16, 0xee);
  writeCapture(in_ / "a.pcap", CaptureLink::ethernet, {{padded}}, padded.size() - 16);
  EXPECT_EQ(forward({"Ethernet1=" + (in_ / "a.pcap").string()}).status, 0);
  EXPECT_THAT(readRawIpCapture(out_ / "Ethernet2.pcap"),
              ElementsAre(CaptureFrame{asForwarded(plain)}));
}

TEST_F(ForwardCommandTest, ACaptureThatIsNotNamedWithItsInterfaceIsRefused) {
  for (const std::string bad : {"a.pcap", "=a.pcap"}) {
    expectRefused(forward({bad}), "--in must be INTERFACE=FILE, not \"" + bad + '"');
  }
}

TEST_F(ForwardCommandTest, AnInterfaceNameOverHundredBytesIsRefused) {
  const auto file = capture("a.pcap", CaptureLink::rawIp, {{plain}});
  EXPECT_EQ(forward({std::string(100, 'e') + '=' + file}).status, 0);
  std::filesystem::remove(out_ / "Ethernet2.pcap");
  expectRefused(forward({std::string(101, 'e') + '=' + file}),
                "--in: INTERFACE must be an interface name of 1 to 100 bytes, found \"" +
                    std::string(100, 'e') + "...\"");
}

TEST_F(ForwardCommandTest, ACaptureIsReadFromStandardInput) {
  const auto file = capture("a.pcap", CaptureLink::rawIp, {{plain}});
  const AgentOutcome outcome =
      runAgentReading(file, {"forward", configuration_, "--out", out_, "--in", "Ethernet1=-"});
  EXPECT_EQ(outcome.status, 0) << outcome.err;
  EXPECT_THAT(readRawIpCapture(out_ / "Ethernet2.pcap"),
              ElementsAre(CaptureFrame{asForwarded(plain)}));
}

TEST_F(ForwardCommandTest, ACaptureThatCannotBeReadIsRefused) {
  const std::string missing = in_ / "none.pcap";
  expectRefused(forward({"Ethernet1=" + missing}),
                missing + ": cannot be read: No such file or directory" + captureAdvice);
  const auto cooked = capture("cooked.pcap", CaptureLink::linuxCooked, {});
  expectRefused(forward({"Ethernet1=" + cooked}),
                cooked + ": has link type LINUX_SLL" + captureAdvice);
}

TEST_F(ForwardCommandTest, ACaptureThatIsCutOffIsRefusedAndNothingIsWritten) {
  const auto file = capture("a.pcap", CaptureLink::rawIp, {{plain}, {plain}, {plain}});
  std::filesystem::resize_file(file, std::filesystem::file_size(file) - 3);
  expectRefused(
      forward({"Ethernet1=" + file}),
      file + ": truncated dump file; tried to read 30 captured bytes, only got 27" + captureAdvice);
}

TEST_F(ForwardCommandTest, ABadSecondCaptureIsRefusedBeforeAnythingIsForwarded) {
  const auto file = capture("a.pcap", CaptureLink::rawIp, {{plain}});
  const std::string missing = in_ / "none.pcap";
  expectRefused(forward({"Ethernet1=" + file, "Ethernet2=" + missing}),
                missing + ": cannot be read: No such file or directory" + captureAdvice);
}

TEST_F(ForwardCommandTest, InterfacesThatWouldShareAFileAreRefused) {
  OpenConfigBuilder configuration;
  configuration.intf("DEFAULT", "Ethernet1");
  configuration.route("DEFAULT", "203.0.113.0/24", "Ethernet1/3")
      .route("DEFAULT", "198.51.100.0/24", "Ethernet1_3");
  configuration_ = writeFile("clash.json", configuration.text());
  const auto file =
      capture("a.pcap", CaptureLink::rawIp, {{plain}, {ipv4Packet({"192.0.2.1", "198.51.100.1"})}});
  expectRefused(forward({"Ethernet1=" + file}),
                (out_ / "Ethernet1_3.pcap").string() +
                    ": is wanted for two interfaces, \"Ethernet1/3\" and \"Ethernet1_3\"; name "
                    "them apart");
}

TEST_F(ForwardCommandTest, AnOutputThatIsNoFolderIsRefused) {
  const auto file = capture("a.pcap", CaptureLink::rawIp, {{plain}});
  const AgentOutcome outcome =
      runAgent({"forward", configuration_, "--in", "Ethernet1=" + file, "--out", file});
  EXPECT_EQ(outcome.status, 2);
  EXPECT_EQ(outcome.err, "error: " + file +
                             ": cannot be made: Not a directory; give a folder that can be written "
                             "to\n");
}

TEST_F(ForwardCommandTest, ABadEventIsRefusedInOneLine) {
  const auto file = capture("a.pcap", CaptureLink::rawIp, {{plain}});
  const std::string events = writeFile("test.events", "route red 10.0.0.0/8 over Ethernet1\n");
  expectRefused(forward({"Ethernet1=" + file}, {"--events", events}),
                events +
                    ":1: route VRF PREFIX decap|via|remove: PREFIX must be followed by decap, "
                    "via or remove, found 'over'");
}

TEST_F(ForwardCommandTest, MissingOptionsAreRefusedInOneLine) {
  const AgentOutcome noCapture = runAgent({"forward", configuration_, "--out", out_});
  EXPECT_EQ(noCapture.status, 2);
  EXPECT_EQ(noCapture.err, "error: --in is required; see zel-agent forward --help\n");
  const AgentOutcome noFolder = runAgent({"forward", configuration_, "--in", "Ethernet1=a.pcap"});
  EXPECT_EQ(noFolder.status, 2);
  EXPECT_EQ(noFolder.err, "error: --out is required; see zel-agent forward --help\n");
}

TEST_F(ForwardCommandTest, WarningsDoNotKeepItFromForwarding) {
  OpenConfigBuilder configuration;
  configuration.policy("edge", {ruleOf(1, "", {}, toVrf("nowhere"))}, {"Ethernet1"});
  configuration_ = writeFile("warned.json", configuration.text());
  const auto file = capture("a.pcap", CaptureLink::rawIp, {{plain}});
  const AgentOutcome outcome = forward({"Ethernet1=" + file}, {"--json"});
  EXPECT_EQ(outcome.status, 0);
  EXPECT_THAT(outcome.err, ::testing::StartsWith("warning: " + configuration_));
  EXPECT_EQ(outcome.documents().at(0)["drops"][0]["reason"], "noVrfResource");
}

}  // namespace
}  // namespace ZelAgent
