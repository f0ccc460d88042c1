#include "tests/memory/AllocatedMemory.h"

#if defined(__SANITIZE_ADDRESS__)
#define ZEL_ALLOCATES_BY_SANITIZER 1
#elif defined(__has_feature)
#define ZEL_ALLOCATES_BY_SANITIZER __has_feature(address_sanitizer)
#else
#define ZEL_ALLOCATES_BY_SANITIZER 0
#endif

bool memoryIsOfSanitizer() noexcept {
  return ZEL_ALLOCATES_BY_SANITIZER != 0;
}

#if ZEL_ALLOCATES_BY_SANITIZER
// Of <sanitizer/allocator_interface.h>, which not every compiler brings along.
extern "C" std::size_t __sanitizer_get_current_allocated_bytes();

std::size_t allocatedMemory() noexcept {
  return __sanitizer_get_current_allocated_bytes();
}
#else
#include <malloc.h>

std::size_t allocatedMemory() noexcept {
  const struct mallinfo2 now = mallinfo2();
  return now.uordblks + now.hblkhd;
}
#endif
