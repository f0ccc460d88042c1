// What a client must receive for a request.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

#include "agent/language/ExitStatus.h"
#include "agent/serve/protocol/Request.h"

namespace ZelAgent {

struct ExpectedAnswer {
  std::string request;
  Framing framing = Framing::text;
  bool asJson = false;
  ExitStatus status = ExitStatus::success;
  std::string event;     // the event that the answer must name; empty for none
  std::string part;      // of the output
  bool isEmpty = false;  // nothing else
};

// The size of the answer that the bytes begin with. None if it is not complete.
[[nodiscard]] std::optional<std::size_t> sizeOfAnswer(std::string_view bytes, Framing framing);

// How a whole answer differs from the expected one; empty if it does not.
[[nodiscard]] std::string differenceOf(const std::string& bytes, const ExpectedAnswer& expected);

}  // namespace ZelAgent
