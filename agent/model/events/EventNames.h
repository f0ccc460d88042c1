#pragma once

#include <string>

#include "agent/model/events/Event.h"

namespace ZelAgent {

class ForwardingAgent;

/// The event, with "default" for each VRF name that the configuration in force gives to the default
/// instance.
///
/// Throws an `EventError` "FORM: WHAT must be ..., found 'NAME'; did you mean 'OTHER'?" if the
/// event names an interface or a VRF that is not known. Check an event that somebody has written
/// before it is played.
///
/// The configuration in force says which interfaces are known. A VRF is known if the configuration
/// names it or the hardware has a status of it. So `vrf NAME add` may have any name. Events that
/// remove something refuse other names when they are played.
[[nodiscard]] Event checkedEvent(ForwardingAgent& agent, Event event);

/// Throws an `EventError` unless the configuration in force has the interface. `what` names the
/// place of the name: "explain INTERFACE PACKET: INTERFACE".
void checkInterface(ForwardingAgent& agent, const std::string& interface, const std::string& what);

/// What is wrong with a name that no interface of the configuration in force has: "must be an
/// interface of the configuration, found 'NAME'". Empty for such an interface.
[[nodiscard]] std::string problemWithInterface(ForwardingAgent& agent,
                                               const std::string& interface);

}  // namespace ZelAgent
