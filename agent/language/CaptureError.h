// Why: packets come from files and leave into files, and either may fail.
// Always: what() is a single printable line that names the file and says what would be right.
#pragma once

#include <stdexcept>

namespace ZelAgent {

class CaptureError final : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

}  // namespace ZelAgent
