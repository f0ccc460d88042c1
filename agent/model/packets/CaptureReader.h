// Why: packets that were captured anywhere can be sent through the chip.
// Always: packets come in the order of the file; a file that is no capture of Ethernet or raw IP,
// or that ends within a packet, is a CaptureError.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
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
  // From the first byte of the IP header on; none where the frame carries no IP.
  std::optional<std::vector<std::uint8_t>> ipPacket;
};

class CaptureReader final {
 public:
  explicit CaptureReader(std::string file);

  // The next packet; nothing at the end of the file.
  [[nodiscard]] std::optional<CapturedPacket> next();

 private:
  struct Close {
    void operator()(pcap* capture) const noexcept;
  };

  std::string file_;
  std::unique_ptr<pcap, Close> capture_;
  bool isEthernet_ = false;
};

}  // namespace ZelAgent
