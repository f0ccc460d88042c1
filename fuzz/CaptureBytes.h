// A capture of packets, made from an input as the descriptions of pcap and pcapng say, without the
// code that reads captures.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "agent/model/packets/Captures.h"
#include "fuzz/FuzzedBytes.h"

namespace Fuzz {

struct CaptureBytes {
  std::string bytes;
  // Whether the capture is of Ethernet or raw IP.
  bool isReadable = false;
  std::vector<ZelAgent::CapturedPacket> packets;
};

// An undamaged capture of up to eight packets: pcap with a clock of microseconds or nanoseconds, or
// pcapng, in either byte order.
[[nodiscard]] CaptureBytes captureOf(FuzzedBytes& input);

// Changes some bytes or the size of the capture.
void damage(CaptureBytes& capture, FuzzedBytes& input);

}  // namespace Fuzz
