#pragma once

#include <sys/mman.h>

#include <cerrno>
#include <cstddef>
#include <span>
#include <system_error>
#include <utility>

namespace KernelChip {

/// The values of an array map of the kernel as memory of this process. Its stores are what packets
/// read.
template <class Value>
class MappedArray final {
 public:
  static_assert(sizeof(Value) % 8 == 0, "the kernel rounds values up to eight bytes");

  /// `size` is the number of the map's entries. Throws `std::system_error`.
  MappedArray(int map, std::size_t size) : size_(size) {
    void* const memory =
        mmap(nullptr, size * sizeof(Value), PROT_READ | PROT_WRITE, MAP_SHARED, map, 0);
    if (memory == MAP_FAILED)
      throw std::system_error(errno, std::generic_category(), "cannot map an array of the kernel");
    values_ = static_cast<Value*>(memory);
  }
  MappedArray(const MappedArray&) = delete;
  MappedArray& operator=(const MappedArray&) = delete;
  ~MappedArray() { munmap(values_, size_ * sizeof(Value)); }

  [[nodiscard]] std::span<Value> values() const noexcept { return {values_, size_}; }
  [[nodiscard]] Value& operator[](std::size_t at) const noexcept { return values_[at]; }

 private:
  Value* values_;
  std::size_t size_;
};

}  // namespace KernelChip
