#pragma once

#include <cstdint>
#include <optional>
#include <vector>

#include "Ip/Prefix.h"
#include "PolicyMap/NumberRange.h"
#include "PolicyMap/TcpFlagsMatch.h"
#include "Velo/Export.h"

namespace PolicyMap {

/// The fields of a packet that a rule compares by values. An absent field and an empty list match
/// any value. A packet matches a list if it matches one of its members. Without a family every
/// packet matches.
///
/// Only TCP and UDP packets have ports, and only TCP packets have TCP flags. A fragment that is not
/// the first has neither, nor does a packet that ends before them. A packet without ports matches
/// no port, and a packet without flags matches no `TcpFlagsMatch`.
///
/// Precondition: without a family there is no other field, and prefixes are of the family.
struct ZEL_EXPORT HeaderMatch {
  std::optional<Ip::Family> family;
  std::optional<std::uint8_t> protocol;
  /// Bit n is set if DSCP n matches. With no bit set no packet matches.
  std::optional<std::uint64_t> dscps;
  std::optional<Ip::Prefix> source;
  std::optional<Ip::Prefix> destination;
  /// IPv4: the time to live.
  std::optional<std::uint8_t> hopLimit;
  /// The length of the packet with its IP header.
  std::optional<std::uint16_t> length;
  /// In units of eight bytes. The offset of a packet that is not a fragment is 0.
  std::vector<NumberRange> fragmentOffsets;
  std::vector<NumberRange> sourcePorts;
  std::vector<NumberRange> destinationPorts;
  std::vector<TcpFlagsMatch> tcpFlags;
  /// Whether only fragments match, the first one included.
  bool isFragment = false;

  /// Whether it compares fields that only the first fragment of a packet has.
  [[nodiscard]] bool comparesUpperLayer() const noexcept {
    return !sourcePorts.empty() || !destinationPorts.empty() || !tcpFlags.empty();
  }
  [[nodiscard]] unsigned hash(unsigned seed) const noexcept;
  bool operator==(const HeaderMatch&) const = default;
};

}  // namespace PolicyMap
