#include "tests/agent/memory/FailingAllocation.h"

#include <cerrno>
#include <cstdlib>

// What the C library calls its own.
extern "C" {
void* __libc_malloc(std::size_t size) noexcept;
void* __libc_calloc(std::size_t count, std::size_t size) noexcept;
void* __libc_realloc(void* block, std::size_t size) noexcept;
void* __libc_memalign(std::size_t alignment, std::size_t size) noexcept;
}

namespace {

bool mayFail = false;
bool hasFailed = false;
std::size_t passing = 0;

bool isToFail() noexcept {
  if (!mayFail || hasFailed || passing-- != 0) return false;
  hasFailed = true;
  errno = ENOMEM;
  return true;
}

}  // namespace

extern "C" {

[[gnu::visibility("default")]] void* malloc(std::size_t size) noexcept {
  return isToFail() ? nullptr : __libc_malloc(size);
}
[[gnu::visibility("default")]] void* calloc(std::size_t count, std::size_t size) noexcept {
  return isToFail() ? nullptr : __libc_calloc(count, size);
}
[[gnu::visibility("default")]] void* realloc(void* block, std::size_t size) noexcept {
  return isToFail() ? nullptr : __libc_realloc(block, size);
}
[[gnu::visibility("default")]] void* aligned_alloc(std::size_t alignment,
                                                   std::size_t size) noexcept {
  return isToFail() ? nullptr : __libc_memalign(alignment, size);
}
}

namespace ZelAgent {

void allocationFailsAfter(std::size_t allocations) noexcept {
  passing = allocations;
  hasFailed = false;
  mayFail = true;
}

bool allocationsSucceed() noexcept {
  mayFail = false;
  return hasFailed;
}

}  // namespace ZelAgent
