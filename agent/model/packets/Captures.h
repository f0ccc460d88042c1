#pragma once

#include <compare>
#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <map>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <vector>

struct pcap;

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
/// The constructor and `next` throw a `CaptureError` for a file of another kind, for one that ends
/// within a packet, and for one of more than `Limits::inputFileBytes`.
class CaptureReader final {
 public:
  /// `file` is the path of a regular file, or "-" for standard input.
  explicit CaptureReader(std::string file);

  /// The next packet. Nothing at the end of the file.
  [[nodiscard]] std::optional<CapturedPacket> next();

 private:
  struct Close {
    void operator()(pcap* capture) const noexcept;
  };

  void count(std::size_t packetBytes);

  std::string file_;
  std::unique_ptr<pcap, Close> capture_;
  std::size_t readBytes_ = 0;  // as far as packets show
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
///
/// The packets are in memory until `keep` writes one file after the other. So no number of
/// interfaces needs more than one open file.
class CaptureFolder final {
 public:
  /// Makes the folder if it does not exist. Throws a `CaptureError`, as all functions here do.
  explicit CaptureFolder(std::filesystem::path folder);
  CaptureFolder(const CaptureFolder&) = delete;
  CaptureFolder& operator=(const CaptureFolder&) = delete;
  ~CaptureFolder();

  void write(const std::string& interface, const CaptureTime& time,
             std::span<const std::uint8_t> packet);
  /// Writes the files. A signal that would end the process does so after the unfinished files are
  /// removed.
  void keep();

 private:
  struct Close {
    void operator()(pcap* capture) const noexcept;
  };
  class Capture;

  Capture& captureOf(const std::string& interface);

  std::filesystem::path folder_;
  std::unique_ptr<pcap, Close> rawIp_;
  std::map<std::filesystem::path, Capture> captures_;  // by the names of their files
};

}  // namespace ZelAgent
