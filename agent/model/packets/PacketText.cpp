#include "agent/model/packets/PacketText.h"

#include <algorithm>
#include <iterator>
#include <optional>
#include <string_view>

#include "agent/config/IpPrefix.h"
#include "agent/language/Limits.h"
#include "agent/language/TcpFlags.h"
#include "agent/language/Words.h"
#include "chips/packet/Checksum.h"
#include "chips/packet/Decapsulation.h"

namespace ZelAgent {
namespace {

using Bytes = std::vector<std::uint8_t>;

constexpr const char* form = "ipv4|ipv6 SOURCE to DESTINATION [FIELD VALUE]... [carrying PACKET]";
constexpr std::uint32_t longestPacket = 65535;
constexpr std::uint32_t lastFragmentOffset = 8191;
constexpr std::uint8_t fragmentHeader = 44;

Bytes readBuilt(EventLine& line, IpFamily family);

void put16(Bytes& bytes, std::size_t number) {
  bytes.push_back(static_cast<std::uint8_t>(number >> 8));
  bytes.push_back(static_cast<std::uint8_t>(number));
}

// What follows the addresses of a packet.
struct Options {
  PacketFields fields;
  std::optional<std::uint8_t> protocol;
  std::optional<std::uint16_t> sourcePort;
  std::optional<std::uint16_t> destinationPort;
  std::optional<std::uint8_t> tcpFlags;
  std::optional<std::uint16_t> length;
  bool carriesPacket = false;

