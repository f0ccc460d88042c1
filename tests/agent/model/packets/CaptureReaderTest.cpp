// Captures that others wrote are read packet by packet, or refused in one line.
#include "agent/model/packets/Captures.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <cstddef>
#include <cstdint>
#include <fstream>
#include <utility>

#include "agent/language/Errors.h"
#include "tests/agent/CaptureFile.h"

namespace ZelAgent {
namespace {

constexpr const char* advice = "; give a capture (pcap) of Ethernet or of raw IP";

const PacketBytes v4 = ipv4Packet({"192.0.2.1", "203.0.113.9"}, 4);
const PacketBytes v6 = ipv6Packet({"2001:db8::1", "2001:db8::2"}, 6);

class CaptureReaderTest : public ::testing::Test {
 protected:
  std::string write(CaptureLink link, const std::vector<CaptureFrame>& frames,
                    std::size_t cutAt = 65535) {
    const auto file = folder_ / "in.pcap";
    writeCapture(file, link, frames, cutAt);
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

PacketBytes beginningOf(const PacketBytes& bytes, std::size_t size) {
  return {bytes.begin(), bytes.begin() + static_cast<std::ptrdiff_t>(size)};
}

// The numbers of the headers of a capture, in one of both byte orders.
class Numbers final {
 public:
  explicit Numbers(bool isLittleEndian) : isLittleEndian_(isLittleEndian) {}

  Numbers& add(std::uint32_t number, int bytes = 4) {
    for (int byte = 0; byte < bytes; ++byte) {
      const int place = isLittleEndian_ ? byte : bytes - 1 - byte;
      bytes_.push_back(static_cast<std::uint8_t>(number >> 8 * place));
    }
    return *this;
  }
  Numbers& addBytes(const PacketBytes& bytes) {
    append(bytes_, bytes);
    return *this;
  }
  std::string writtenTo(const std::filesystem::path& file) const {
    std::ofstream(file, std::ios::binary)
        .write(reinterpret_cast<const char*>(bytes_.data()),
               static_cast<std::streamsize>(bytes_.size()));
    return file;
  }

 private:
  bool isLittleEndian_;
  PacketBytes bytes_;
};

constexpr std::uint32_t microseconds = 0xa1b2c3d4;
constexpr std::uint32_t nanoseconds = 0xa1b23c4d;
constexpr std::uint32_t ethernetLink = 1;
constexpr std::uint32_t rawIpLink = 101;

// A capture of one frame, of which it holds `kept`.
Numbers classicCapture(bool isLittleEndian, std::uint32_t magic, std::uint32_t link,
                       const PacketBytes& kept, std::size_t length) {
  Numbers numbers(isLittleEndian);
  numbers.add(magic).add(2, 2).add(4, 2).add(0).add(0).add(65535).add(link);
  numbers.add(7).add(89).add(static_cast<std::uint32_t>(kept.size()));
  numbers.add(static_cast<std::uint32_t>(length)).addBytes(kept);
  return numbers;
}

// The same in the newer format: a section, an interface, and an enhanced packet.
Numbers pcapngCapture(bool isLittleEndian, std::uint32_t link, PacketBytes kept,
                      std::size_t length) {
  const auto size = static_cast<std::uint32_t>(kept.size());
  kept.resize((kept.size() + 3) / 4 * 4);
  const auto block = static_cast<std::uint32_t>(kept.size() + 32);
  Numbers numbers(isLittleEndian);
  numbers.add(0x0a0d0d0a).add(28).add(0x1a2b3c4d).add(1, 2).add(0, 2);
  numbers.add(0xffffffff).add(0xffffffff).add(28);
  numbers.add(1).add(20).add(link, 2).add(0, 2).add(65535).add(20);
  numbers.add(6).add(block).add(0).add(0).add(7000089).add(size);
  numbers.add(static_cast<std::uint32_t>(length)).addBytes(kept).add(block);
  return numbers;
}

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

TEST_F(CaptureReaderTest, TimesFrom2038To2106ComeAfterEarlierOnes) {
  for (const std::int64_t seconds : {0x80000000LL, 0xffffffffLL}) {
    CaptureReader reader(write(CaptureLink::rawIp, {{v4, seconds, 5}}));
    EXPECT_EQ(reader.next()->time, (CaptureTime{seconds, 5}));
  }
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
  EXPECT_EQ(refusalOf(file), file + ": cannot be read: No such file or directory" + advice);
}

TEST_F(CaptureReaderTest, AFileThatIsNoCaptureIsRefused) {
  const std::string file = folder_ / "text.pcap";
  std::ofstream(file) << "this is a text, and not a capture of packets";
  EXPECT_EQ(refusalOf(file), file + ": unknown file format" + advice);
}

TEST_F(CaptureReaderTest, AFifoIsRefusedAndNotWaitedFor) {
  const std::string fifo = folder_ / "fifo.pcap";
  ASSERT_EQ(mkfifo(fifo.c_str(), 0600), 0);
  EXPECT_EQ(refusalOf(fifo), fifo + ": is a FIFO" + advice);
}

TEST_F(CaptureReaderTest, ACaptureOverTheLargestSizeIsRefused) {
  const auto file = write(CaptureLink::rawIp, {{v4}});
  std::filesystem::resize_file(file, (std::uintmax_t{64} << 20U) + 1);
  EXPECT_EQ(refusalOf(file), file + ": is larger than 64 MiB" + advice);
}

TEST_F(CaptureReaderTest, ACaptureThatGrowsWhileItIsReadIsRefusedAtTheLargestSize) {
  constexpr std::uint32_t packetBytes = 256 * 1024;
  const auto file = write(CaptureLink::rawIp, {{v4}});
  CaptureReader reader(file);
  std::ofstream growing(file, std::ios::binary | std::ios::app);
  for (int packet = 0; packet < 256; ++packet) {
    const std::uint32_t header[] = {0, 0, packetBytes, packetBytes};
    growing.write(reinterpret_cast<const char*>(header), sizeof header);
    growing << std::string(packetBytes, '\0');
  }
  growing.close();
  const auto readAll = [&reader] {
    while (reader.next()) {
    }
  };
  EXPECT_THROW(readAll(), CaptureError);
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

TEST_F(CaptureReaderTest, APacketThatTheCaptureHoldsInPartComesWithTheBytesThatAreThere) {
  for (const CaptureLink link : {CaptureLink::rawIp, CaptureLink::ipv4, CaptureLink::ipv6}) {
    EXPECT_EQ(packetsIn(write(link, {{v4}, {v6}, {{0x45, 0}}}, 21)),
              (Packets{beginningOf(v4, 21), beginningOf(v6, 21), PacketBytes{0x45, 0}}));
  }
}

TEST_F(CaptureReaderTest, AFrameThatTheCaptureHoldsInPartComesWithTheBytesThatAreThere) {
  const std::vector<CaptureFrame> frames{{inEthernet(v4)}, {inEthernet(v6)}};
  EXPECT_EQ(packetsIn(write(CaptureLink::ethernet, frames, 35)),
            (Packets{beginningOf(v4, 21), beginningOf(v6, 21)}));
  EXPECT_EQ(packetsIn(write(CaptureLink::ethernet, frames, 14)),
            (Packets{PacketBytes{}, PacketBytes{}}));
  EXPECT_EQ(packetsIn(write(CaptureLink::ethernet, frames, 13)),
            (Packets{std::nullopt, std::nullopt}));
}

TEST_F(CaptureReaderTest, CapturesOfEitherByteOrderAndClockAreRead) {
  for (const bool isLittleEndian : {true, false}) {
    for (const auto& [magic, fraction] : {std::pair(microseconds, 89000), {nanoseconds, 89}}) {
      const auto file = classicCapture(isLittleEndian, magic, rawIpLink, v4, v4.size())
                            .writtenTo(folder_ / "classic.pcap");
      const auto captured = CaptureReader(file).next();
      ASSERT_TRUE(captured);
      EXPECT_EQ(captured->time, (CaptureTime{7, fraction}));
      EXPECT_EQ(captured->ipPacket, v4);
    }
  }
}

TEST_F(CaptureReaderTest, CapturesOfTheNewerFormatAreRead) {
  for (const bool isLittleEndian : {true, false}) {
    const auto file =
        pcapngCapture(isLittleEndian, ethernetLink, inEthernet(v6), inEthernet(v6).size())
            .writtenTo(folder_ / "newer.pcapng");
    const auto captured = CaptureReader(file).next();
    ASSERT_TRUE(captured);
    EXPECT_EQ(captured->time, (CaptureTime{7, 89000}));
    EXPECT_EQ(captured->ipPacket, v6);
  }
}

TEST_F(CaptureReaderTest, EveryFormatMayHoldAPacketInPart) {
  const PacketBytes frame = inEthernet(v4);
  const auto file = folder_ / "part.pcap";
  for (const bool isLittleEndian : {true, false}) {
    for (const std::uint32_t magic : {microseconds, nanoseconds}) {
      EXPECT_EQ(packetsIn(classicCapture(isLittleEndian, magic, ethernetLink,
                                         beginningOf(frame, 30), frame.size())
                              .writtenTo(file)),
                (Packets{beginningOf(v4, 16)}));
    }
    EXPECT_EQ(packetsIn(pcapngCapture(isLittleEndian, rawIpLink, beginningOf(v4, 19), v4.size())
                            .writtenTo(file)),
              (Packets{beginningOf(v4, 19)}));
  }
}

TEST_F(CaptureReaderTest, MessagesAreOneLineWhateverTheFileIsCalled) {
  EXPECT_THAT(refusalOf("no\nsuch\x1b.pcap"), ::testing::StartsWith("no\\x0asuch\\x1b.pcap: "));
}

}  // namespace
}  // namespace ZelAgent
