// Why: each event that was played is shown, in the words of event files.
// Always: reading the text gives an equal event.
#pragma once

#include <string>

#include "agent/model/events/Event.h"

namespace ZelAgent {

[[nodiscard]] std::string toText(const Event& event);

// The VRF as event files and configurations name it: DEFAULT for the default one.
[[nodiscard]] std::string toVrfWord(const std::string& vrf);

// The word for the next operations of any VRF; a VRF of this name is quoted.
inline constexpr const char* anyVrfWord = "any";

}  // namespace ZelAgent
