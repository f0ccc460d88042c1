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
/// Choose it, through `SlabAllocated`, for entities that come and go often: taking and giving back
/// a block is a push or pop on a list. Blocks are counted, so that a test, a soak or an operator
/// can ask which type still has objects alive. When the last block is given back all pages but
/// one are released. Slabs belong to the event-loop thread.
///
/// Under the address sanitizer every block is an allocation of its own, so that misuse is caught.
class ZEL_EXPORT Slab {
 public:
  /// A slab for objects of type `typeName`, of `blockSize` bytes each.
  Slab(std::string_view typeName, std::size_t blockSize);
  Slab(const Slab&) = delete;
  Slab& operator=(const Slab&) = delete;
  ~Slab();

  /// A block for `size` bytes; a derived, larger object gets memory of its own.
  [[nodiscard]] void* allocate(std::size_t size);
  /// Takes back what `allocate(size)` gave.
  void release(void* block, std::size_t size) noexcept;

  [[nodiscard]] const std::string& typeName() const noexcept { return typeName_; }
  /// Objects alive now.
  [[nodiscard]] std::size_t live() const noexcept { return live_; }
  /// Objects allocated so far.
  [[nodiscard]] std::size_t allocated() const noexcept { return allocated_; }

  /// The slab of the type of that name, null when no loaded code uses one.
  [[nodiscard]] static const Slab* find(std::string_view typeName) noexcept;
  /// Names of the types that have a slab, in the order of their first use.
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

/// One loaded object file's use of the slab of a type. All uses of one type name share one slab,
/// which exists as long as there is any; so a block may be given back by another object file than
/// the one that took it. A slab that still has objects when its last use ends, as one static may
/// destroy another's, stays until the platform goes.
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
