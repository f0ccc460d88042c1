#pragma once

#include <cstddef>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "Velo/Export.h"

namespace Quarry {

/// Memory for the objects of one type, in blocks of equal size.
///
/// Use it, through `SlabAllocated`, for entities that are created and destroyed often: allocating
/// or freeing a block is one list operation. Blocks are counted, so that tests and operators can
/// read how many objects of a type are alive. When the last block is freed, all pages but one are
/// released. Use slabs on the event-loop thread only.
///
/// Under the address sanitizer every block is a separate allocation, so that wrong use is detected.
class ZEL_EXPORT Slab {
 public:
  /// A slab for objects of type `typeName`, of `blockSize` bytes each.
  Slab(std::string_view typeName, std::size_t blockSize);
  Slab(const Slab&) = delete;
  Slab& operator=(const Slab&) = delete;
  ~Slab();

  /// A block for `size` bytes. A larger object, of a derived type, is allocated separately.
  [[nodiscard]] void* allocate(std::size_t size);
  /// Frees a block that `allocate(size)` returned.
  void release(void* block, std::size_t size) noexcept;

  [[nodiscard]] const std::string& typeName() const noexcept { return typeName_; }
  /// Number of objects alive.
  [[nodiscard]] std::size_t live() const noexcept { return live_; }
  /// Number of objects allocated so far.
  [[nodiscard]] std::size_t allocated() const noexcept { return allocated_; }

  /// The slab of the type of that name; null if no loaded code uses one.
  [[nodiscard]] static const Slab* find(std::string_view typeName) noexcept;
  /// The names of the types that have a slab, in the order of their first use.
  [[nodiscard]] static std::vector<std::string> typeNames();

 private:
  struct FreeBlock {
    FreeBlock* next;
  };
  using Page = std::unique_ptr<std::byte[]>;

  ZEL_HIDDEN void addPage();
  ZEL_HIDDEN void putOnFreeList(const Page& page) noexcept;
  ZEL_HIDDEN void keepOnePage() noexcept;

  std::string typeName_;
  std::size_t blockSize_;
  std::vector<Page> pages_;
  FreeBlock* free_ = nullptr;
  std::size_t live_ = 0;
  std::size_t allocated_ = 0;
};

/// The use of a type's slab by one loaded library or program. All uses of one type name share one
/// slab, which exists while there is any use. So a block may be freed by another library than the
/// one that allocated it. A slab that has objects when its last use ends stays until the platform
/// is unloaded.
class ZEL_EXPORT SlabUse {
 public:
  SlabUse(std::string_view typeName, std::size_t blockSize);
  SlabUse(const SlabUse&) = delete;
  SlabUse& operator=(const SlabUse&) = delete;
  ~SlabUse();

  [[nodiscard]] Slab& slab() const noexcept { return *slab_; }

 private:
  std::shared_ptr<Slab> slab_;
};

/// Allocates objects of `T` from the slab of their type. `T::typeName` names it.
template <class T>
class SlabAllocated {
 public:
  static void* operator new(std::size_t size) { return slab().allocate(size); }
  static void operator delete(void* block, std::size_t size) noexcept {
    slab().release(block, size);
  }

 private:
  static Slab& slab() {
    static const SlabUse use(T::typeName, sizeof(T));
    static Slab& ofType = use.slab();
    return ofType;
  }
};

}  // namespace Quarry