  [[nodiscard]] bool hasPorts() const noexcept { return sourcePort || destinationPort; }
};

IpAddress readAddress(EventLine& line, const char* what, IpFamily family) {
  const std::optional<Word> word = line.next();
  const auto address = parseIpAddress(word ? word->text : "");
  if (!address || address->family != family) {
    line.fail(std::string(what) + " must be an " + toText(family) + " address", word);
  }
  return *address;
}

std::uint8_t readByte(EventLine& line, const char* what, std::uint32_t most) {
  return static_cast<std::uint8_t>(line.needNumber(what, most));
}

std::uint16_t read16(EventLine& line, const char* what, std::uint32_t most = 65535) {
  return static_cast<std::uint16_t>(line.needNumber(what, most));
}

std::uint8_t readTcpFlags(EventLine& line) {
  const std::optional<Word> word = line.next();
  const auto flags = parseTcpFlags(word ? word->text : "");
  if (!flags) {
    line.fail("tcp-flags must be none, or some of fin,syn,rst,psh,ack,urg,ece,cwr", word);
  }
  return *flags;
}

IpFamily readFamily(EventLine& line) {
  const std::string word = line.needOneOf("a carried PACKET must begin with", {"ipv4", "ipv6"});
  return word == "ipv4" ? IpFamily::v4 : IpFamily::v6;
}

void readCarried(EventLine& line, Options& options) {
  const IpFamily family = readFamily(line);
  PacketFields& fields = options.fields;
  fields.protocol = family == IpFamily::v4 ? Chips::protocolIpv4 : Chips::protocolIpv6;
  fields.payload = readBuilt(line, family);
  options.carriesPacket = true;
  if (fields.payload.size() > Limits::payloadBytes) {
    line.fail(
        "a carried PACKET must have at most " + std::to_string(Limits::payloadBytes) + " bytes",
        Word{std::to_string(fields.payload.size()), false});
  }
}

// A word after the addresses, and what reads the value that follows it.
struct Keyword {
  std::string_view name;
  void (*read)(EventLine& line, Options& options);
};

constexpr Keyword keywords[] = {
    {"protocol", [](auto& line, auto& to) { to.protocol = readByte(line, "protocol", 255); }},
    {"dscp", [](auto& line, auto& to) { to.fields.dscp = readByte(line, "dscp", 63); }},
    {"ecn", [](auto& line, auto& to) { to.fields.ecn = readByte(line, "ecn", 3); }},
    {"ttl", [](auto& line, auto& to) { to.fields.ttl = readByte(line, "ttl", 255); }},
    {"length", [](auto& line, auto& to) { to.length = read16(line, "length", longestPacket); }},
    {"fragment-offset",
     [](auto& line, auto& to) {
       to.fields.fragmentOffset = read16(line, "fragment-offset", lastFragmentOffset);
     }},
    {"source-port", [](auto& line, auto& to) { to.sourcePort = read16(line, "source-port"); }},
    {"destination-port",
     [](auto& line, auto& to) { to.destinationPort = read16(line, "destination-port"); }},
    {"tcp-flags", [](auto& line, auto& to) { to.tcpFlags = readTcpFlags(line); }},
    {"carrying", readCarried},
};

void readOption(EventLine& line, const Word& word, Options& options) {
  const auto* const keyword =
      std::find_if(std::begin(keywords), std::end(keywords),
                   [&](const Keyword& candidate) { return candidate.name == word.text; });
  if (keyword == std::end(keywords))
    line.fail("DESTINATION may be followed by " + alternatives(packetKeywords()), word);
  keyword->read(line, options);
}

// Throws unless a packet can have the ports and flags.
void checkUpperLayer(const EventLine& line, const Options& options) {
  if (!options.hasPorts() && !options.tcpFlags) return;
  const std::uint8_t protocol = options.fields.protocol;
  const Word found{std::to_string(protocol), false};
  if (options.carriesPacket) {
    line.fail("a packet that carries another one must have no ports and no tcp-flags",
              Word{"carrying", false});
  }
  if (options.tcpFlags && protocol != Chips::protocolTcp)
    line.fail("the protocol of a packet with tcp-flags must be 6", found);
  if (protocol != Chips::protocolTcp && protocol != Chips::protocolUdp)
    line.fail("the protocol of a packet with ports must be 6 or 17", found);
  if (options.fields.fragmentOffset.value_or(0) != 0) {
    line.fail("the fragment-offset of a packet with ports or tcp-flags must be 0",
              Word{std::to_string(*options.fields.fragmentOffset), false});
  }
}

// A TCP or UDP header, which has no checksum.
Bytes upperLayer(const Options& options) {
  Bytes bytes;
  put16(bytes, options.sourcePort.value_or(0));
  put16(bytes, options.destinationPort.value_or(0));
  if (options.fields.protocol == Chips::protocolTcp) {
    bytes.resize(12);
    bytes.push_back(0x50);  // five words
    bytes.push_back(options.tcpFlags.value_or(0));
    bytes.resize(20);
  } else {
    put16(bytes, 8);
    put16(bytes, 0);
  }
  return bytes;
}

std::size_t ipBytes(const PacketFields& fields) {
  if (fields.source.family == IpFamily::v4) return 20;
  return fields.fragmentOffset ? 48 : 40;
}

// Adds zero bytes up to the length. A UDP header has the length of what it is in.
void extend(const EventLine& line, const Options& options, Bytes& payload) {
  if (options.length) {
    const std::size_t least = ipBytes(options.fields) + payload.size();
    if (*options.length < least) {
      line.fail("the length of this packet must be at least " + std::to_string(least),
                Word{std::to_string(*options.length), false});
    }
    payload.resize(*options.length - ipBytes(options.fields));
  }
  if (options.hasPorts() && options.fields.protocol == Chips::protocolUdp) {
    payload[4] = static_cast<std::uint8_t>(payload.size() >> 8);
    payload[5] = static_cast<std::uint8_t>(payload.size());
  }
}

Bytes readBuilt(EventLine& line, IpFamily family) {
  Options options;
  PacketFields& fields = options.fields;
  fields.source = readAddress(line, "SOURCE", family);
  static_cast<void>(line.needOneOf("SOURCE must be followed by", {"to"}));
  fields.destination = readAddress(line, "DESTINATION", family);
  while (!options.carriesPacket) {
    const auto word = line.next();
    if (!word) break;
    readOption(line, *word, options);
  }
  if (options.tcpFlags && !options.carriesPacket) fields.protocol = Chips::protocolTcp;
  fields.protocol = options.protocol.value_or(fields.protocol);
  checkUpperLayer(line, options);
  if (options.hasPorts() || options.tcpFlags) fields.payload = upperLayer(options);
  extend(line, options, fields.payload);
  return buildPacket(fields);
}

std::optional<std::uint8_t> hexDigit(char digit) {
  constexpr std::string_view digits = "0123456789abcdef";
  const char lower = digit >= 'A' && digit <= 'F' ? static_cast<char>(digit - 'A' + 'a') : digit;
  const std::size_t value = digits.find(lower);
  if (value == std::string_view::npos) return std::nullopt;
  return static_cast<std::uint8_t>(value);
}

Bytes readHex(EventLine& line) {
  line.formIs("hex BYTES");
  Bytes bytes;
  for (auto word = line.next(); word; word = line.next()) {
    if (word->text.size() % 2 != 0) line.fail("BYTES must be pairs of hexadecimal digits", word);
    for (std::size_t at = 0; at < word->text.size(); at += 2) {
      const auto high = hexDigit(word->text[at]);
      const auto low = hexDigit(word->text[at + 1]);
      if (!high || !low) line.fail("BYTES must be pairs of hexadecimal digits", word);
      bytes.push_back(static_cast<std::uint8_t>(*high << 4 | *low));
    }
  }
  return bytes;
}

constexpr std::size_t ipv4HeaderBytes = 20;
constexpr std::uint16_t moreFragments = 0x2000;  // IPv4

void putAddress(Bytes& bytes, const Ip::Address& address) {
  bytes.insert(bytes.end(), address.bytes.begin(),
               address.bytes.begin() + Ip::addressBits(address.family) / 8);
}

std::uint8_t trafficClass(const PacketFields& fields) {
  return static_cast<std::uint8_t>(fields.dscp << 2 | fields.ecn);
}

Bytes ipv4Header(const PacketFields& fields) {
  Bytes header{0x45, trafficClass(fields)};
  put16(header, ipv4HeaderBytes + fields.payload.size());
  put16(header, 0);  // identification
  put16(header, fields.fragmentOffset == 0 ? moreFragments : fields.fragmentOffset.value_or(0));
  header.push_back(fields.ttl);
  header.push_back(fields.protocol);
  put16(header, 0);
  putAddress(header, fields.source);
  putAddress(header, fields.destination);
  const std::uint16_t checksum = Chips::checksumOf(header);
  header[10] = static_cast<std::uint8_t>(checksum >> 8);
  header[11] = static_cast<std::uint8_t>(checksum);
  return header;
}

void putFragmentHeader(Bytes& bytes, std::uint8_t protocol, std::uint16_t offset) {
  bytes.push_back(protocol);
  bytes.push_back(0);
  put16(bytes, offset == 0 ? 1U : offset * 8U);  // the lowest bit: more fragments
  bytes.resize(bytes.size() + 4);                // identification
}

Bytes ipv6Header(const PacketFields& fields) {
  const std::uint8_t traffic = trafficClass(fields);
  Bytes header{static_cast<std::uint8_t>(0x60 | traffic >> 4),
               static_cast<std::uint8_t>(traffic << 4), 0, 0};
  put16(header, fields.payload.size() + (fields.fragmentOffset ? 8 : 0));
  header.push_back(fields.fragmentOffset ? fragmentHeader : fields.protocol);
  header.push_back(fields.ttl);
  putAddress(header, fields.source);
  putAddress(header, fields.destination);
  if (fields.fragmentOffset) putFragmentHeader(header, fields.protocol, *fields.fragmentOffset);
  return header;
}

}  // namespace

std::vector<std::uint8_t> readPacket(EventLine& line) {
  line.formIs(form);
  const std::string first = line.needOneOf("a packet must begin with", {"ipv4", "ipv6", "hex"});
  if (first == "hex") return readHex(line);
  return readBuilt(line, first == "ipv4" ? IpFamily::v4 : IpFamily::v6);
}

std::vector<std::string> packetKeywords() {
  std::vector<std::string> names;
  for (const Keyword& keyword : keywords)
    names.emplace_back(keyword.name);
  return names;
}

std::vector<std::uint8_t> buildPacket(const PacketFields& fields) {
  Bytes packet = fields.source.family == Ip::Family::v4 ? ipv4Header(fields) : ipv6Header(fields);
  packet.insert(packet.end(), fields.payload.begin(), fields.payload.end());
  return packet;
}

}  // namespace ZelAgent
