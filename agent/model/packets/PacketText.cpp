#include "agent/model/packets/PacketText.h"

#include <optional>

#include "agent/config/IpPrefix.h"
#include "agent/language/Limits.h"
#include "chips/soft/packet/Checksum.h"
#include "chips/soft/packet/Decapsulation.h"

namespace ZelAgent {
namespace {

using Bytes = std::vector<std::uint8_t>;

constexpr const char* form =
    "ipv4|ipv6 SOURCE to DESTINATION [protocol N] [dscp N] [ecn N] [ttl N] [carrying PACKET]";

Bytes readBuilt(EventLine& line, IpFamily family);

IpAddress readAddress(EventLine& line, const char* what, IpFamily family) {
  const std::optional<Word> word = line.next();
  const auto address = parseIpAddress(word ? word->text : "");
  if (!address || address->family != family) {
    line.fail(std::string(what) + " must be an " + toText(family) + " address", word);
  }
  return *address;
}

std::uint8_t readSmall(EventLine& line, const char* what, std::uint32_t most) {
  return static_cast<std::uint8_t>(line.needNumber(what, most));
}

IpFamily readFamily(EventLine& line) {
  const std::string word = line.needOneOf("a carried PACKET must begin with", {"ipv4", "ipv6"});
  return word == "ipv4" ? IpFamily::v4 : IpFamily::v6;
}

// Reads one option that follows the addresses. Returns whether it must be the last one.
bool readOption(EventLine& line, const Word& word, PacketFields& fields,
                std::optional<std::uint8_t>& protocol) {
  if (word.text == "protocol") {
    protocol = readSmall(line, "protocol", 255);
  } else if (word.text == "dscp") {
    fields.dscp = readSmall(line, "dscp", 63);
  } else if (word.text == "ecn") {
    fields.ecn = readSmall(line, "ecn", 3);
  } else if (word.text == "ttl") {
    fields.ttl = readSmall(line, "ttl", 255);
  } else if (word.text == "carrying") {
    const IpFamily family = readFamily(line);
    fields.protocol = family == IpFamily::v4 ? SoftChip::protocolIpv4 : SoftChip::protocolIpv6;
    fields.payload = readBuilt(line, family);
    if (fields.payload.size() > Limits::payloadBytes) {
      line.fail(
          "a carried PACKET must have at most " + std::to_string(Limits::payloadBytes) + " bytes",
          Word{std::to_string(fields.payload.size()), false});
    }
    return true;
  } else {
    line.fail("DESTINATION may be followed by protocol, dscp, ecn, ttl or carrying", word);
  }
  return false;
}

Bytes readBuilt(EventLine& line, IpFamily family) {
  PacketFields fields;
  fields.source = readAddress(line, "SOURCE", family);
  static_cast<void>(line.needOneOf("SOURCE must be followed by", {"to"}));
  fields.destination = readAddress(line, "DESTINATION", family);
  std::optional<std::uint8_t> protocol;
  for (auto word = line.next(); word; word = line.next()) {
    if (readOption(line, *word, fields, protocol)) break;
  }
  fields.protocol = protocol.value_or(fields.protocol);
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

void put16(Bytes& bytes, std::size_t number) {
  bytes.push_back(static_cast<std::uint8_t>(number >> 8));
  bytes.push_back(static_cast<std::uint8_t>(number));
}

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
  put16(header, 0);  // not a fragment
  header.push_back(fields.ttl);
  header.push_back(fields.protocol);
  put16(header, 0);
  putAddress(header, fields.source);
  putAddress(header, fields.destination);
  const std::uint16_t checksum = SoftChip::checksumOf(header);
  header[10] = static_cast<std::uint8_t>(checksum >> 8);
  header[11] = static_cast<std::uint8_t>(checksum);
  return header;
}

Bytes ipv6Header(const PacketFields& fields) {
  const std::uint8_t traffic = trafficClass(fields);
  Bytes header{static_cast<std::uint8_t>(0x60 | traffic >> 4),
               static_cast<std::uint8_t>(traffic << 4), 0, 0};
  put16(header, fields.payload.size());
  header.push_back(fields.protocol);
  header.push_back(fields.ttl);
  putAddress(header, fields.source);
  putAddress(header, fields.destination);
  return header;
}

}  // namespace

std::vector<std::uint8_t> readPacket(EventLine& line) {
  line.formIs(form);
  const std::string first = line.needOneOf("a packet must begin with", {"ipv4", "ipv6", "hex"});
  if (first == "hex") return readHex(line);
  return readBuilt(line, first == "ipv4" ? IpFamily::v4 : IpFamily::v6);
}

std::vector<std::uint8_t> buildPacket(const PacketFields& fields) {
  Bytes packet = fields.source.family == Ip::Family::v4 ? ipv4Header(fields) : ipv6Header(fields);
  packet.insert(packet.end(), fields.payload.begin(), fields.payload.end());
  return packet;
}

}  // namespace ZelAgent
