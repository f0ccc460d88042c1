#pragma once

#include <cstdint>
#include <string>

#include "Blinklog/Site.h"

namespace Blinklog {

/// One message as it is dumped.
struct Record {
  std::uint64_t sequence;
  const Site* site;
  /// The fragments with the arguments in their places.
  std::string text;
};

}  // namespace Blinklog
