// Ways in which a configuration can be wrong, each as one change to a right one, with the place of
// the mistake and what must be said about it. Written from the model.
#pragma once

#include <nlohmann/json.hpp>
#include <ostream>
#include <string>
#include <vector>

namespace ZelAgent {

// A right configuration. Interface e1 has a policy of five rules, and e2 is in the VRF red.
[[nodiscard]] nlohmann::json rightConfiguration();

struct WrongInput {
  const char* at;     // a JSON pointer that begins with one of the words below
  const char* value;  // what is put there, as JSON. Null removes what is there.
  const char* says;   // part of the message
  // The path that the message names, where it is not that of `at`. A removed member is named by the
  // path of what lacks it.
  const char* path = nullptr;

  friend std::ostream& operator<<(std::ostream& stream, const WrongInput& input) {
    return stream << input.at << (input.value == nullptr ? " is absent" : " is ")
                  << (input.value == nullptr ? "" : input.value);
  }
};

// $NI, $DEFAULT, $RED, $IF, $PROTOCOL, $ROUTE, $HOP, $PF, $POLICY, $TCP, $DECAP, $V6, $ANY, $DROP,
// $BIND, $SETS, $SET4, $SET6 and $PORTS.
[[nodiscard]] const std::vector<WrongInput>& wrongInputs();

[[nodiscard]] nlohmann::json changed(const WrongInput& input);
// The path that the message of the input must name.
[[nodiscard]] std::string expectedPath(const WrongInput& input);

}  // namespace ZelAgent
