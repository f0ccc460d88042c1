#include "fuzz/CaptureBytes.h"

#include <algorithm>
#include <array>
#include <optional>

#include "agent/language/Limits.h"
#include "agent/model/packets/PacketText.h"

namespace Fuzz {
namespace {

using Bytes = std::vector<std::uint8_t>;
using ZelAgent::CaptureTime;

constexpr unsigned mostPackets = 8;
constexpr std::uint32_t longestCaptured = 262144;
constexpr std::int64_t nanosecondsPerSecond = 1'000'000'000;

enum class Link : std::uint16_t { ethernet = 1, rawIp = 101, cooked = 113, ipv4 = 228, ipv6 = 229 };

// Numbers in one of both byte orders.
class Numbers final {
 public:
  explicit Numbers(bool isBigEndian) : isBigEndian_(isBigEndian) {}

  Numbers& add(std::uint64_t number, unsigned size = 4) {
    for (unsigned byte = 0; byte < size; ++byte) {
      const unsigned place = isBigEndian_ ? size - 1 - byte : byte;
      bytes_ += static_cast<char>(number >> 8U * place);
    }
    return *this;
  }
  Numbers& add(const Bytes& bytes) {
    bytes_.append(bytes.begin(), bytes.end());
    return *this;
  }
  [[nodiscard]] const std::string& bytes() const noexcept { return bytes_; }

