#include "Quarry/Slab.h"

#include <algorithm>
#include <new>
#include <utility>

namespace Quarry {
namespace {

#if defined(__SANITIZE_ADDRESS__)
constexpr bool blocksAreSeparate = true;
#elif defined(__has_feature)
constexpr bool blocksAreSeparate = __has_feature(address_sanitizer);
#else
constexpr bool blocksAreSeparate = false;
#endif

constexpr std::size_t blocksPerPage = 64;

std::size_t alignedSize(std::size_t size) noexcept {
  constexpr std::size_t alignment = alignof(std::max_align_t);
  return (size + alignment - 1) / alignment * alignment;
}

// Constructed while the platform is loaded, so that they outlive the statics of its users.
std::vector<std::weak_ptr<Slab>> usedSlabs;
std::vector<std::shared_ptr<Slab>> slabsWithObjectsLeft;

std::shared_ptr<Slab> usedSlab(std::string_view typeName) noexcept {
  for (const std::weak_ptr<Slab>& used : usedSlabs) {
    std::shared_ptr<Slab> slab = used.lock();
    if (slab && slab->typeName() == typeName) return slab;
  }
  return nullptr;
}

}  // namespace

Slab::Slab(std::string_view typeName, std::size_t blockSize)
    : typeName_(typeName), blockSize_(alignedSize(blockSize)) {}

Slab::~Slab() = default;

void* Slab::allocate(std::size_t size) {
  void* block = nullptr;
  if (blocksAreSeparate || size > blockSize_) {
    block = ::operator new(size);
  } else {
    if (free_ == nullptr) addPage();
    block = std::exchange(free_, free_->next);
  }
  ++live_;
  ++allocated_;
  return block;
}

void Slab::release(void* block, std::size_t size) noexcept {
  if (blocksAreSeparate || size > blockSize_) {
    ::operator delete(block);
  } else {
    free_ = new (block) FreeBlock{free_};
  }
  if (--live_ == 0 && pages_.size() > 1) keepOnePage();
}

void Slab::addPage() {
  pages_.push_back(std::make_unique_for_overwrite<std::byte[]>(blockSize_ * blocksPerPage));
  putOnFreeList(pages_.back());
}

void Slab::keepOnePage() noexcept {
  pages_.resize(1);
  free_ = nullptr;
  putOnFreeList(pages_.front());
}

void Slab::putOnFreeList(const Page& page) noexcept {
  for (std::size_t block = blocksPerPage; block-- != 0;) {
    free_ = new (page.get() + block * blockSize_) FreeBlock{free_};
  }
}

const Slab* Slab::find(std::string_view typeName) noexcept {
  return usedSlab(typeName).get();
}

std::vector<std::string> Slab::typeNames() {
  std::vector<std::string> names;
  for (const std::weak_ptr<Slab>& used : usedSlabs) {
    if (const std::shared_ptr<Slab> slab = used.lock()) names.push_back(slab->typeName());
  }
  return names;
}

SlabUse::SlabUse(std::string_view typeName, std::size_t blockSize) : slab_(usedSlab(typeName)) {
  if (slab_) return;
  slab_ = std::make_shared<Slab>(typeName, blockSize);
  usedSlabs.push_back(slab_);
}

SlabUse::~SlabUse() {
  const bool isLast = slab_.use_count() == 1;
  if (isLast && slab_->live() != 0) slabsWithObjectsLeft.push_back(slab_);
  slab_.reset();
  std::erase_if(usedSlabs, [](const std::weak_ptr<Slab>& used) { return used.expired(); });
}

}  // namespace Quarry
