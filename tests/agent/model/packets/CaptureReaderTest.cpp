// Captures that others wrote are read packet by packet, or refused in one line.
#include "agent/model/packets/Captures.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <fstream>

#include "agent/language/Errors.h"
#include "tests/agent/CaptureFile.h"

namespace ZelAgent {
namespace {

constexpr const char* advice = "; give a capture (pcap) of Ethernet or of raw IP";

const PacketBytes v4 = ipv4Packet({"192.0.2.1", "203.0.113.9"}, 4);
const PacketBytes v6 = ipv6Packet({"2001:db8::1", "2001:db8::2"}, 6);

class CaptureReaderTest : public ::testing::Test {
 protected:
  std::string write(CaptureLink link, const std::vector<CaptureFrame>& frames) {
    const auto file = folder_ / "in.pcap";
    writeCapture(file, link, frames);
    return file;
  }

  static std::vector<std::optional<PacketBytes>> packetsIn(const std::string& file) {
    std::vector<std::optional<PacketBytes>> packets;
    CaptureReader reader(file);
    while (const auto captured = reader.next())
      packets.push_back(captured->ipPacket);
    return packets;
  }

  static std::string refusalOf(const std::string& file) {
    try {
      (void)packetsIn(file);
    } catch (const CaptureError& error) {
      return error.what();
    }
    return "it was read";
  }

  const std::filesystem::path folder_ = emptyFolder("captures");
};

using Packets = std::vector<std::optional<PacketBytes>>;

TEST_F(CaptureReaderTest, PacketsOfEthernetComeWithoutTheirFrames) {
  const auto file = write(CaptureLink::ethernet, {{inEthernet(v4)}, {inEthernet(v6)}});
  EXPECT_EQ(packetsIn(file), (Packets{v4, v6}));
}

TEST_F(CaptureReaderTest, AFrameWithoutIpComesWithoutAPacket) {
  PacketBytes arp = inEthernet(v4);
  arp[12] = 0x08;
  arp[13] = 0x06;
  const auto file =
      write(CaptureLink::ethernet, {{inEthernet(v4)}, {arp}, {{1, 2, 3}}, {{}}, {inEthernet(v6)}});
  EXPECT_EQ(packetsIn(file), (Packets{v4, std::nullopt, std::nullopt, std::nullopt, v6}));
}

TEST_F(CaptureReaderTest, PacketsOfRawIpComeAsTheyAre) {
  for (const CaptureLink link : {CaptureLink::rawIp, CaptureLink::ipv4, CaptureLink::ipv6}) {
    EXPECT_EQ(packetsIn(write(link, {{v6}, {v4}, {{0x45}}})), (Packets{v6, v4, PacketBytes{0x45}}));
  }
}

TEST_F(CaptureReaderTest, TimesAreThoseOfTheCapture) {
  CaptureReader reader(
      write(CaptureLink::rawIp, {{v4, 1'700'000'000, 123'456'789}, {v4, 5, 999'999'999}}));
  EXPECT_EQ(reader.next()->time, (CaptureTime{1'700'000'000, 123'456'789}));
  EXPECT_EQ(reader.next()->time, (CaptureTime{5, 999'999'999}));
  EXPECT_FALSE(reader.next().has_value());
  EXPECT_FALSE(reader.next().has_value());
}

TEST_F(CaptureReaderTest, ACaptureWithoutPacketsIsAtItsEnd) {
  EXPECT_TRUE(packetsIn(write(CaptureLink::ethernet, {})).empty());
}

TEST_F(CaptureReaderTest, OtherLinkTypesAreRefusedByTheirName) {
  const auto file = write(CaptureLink::linuxCooked, {});
  EXPECT_EQ(refusalOf(file), file + ": has link type LINUX_SLL" + advice);
}

TEST_F(CaptureReaderTest, AFileThatIsNotThereIsNamedOnce) {
  const std::string file = folder_ / "none.pcap";
  EXPECT_EQ(refusalOf(file), file + ": No such file or directory" + advice);
}

TEST_F(CaptureReaderTest, AFileThatIsNoCaptureIsRefused) {
  const std::string file = folder_ / "text.pcap";
  std::ofstream(file) << "this is a text, and not a capture of packets";
  EXPECT_EQ(refusalOf(file), file + ": unknown file format" + advice);
}

TEST_F(CaptureReaderTest, AnEmptyFileIsRefused) {
  const std::string file = folder_ / "empty.pcap";
  std::ofstream{file};
  EXPECT_EQ(refusalOf(file),
            file + ": truncated dump file; tried to read 4 file header bytes, only got 0" + advice);
}

TEST_F(CaptureReaderTest, AFileThatEndsWithinAPacketIsRefusedAfterThosePackets) {
  const auto file = write(CaptureLink::rawIp, {{v4}, {v4}});
  std::filesystem::resize_file(file, std::filesystem::file_size(file) - 1);
  CaptureReader reader(file);
  EXPECT_EQ(reader.next()->ipPacket, v4);
  try {
    (void)reader.next();
    FAIL() << "it was read";
  } catch (const CaptureError& error) {
    EXPECT_EQ(error.what(), file + ": truncated dump file; tried to read " +
                                std::to_string(v4.size()) + " captured bytes, only got " +
                                std::to_string(v4.size() - 1) + advice);
  }
}

TEST_F(CaptureReaderTest, MessagesAreOneLineWhateverTheFileIsCalled) {
  EXPECT_THAT(refusalOf("no\nsuch\x1b.pcap"), ::testing::StartsWith("no\\x0asuch\\x1b.pcap: "));
}

}  // namespace
}  // namespace ZelAgent
