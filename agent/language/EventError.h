// Why: an event that cannot be read or played ends the story, and its author needs to know which
// line is wrong and what would be right.
// Always: what() is a single printable line: FORM: WHAT, where FORM is how the event is written,
// and before that FILE:LINE: once the place is known. Nothing of the event was played.
#pragma once

#include <stdexcept>

namespace ZelAgent {

class EventError final : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

}  // namespace ZelAgent