 private:
  bool isBigEndian_;
  std::string bytes_;
};

// The clock of a capture: the units of a second, and the exponent of 10 that pcapng gives it.
struct Clock {
  std::uint64_t units = 1'000'000;
  unsigned exponent = 6;
};

struct Format {
  bool isPcapng = false;
  bool isBigEndian = false;
  Clock clock;
  Link link = Link::ethernet;
  std::uint32_t snapLength = 0;  // 0 for no limit
};

struct Frame {
  Bytes kept;
  std::size_t length = 0;
  std::uint64_t seconds = 0;
  std::uint64_t fraction = 0;
};

Format formatOf(FuzzedBytes& input) {
  constexpr std::array<Clock, 4> clocks{{{1'000'000, 6}, {1'000'000'000, 9}, {1000, 3}, {10, 1}}};
  constexpr std::array<Link, 8> links{Link::ethernet, Link::ethernet, Link::ethernet, Link::rawIp,
                                      Link::rawIp,    Link::ipv4,     Link::ipv6,     Link::cooked};
  constexpr std::array<std::uint32_t, 4> snapLengths{longestCaptured, 0, 65535, 64};
  Format format;
  format.isPcapng = input.flag();
  format.isBigEndian = input.flag();
  format.clock = clocks[input.below(format.isPcapng ? clocks.size() : 2)];
  format.link = links[input.below(links.size())];
  format.snapLength = snapLengths[input.below(snapLengths.size())];
  return format;
}

Ip::Address addressOf(FuzzedBytes& input, Ip::Family family) {
  if (family == Ip::Family::v6) {
    return {family, {0x20, 0x01, 0x0d, 0xb8, input.byte()}};
  }
  constexpr std::array<std::array<std::uint8_t, 4>, 6> v4{{{198, 51, 100, 7},
                                                           {198, 51, 100, 66},
                                                           {198, 51, 100, 1},
                                                           {198, 51, 1, 1},
                                                           {203, 0, 113, 5},
                                                           {10, 0, 0, 1}}};
  const auto& chosen = v4[input.below(v4.size())];
  return {family, {chosen[0], chosen[1], chosen[2], chosen[3]}};
}

Bytes builtPacket(FuzzedBytes& input, unsigned depth = 0) {
  ZelAgent::PacketFields fields;
  const std::uint8_t how = input.byte();
  const Ip::Family family = (how & 1U) == 0 ? Ip::Family::v4 : Ip::Family::v6;
  fields.source = addressOf(input, family);
  fields.destination = addressOf(input, family);
  if ((how & 2U) != 0) fields.ttl = input.byte();
  if ((how & 4U) != 0) fields.ecn = how >> 6U;
  if ((how & 8U) != 0 && depth < 2) {
    fields.payload = builtPacket(input, depth + 1);
    fields.protocol = fields.payload.front() >> 4U == 4 ? 4 : 41;
  } else if ((how & 16U) != 0) {
    constexpr std::size_t headers = 2 * 40;  // of the packets that carry this one
    fields.payload.resize(
        input.below(static_cast<unsigned>(ZelAgent::Limits::payloadBytes - headers + 1)));
  }
  return ZelAgent::buildPacket(fields);
}

Bytes packetOf(FuzzedBytes& input) {
  if (input.below(4) != 0) return builtPacket(input);
  Bytes bytes(input.below(64));
  std::generate(bytes.begin(), bytes.end(), [&] { return input.byte(); });
  return bytes;
}

void append(Bytes& bytes, std::initializer_list<std::uint8_t> more) {
  bytes.insert(bytes.end(), more);
}

// Wraps the packet into an Ethernet frame. Returns where it begins; nothing if the frame does not
// say that it carries IP.
std::optional<std::size_t> wrap(Bytes& packet, FuzzedBytes& input) {
  Bytes frame(12, 0x02);
  for (unsigned tags = input.below(3); tags > 0; --tags) {
    append(frame, {static_cast<std::uint8_t>(tags == 2 ? 0x88 : 0x81),
                   static_cast<std::uint8_t>(tags == 2 ? 0xa8 : 0x00), 0, 5});
  }
  const unsigned type = input.below(8);
  const bool isIp = type < 7;
  const bool isV6 = !packet.empty() && packet.front() >> 4U == 6;
  append(frame,
         {static_cast<std::uint8_t>(isV6 ? 0x86 : 0x08), static_cast<std::uint8_t>(!isIp  ? 0x06
                                                                                   : isV6 ? 0xdd
                                                                                          : 0x00)});
  const std::size_t begin = frame.size();
  frame.insert(frame.end(), packet.begin(), packet.end());
  frame.resize(frame.size() + input.below(20));
  packet = frame;
  return isIp ? std::optional(begin) : std::nullopt;
}

// A frame, and what a reader of the capture must find in it.
Frame frameOf(const Format& format, FuzzedBytes& input, CaptureBytes& capture) {
  Frame frame;
  frame.kept = packetOf(input);
  const auto begin = format.link == Link::ethernet ? wrap(frame.kept, input) : std::optional(0UL);
  frame.length = frame.kept.size();
  constexpr std::array<std::uint64_t, 4> edges{0, 1'700'000'000, 0x80000000, 0xffffffff};
  frame.seconds = std::min(edges[input.below(edges.size())] + input.below(4), edges.back());
  const unsigned fraction = input.below(0x10000);
  frame.fraction = fraction == 0xffff ? format.clock.units - 1 : fraction % format.clock.units;
  if (format.snapLength != 0 && frame.kept.size() > format.snapLength) {
    frame.kept.resize(format.snapLength);
  }
  if (input.below(8) == 7) frame.kept.resize(input.below(64) % (frame.kept.size() + 1));
  ZelAgent::CapturedPacket& packet = capture.packets.emplace_back();
  packet.time = {
      static_cast<std::int64_t>(frame.seconds),
      static_cast<std::int64_t>(frame.fraction * nanosecondsPerSecond / format.clock.units)};
  if (begin && *begin <= frame.kept.size()) {
    packet.ipPacket =
        Bytes(frame.kept.begin() + static_cast<std::ptrdiff_t>(*begin), frame.kept.end());
  }
  return frame;
}

std::string pcapHeader(const Format& format) {
  const std::uint32_t magic = format.clock.exponent == 9 ? 0xa1b23c4d : 0xa1b2c3d4;
  Numbers header(format.isBigEndian);
  header.add(magic).add(2, 2).add(4, 2).add(0).add(0).add(format.snapLength);
  return header.add(static_cast<std::uint64_t>(format.link)).bytes();
}

std::string pcapRecord(const Format& format, const Frame& frame) {
  Numbers record(format.isBigEndian);
  record.add(frame.seconds).add(frame.fraction).add(frame.kept.size()).add(frame.length);
  return record.add(frame.kept).bytes();
}

std::string pcapngHeader(const Format& format) {
  Numbers header(format.isBigEndian);
  header.add(0x0a0d0d0a).add(28).add(0x1a2b3c4d).add(1, 2).add(0, 2).add(~std::uint64_t{0}, 8);
  header.add(28);
  header.add(1).add(32).add(static_cast<std::uint64_t>(format.link), 2).add(0, 2);
  header.add(format.snapLength);
  header.add(9, 2).add(1, 2).add(format.clock.exponent, 1).add(0, 3);  // if_tsresol
  return header.add(0).add(32).bytes();
}

// An enhanced packet block.
std::string pcapngBlock(const Format& format, const Frame& frame) {
  const std::uint64_t time = frame.seconds * format.clock.units + frame.fraction;
  const auto padding = static_cast<unsigned>((4 - frame.kept.size() % 4) % 4);
  const std::size_t size = 32 + frame.kept.size() + padding;
  Numbers block(format.isBigEndian);
  block.add(6).add(size).add(0).add(time >> 32U).add(time & 0xffffffff);
  block.add(frame.kept.size()).add(frame.length).add(frame.kept).add(0, padding);
  return block.add(size).bytes();
}

// A block that readers skip.
std::string otherBlock(const Format& format) {
  return Numbers(format.isBigEndian).add(0xbad).add(16).add(7).add(16).bytes();
}

}  // namespace

CaptureBytes captureOf(FuzzedBytes& input) {
  CaptureBytes capture;
  const Format format = formatOf(input);
  capture.isReadable = format.link != Link::cooked;
  capture.bytes = format.isPcapng ? pcapngHeader(format) : pcapHeader(format);
  for (unsigned count = input.below(mostPackets + 1); count > 0; --count) {
    const Frame frame = frameOf(format, input, capture);
    capture.bytes += format.isPcapng ? pcapngBlock(format, frame) : pcapRecord(format, frame);
    if (format.isPcapng && input.below(8) == 7) capture.bytes += otherBlock(format);
  }
  return capture;
}

void damage(CaptureBytes& capture, FuzzedBytes& input) {
  constexpr std::array<std::uint8_t, 4> edges{0, 1, 0x7f, 0xff};
  std::string& bytes = capture.bytes;
  const auto size = static_cast<unsigned>(bytes.size());
  const unsigned at = input.below(4) == 0 ? input.below(64) : input.below(size + 1);
  switch (input.below(4)) {
    case 0:
      return bytes.resize(std::min(at, size));
    case 1:
      bytes += bytes.substr(std::min(at, size));
      return;
    case 2:
      if (at < size) bytes[at] = static_cast<char>(input.byte());
      return;
    default:
      for (unsigned byte = at; byte < std::min(at + 4, size); ++byte)
        bytes[byte] = static_cast<char>(edges[input.below(edges.size())]);
  }
}

}  // namespace Fuzz
