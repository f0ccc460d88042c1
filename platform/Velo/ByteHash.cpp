#include "Velo/ByteHash.h"

#include <cstdint>
#include <cstring>

namespace Velo {
namespace {

constexpr std::uint64_t multiplier = 0x9e3779b97f4a7c15ULL;

std::uint64_t scrambled(std::uint64_t state) noexcept {
  state ^= state >> 32;
  state *= 0xd6e8feb86659fd93ULL;
  state ^= state >> 32;
  return state;
}

std::uint64_t lastWord(const char* bytes, std::size_t size) noexcept {
  std::uint64_t word = 0;
  std::memcpy(&word, bytes, size);
  return word;
}

}  // namespace

unsigned byteHash(unsigned seed, std::string_view bytes) noexcept {
  std::uint64_t state = (seed + bytes.size() + 1) * multiplier;
  const char* next = bytes.data();
  std::size_t left = bytes.size();
  for (; left >= sizeof(std::uint64_t); left -= sizeof(std::uint64_t)) {
    state = scrambled(state ^ lastWord(next, sizeof(std::uint64_t))) * multiplier;
    next += sizeof(std::uint64_t);
  }
  if (left != 0) state = scrambled(state ^ lastWord(next, left)) * multiplier;
  return static_cast<unsigned>(scrambled(state));
}

}  // namespace Velo
