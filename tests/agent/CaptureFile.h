// Captures as other programs write and read them: by libpcap, without any code of the agent.
#pragma once

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

#include "tests/agent/TestPackets.h"

namespace ZelAgent {

enum class CaptureLink { ethernet, rawIp, ipv4, ipv6, linuxCooked };

struct CaptureFrame {
  PacketBytes bytes;
  std::int64_t seconds = 0;
  std::int64_t nanoseconds = 0;

  bool operator==(const CaptureFrame&) const = default;
};

// `cutAt` is the number of bytes of each frame that the capture holds, as with a snap length.
void writeCapture(const std::filesystem::path& file, CaptureLink link,
                  const std::vector<CaptureFrame>& frames, std::size_t cutAt = 65535);

// A capture of raw IP with times of nanoseconds; anything else is a failure of the test.
[[nodiscard]] std::vector<CaptureFrame> readRawIpCapture(const std::filesystem::path& file);

// The names of what is in the folder, in their order.
[[nodiscard]] std::vector<std::string> namesIn(const std::filesystem::path& folder);

// A folder of the test that runs, empty at first.
[[nodiscard]] std::filesystem::path emptyFolder(const std::string& name);

}  // namespace ZelAgent
