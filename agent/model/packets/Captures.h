#pragma once

#include <compare>
#include <cstdint>
#include <filesystem>
#include <map>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <vector>

struct pcap;
struct pcap_dumper;

namespace ZelAgent {

struct CaptureTime {
  std::int64_t seconds = 0;
  std::int64_t nanoseconds = 0;

  auto operator<=>(const CaptureTime&) const = default;  // NOLINT(modernize-use-nullptr): misread
};

struct CapturedPacket {
  CaptureTime time;
  /// From the first byte of the IP header on. Nothing if the frame carries no IP.
  std::optional<std::vector<std::uint8_t>> ipPacket;
};

/// The packets of a capture (pcap) of Ethernet or raw IP, in the order of the file.
///
/// The constructor and `next` throw a `CaptureError` for a file of another kind, and for one that
/// ends within a packet.
class CaptureReader final {
 public:
  explicit CaptureReader(std::string file);

  /// The next packet. Nothing at the end of the file.
  [[nodiscard]] std::optional<CapturedPacket> next();

 private:
  struct Close {
    void operator()(pcap* capture) const noexcept;
  };

  std::string file_;
  std::unique_ptr<pcap, Close> capture_;
  bool isEthernet_ = false;
};

/// The IP packet in an Ethernet frame, behind any number of VLAN tags, with any padding after it.
/// Nothing if the frame carries something else. Reads no byte outside of the frame.
[[nodiscard]] std::optional<std::span<const std::uint8_t>> ipPacketIn(
    std::span<const std::uint8_t> frame) noexcept;

/// Writes the packets that leave by each interface to a capture of raw IP, all in one folder.
///
/// The file of an interface is INTERFACE.pcap, with "_" in place of "/" and of zero bytes. Packets
/// are in the order in which they were written. `keep` makes the files appear. Without it no file
/// is made, and files of the same names stay as they were.
class CaptureFolder final {
 public:
  /// Makes the folder if it does not exist. Throws a `CaptureError`, as all functions here do.
  explicit CaptureFolder(std::filesystem::path folder);
  CaptureFolder(const CaptureFolder&) = delete;
  CaptureFolder& operator=(const CaptureFolder&) = delete;
  ~CaptureFolder();

  void write(const std::string& interface, const CaptureTime& time,
             std::span<const std::uint8_t> packet);
  /// Gives the files their names.
  void keep();

 private:
  struct Close {
    void operator()(pcap* capture) const noexcept;
    void operator()(pcap_dumper* dumper) const noexcept;
  };
  struct File {
    std::string interface;
    std::filesystem::path unfinished;
    std::unique_ptr<pcap_dumper, Close> dumper;
  };

  File& fileOf(const std::string& interface);

  std::filesystem::path folder_;
  std::unique_ptr<pcap, Close> rawIp_;
  std::map<std::filesystem::path, File> files_;  // by their final names
};

}  // namespace ZelAgent
