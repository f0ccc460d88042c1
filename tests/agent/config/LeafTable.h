// Every leaf of a configuration that is read, with the kind of its values. Rows of tests are made
// from this table, and the documentation is compared with it.
#pragma once

#include <cstdint>
#include <limits>
#include <ostream>
#include <string>

namespace ZelAgent {

enum class LeafKind : std::uint8_t {
  name,      // a text of 1 to 100 bytes
  text,      // any text
  identity,  // a text, perhaps with a module prefix
  prefix,    // a prefix of either family
  prefixV4,
  prefixV6,
  nextHop,  // an address or DROP
  number,
  protocol,  // a number or an identity
  numbers,   // an array
  flag,
  port,      // a number up to 65535, a range or ANY
  fragment,  // a number up to 8191, a range or ANY
};

// Whether the leaf is the key of its list entry, or the copy of the key.
enum class KeyRole : std::uint8_t { none, key, copy };

struct Leaf {
  const char* place;  // in the full document
  LeafKind kind;
  KeyRole role = KeyRole::none;
  std::uint64_t most = 0;  // of a number

  friend std::ostream& operator<<(std::ostream& stream, const Leaf& leaf) {
    return stream << leaf.place;
  }
};

inline constexpr std::uint64_t mostOf32Bits = std::numeric_limits<std::uint32_t>::max();

inline constexpr Leaf leafTable[] = {
    {"$RED/name", LeafKind::name, KeyRole::key},
    {"$RED/config/name", LeafKind::name, KeyRole::copy},
    {"$RED/config/type", LeafKind::identity},
    {"$RED/config/fallback-network-instance", LeafKind::name},
    {"$RED/config/enabled", LeafKind::flag},
    {"$INTERFACE/config/enabled", LeafKind::flag},
    {"$PROTOCOL/config/enabled", LeafKind::flag},
    {"$INTERFACE/id", LeafKind::name, KeyRole::key},
    {"$INTERFACE/config/id", LeafKind::name, KeyRole::copy},
    {"$INTERFACE/config/interface", LeafKind::name},
    {"$INTERFACE/config/subinterface", LeafKind::number, KeyRole::none, mostOf32Bits},
    {"$PROTOCOL/identifier", LeafKind::identity, KeyRole::key},
    {"$PROTOCOL/config/identifier", LeafKind::identity, KeyRole::copy},
    {"$PROTOCOL/name", LeafKind::text, KeyRole::key},
    {"$PROTOCOL/config/name", LeafKind::text, KeyRole::copy},
    {"$ROUTE/prefix", LeafKind::prefix, KeyRole::key},
    {"$ROUTE/config/prefix", LeafKind::prefix, KeyRole::copy},
    {"$HOP/index", LeafKind::text, KeyRole::key},
    {"$HOP/config/index", LeafKind::text, KeyRole::copy},
    {"$HOP/config/next-hop", LeafKind::nextHop},
    {"$HOP/interface-ref/config/interface", LeafKind::name},
    {"$HOP/interface-ref/config/subinterface", LeafKind::number, KeyRole::none, mostOf32Bits},
    {"$POLICY/policy-id", LeafKind::name, KeyRole::key},
    {"$POLICY/config/policy-id", LeafKind::name, KeyRole::copy},
    {"$POLICY/config/type", LeafKind::identity},
    {"$RULE10/sequence-id", LeafKind::number, KeyRole::key, mostOf32Bits},
    {"$RULE10/config/sequence-id", LeafKind::number, KeyRole::copy, mostOf32Bits},
    {"$RULE10/ipv4/config/protocol", LeafKind::protocol},
    {"$RULE10/ipv4/config/dscp", LeafKind::number, KeyRole::none, 63},
    {"$RULE10/ipv4/config/dscp-set", LeafKind::numbers},
    {"$RULE10/ipv4/config/dscp-set/0", LeafKind::number, KeyRole::none, 63},
    {"$RULE10/ipv4/config/source-address", LeafKind::prefixV4},
    {"$RULE10/ipv4/config/destination-address", LeafKind::prefixV4},
    {"$RULE20/ipv6/config/protocol", LeafKind::protocol},
    {"$RULE20/ipv6/config/dscp", LeafKind::number, KeyRole::none, 63},
    {"$RULE20/ipv6/config/dscp-set", LeafKind::numbers},
    {"$RULE20/ipv6/config/dscp-set/0", LeafKind::number, KeyRole::none, 63},
    {"$RULE20/ipv6/config/source-address", LeafKind::prefixV6},
    {"$RULE20/ipv6/config/destination-address", LeafKind::prefixV6},
    {"$RULE10/action/config/network-instance", LeafKind::name},
    {"$RULE20/action/config/decap-network-instance", LeafKind::name},
    {"$RULE20/action/config/decap-fallback-network-instance", LeafKind::name},
    {"$RULE20/action/config/post-decap-network-instance", LeafKind::name},
    {"$RULE30/action/config/discard", LeafKind::flag},
    {"$BINDING/interface-id", LeafKind::name, KeyRole::key},
    {"$BINDING/config/interface-id", LeafKind::name, KeyRole::copy},
    {"$RULE40/ipv4/config/hop-limit", LeafKind::number, KeyRole::none, 255},
    {"$RULE40/ipv4/config/length", LeafKind::number, KeyRole::none, 65535},
    {"$RULE40/ipv4/config/fragment-offsets", LeafKind::numbers},
    {"$RULE40/ipv4/config/fragment-offsets/0", LeafKind::fragment, KeyRole::none, 8191},
    {"$RULE40/ipv4/config/source-address-prefix-set", LeafKind::name},
    {"$RULE40/ipv4/config/destination-address-prefix-set", LeafKind::name},
    {"$RULE40/transport/config/source-port", LeafKind::port, KeyRole::none, 65535},
    {"$RULE40/transport/config/destination-port", LeafKind::port, KeyRole::none, 65535},
    {"$RULE40/transport/config/detail-mode", LeafKind::identity},
    {"$RULE40/transport/config/explicit-detail-match-mode", LeafKind::identity},
    {"$RULE40/transport/config/explicit-tcp-flags", LeafKind::numbers},
    {"$RULE40/transport/config/explicit-tcp-flags/0", LeafKind::identity},
    {"$RULE50/ipv6/config/hop-limit", LeafKind::number, KeyRole::none, 255},
    {"$RULE50/ipv6/config/length", LeafKind::number, KeyRole::none, 65535},
    {"$RULE50/ipv6/config/source-address-prefix-set", LeafKind::name},
    {"$RULE50/ipv6/config/destination-address-prefix-set", LeafKind::name},
    {"$RULE50/transport/config/source-port-set", LeafKind::name},
    {"$RULE50/transport/config/destination-port-set", LeafKind::name},
    {"$RULE50/transport/config/builtin-detail", LeafKind::identity},
    {"$V4SET/name", LeafKind::name, KeyRole::key},
    {"$V4SET/config/name", LeafKind::name, KeyRole::copy},
    {"$V4SET/config/prefix", LeafKind::numbers},
    {"$V4SET/config/prefix/0", LeafKind::prefixV4},
    {"$V4SET/config/exclude-prefix", LeafKind::numbers},
    {"$V4SET/config/exclude-prefix/0", LeafKind::prefixV4},
    {"$V6SET/name", LeafKind::name, KeyRole::key},
    {"$V6SET/config/name", LeafKind::name, KeyRole::copy},
    {"$V6SET/config/prefix", LeafKind::numbers},
    {"$V6SET/config/prefix/0", LeafKind::prefixV6},
    {"$V6SET/config/exclude-prefix", LeafKind::numbers},
    {"$V6SET/config/exclude-prefix/0", LeafKind::prefixV6},
    {"$PORTSET/name", LeafKind::name, KeyRole::key},
    {"$PORTSET/config/name", LeafKind::name, KeyRole::copy},
    {"$PORTSET/config/port", LeafKind::numbers},
    {"$PORTSET/config/port/0", LeafKind::port, KeyRole::none, 65535},
    {"$PORTSET/config/exclude-port", LeafKind::numbers},
    {"$PORTSET/config/exclude-port/0", LeafKind::port, KeyRole::none, 65535},
    {"$BINDING/config/apply-vrf-selection-policy", LeafKind::name},
    {"$BINDING/config/apply-forwarding-policy", LeafKind::name},
    {"$BINDING/config/enabled", LeafKind::flag},
    {"$BINDING/interface-ref/config/interface", LeafKind::name},
    {"$BINDING/interface-ref/config/subinterface", LeafKind::number, KeyRole::none, mostOf32Bits},
};

}  // namespace ZelAgent
