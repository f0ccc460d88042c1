#pragma once

#include "agent/model/routes/RouteWalk.h"
#include "agent/reports/ReportPages.h"

namespace ZelAgent {

/// The routes of routing tables: next hops, the route for the chip, and the result.
///
/// A next hop is an interface, a gateway, or drop. The route of an event is shown as its next hop.
/// As JSON it is an array of:
///
///   vrfName, prefix   strings
///   origin            "configured" or "event"
///   nextHops          array of {index, address, interface, drop} of a configured route; address is
///                     null for none
///   resolved          null, or {kind, interface}; kind is "egress", "drop" or "decap"
///   state             "programmed", "hidden", "not resolved" or "not programmed"
///   reason            a string, empty if it is programmed
[[nodiscard]] ReportPagesPtr routePages(ReadRows<RouteState> read, bool asJson);

}  // namespace ZelAgent
