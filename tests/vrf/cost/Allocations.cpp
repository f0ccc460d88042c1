#include "tests/vrf/cost/Allocations.h"

#include <sys/mman.h>
#include <unistd.h>

#include <cstdlib>
#include <new>

namespace {

constexpr std::size_t arenaBytes = std::size_t{64} << 30;  // of addresses, not of memory

std::size_t madeSoFar = 0;
bool onPages = false;
char* arena = nullptr;
std::size_t arenaUsed = 0;

bool isInArena(const void* memory) noexcept {
  return arena != nullptr && memory >= arena && memory < arena + arenaBytes;
}

std::size_t pageBytes() noexcept {
  static const auto bytes = static_cast<std::size_t>(sysconf(_SC_PAGESIZE));
  return bytes;
}

void* pagesFor(std::size_t size) noexcept {
  const std::size_t page = pageBytes();
  if (arena == nullptr) {
    void* mapped = mmap(nullptr, arenaBytes, PROT_READ | PROT_WRITE,
                        MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0);
    if (mapped == MAP_FAILED) return nullptr;
    arena = static_cast<char*>(mapped);
  }
  const std::size_t rounded = (size + page - 1) / page * page;
  if (rounded > arenaBytes - arenaUsed) return nullptr;
  void* pages = arena + arenaUsed;
  arenaUsed += rounded;
  return pages;
}

void* allocate(std::size_t size, std::size_t alignment = 0) noexcept {
  ++madeSoFar;
  if (size == 0) size = 1;
  if (onPages) return pagesFor(size);
  return alignment == 0
             ? std::malloc(size)
             : std::aligned_alloc(alignment, (size + alignment - 1) / alignment * alignment);
}

void* allocateOrThrow(std::size_t size, std::size_t alignment = 0) {
  if (void* memory = allocate(size, alignment)) return memory;
  throw std::bad_alloc();
}

void release(void* memory) noexcept {
  if (isInArena(memory)) {
    madvise(memory, pageBytes(), MADV_DONTNEED);  // most have no more than one
  } else {
    std::free(memory);
  }
}

}  // namespace

void* operator new(std::size_t size) {
  return allocateOrThrow(size);
}
void* operator new[](std::size_t size) {
  return allocateOrThrow(size);
}
void* operator new(std::size_t size, std::align_val_t alignment) {
  return allocateOrThrow(size, static_cast<std::size_t>(alignment));
}
void* operator new[](std::size_t size, std::align_val_t alignment) {
  return allocateOrThrow(size, static_cast<std::size_t>(alignment));
}
void* operator new(std::size_t size, const std::nothrow_t&) noexcept {
  return allocate(size);
}
void* operator new[](std::size_t size, const std::nothrow_t&) noexcept {
  return allocate(size);
}
void* operator new(std::size_t size, std::align_val_t alignment, const std::nothrow_t&) noexcept {
  return allocate(size, static_cast<std::size_t>(alignment));
}
void* operator new[](std::size_t size, std::align_val_t alignment, const std::nothrow_t&) noexcept {
  return allocate(size, static_cast<std::size_t>(alignment));
}
void operator delete(void* memory) noexcept {
  release(memory);
}
void operator delete[](void* memory) noexcept {
  release(memory);
}
void operator delete(void* memory, std::size_t) noexcept {
  release(memory);
}
void operator delete[](void* memory, std::size_t) noexcept {
  release(memory);
}
void operator delete(void* memory, std::align_val_t) noexcept {
  release(memory);
}
void operator delete[](void* memory, std::align_val_t) noexcept {
  release(memory);
}
void operator delete(void* memory, std::size_t, std::align_val_t) noexcept {
  release(memory);
}
void operator delete[](void* memory, std::size_t, std::align_val_t) noexcept {
  release(memory);
}
void operator delete(void* memory, const std::nothrow_t&) noexcept {
  release(memory);
}
void operator delete[](void* memory, const std::nothrow_t&) noexcept {
  release(memory);
}

namespace Allocations {

std::size_t made() noexcept {
  return madeSoFar;
}

std::size_t madeBy(const std::function<void()>& work) {
  const std::size_t before = madeSoFar;
  work();
  return madeSoFar - before;
}

OnPagesOfTheirOwn::OnPagesOfTheirOwn() noexcept {
  onPages = true;
}
OnPagesOfTheirOwn::~OnPagesOfTheirOwn() {
  onPages = false;
}

}  // namespace Allocations
