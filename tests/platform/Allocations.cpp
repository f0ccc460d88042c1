#include "tests/platform/Allocations.h"

#include <atomic>
#include <cstdlib>
#include <limits>
#include <new>

namespace {

constexpr std::size_t unlimited = std::numeric_limits<std::size_t>::max();

std::atomic<std::size_t> allocated{0};
std::atomic<std::size_t> freed{0};
thread_local std::size_t passing = unlimited;

void* take(std::size_t size) {
  if (passing == 0) throw std::bad_alloc();
  if (passing != unlimited) --passing;
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

FailingAllocations::FailingAllocations(std::size_t allocationsThatPass) noexcept {
  passing = allocationsThatPass;
}

FailingAllocations::~FailingAllocations() {
  passing = unlimited;
}

}  // namespace PlatformTests
