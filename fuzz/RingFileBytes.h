// A file that holds a ring, made from an input as docs/trace-ring.md describes such files, without
// the code that writes and reads them.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "fuzz/FuzzedBytes.h"

namespace Fuzz {

// What the messages of one place in the source have in common.
struct RingSite {
  std::string path;
  std::uint32_t line = 0;
  std::string function;
  std::uint32_t level = 0;
  std::vector<std::string> fragments;
};

struct RingMessage {
  std::uint64_t sequence = 0;
  std::uint64_t time = 0;  // in nanoseconds since 1970
  RingSite site;
  std::string text;
};

struct RingFileBytes {
  std::string bytes;
  std::uint32_t process = 0;
  std::uint64_t madeAt = 0;  // in seconds since 1970
  // The clocks when the ring was made, in nanoseconds.
  std::uint64_t monotonicStart = 0;
  std::uint64_t wallStart = 0;
  // The complete messages, oldest first.
  std::vector<RingMessage> messages;
};

// An undamaged file. The ring may be empty, partly filled or wrapped. Some slots may be incomplete,
// and the table of sites may have had no space for some sites.
[[nodiscard]] RingFileBytes ringFileOf(FuzzedBytes& input);

// Changes the header, the table, the slots or the size of the file.
void damage(std::string& bytes, FuzzedBytes& input);

}  // namespace Fuzz
