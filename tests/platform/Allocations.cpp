#include "tests/platform/Allocations.h"

#include <atomic>
#include <cstdlib>
#include <new>

namespace {

std::atomic<std::size_t> allocated{0};
std::atomic<std::size_t> freed{0};

void* take(std::size_t size) {
  void* block = std::malloc(size == 0 ? 1 : size);
  if (block == nullptr) throw std::bad_alloc();
  ++allocated;
  return block;
}

void giveBack(void* block) noexcept {
  if (block == nullptr) return;
  ++freed;
  std::free(block);
}

}  // namespace

void* operator new(std::size_t size) {
  return take(size);
}
void* operator new[](std::size_t size) {
  return take(size);
}
void operator delete(void* block) noexcept {
  giveBack(block);
}
void operator delete[](void* block) noexcept {
  giveBack(block);
}
void operator delete(void* block, std::size_t /*size*/) noexcept {
  giveBack(block);
}
void operator delete[](void* block, std::size_t /*size*/) noexcept {
  giveBack(block);
}

namespace PlatformTests {

std::size_t allocations() noexcept {
  return allocated;
}

std::size_t liveAllocations() noexcept {
  return allocated - freed;
}

}  // namespace PlatformTests
