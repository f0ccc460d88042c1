#include "tests/platform/ByteComparisons.h"

#include <strings.h>
#include <cstring>

namespace {

std::size_t comparisons = 0;

int compared(const unsigned char* a, const unsigned char* b, std::size_t size) noexcept {
  ++comparisons;
  for (std::size_t at = 0; at < size; ++at) {
    if (a[at] != b[at]) return a[at] < b[at] ? -1 : 1;
  }
  return 0;
}

}  // namespace

extern "C" [[gnu::visibility("default")]] int memcmp(const void* a, const void* b,
                                                     std::size_t size) noexcept {
  return compared(static_cast<const unsigned char*>(a), static_cast<const unsigned char*>(b), size);
}

extern "C" [[gnu::visibility("default")]] int bcmp(const void* a, const void* b,
                                                   std::size_t size) noexcept {
  return compared(static_cast<const unsigned char*>(a), static_cast<const unsigned char*>(b), size);
}

namespace PlatformTests {

std::size_t byteComparisons() noexcept {
  return comparisons;
}

}  // namespace PlatformTests
