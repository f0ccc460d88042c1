#include "chips/packet/Decapsulation.h"

#include "chips/packet/EcnCombination.h"
#include "chips/packet/HeaderRewrite.h"

namespace Chips {
namespace {

Decapsulation faulty(DecapFault fault, HeaderFault innerFault = HeaderFault::none) {
  Decapsulation none;
  none.fault = fault;
  none.innerFault = innerFault;
  return none;
}

bool isTunnel(const PacketHeader& outer) noexcept {
  return outer.family == Ip::Family::v4 &&
         (outer.protocol == protocolIpv4 || outer.protocol == protocolIpv6);
}

Ip::Family familyInside(const PacketHeader& outer) noexcept {
  return outer.protocol == protocolIpv4 ? Ip::Family::v4 : Ip::Family::v6;
}

}  // namespace

Decapsulation decapsulate(std::span<const std::uint8_t> packet, const PacketHeader& outer) {
  if (!isTunnel(outer)) return faulty(DecapFault::notATunnel);
  if (outer.fragment.isFragment()) return faulty(DecapFault::fragmented);
  const auto payload = packet.first(outer.totalLength).subspan(outer.headerLength);
  const ParsedHeader inner = parse(payload);
  if (!inner.header) return faulty(DecapFault::innerMalformed, inner.fault);
  if (inner.header->family != familyInside(outer)) return faulty(DecapFault::innerMalformed);
  const auto ecn = ecnAfterDecap(inner.header->ecn, outer.ecn);
  if (!ecn) return faulty(DecapFault::congestion);

  Decapsulation result;
  result.arrived = *inner.header;
  result.header = result.arrived;
  result.header.ttl = outer.ttl;
  result.header.ecn = *ecn;
  const auto whole = payload.first(result.header.totalLength);
  result.packet.assign(whole.begin(), whole.end());
  ttlIs(result.packet, outer.ttl);
  ecnIs(result.packet, *ecn);
  return result;
}

}  // namespace Chips
