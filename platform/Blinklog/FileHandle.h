#pragma once

#include <unistd.h>

#include <utility>

namespace Blinklog {

/// Owns the descriptor of an open file and closes it. A negative descriptor means no file.
class FileHandle final {
 public:
  explicit FileHandle(int descriptor) noexcept : descriptor_(descriptor) {}
  FileHandle(FileHandle&& other) noexcept : descriptor_(std::exchange(other.descriptor_, -1)) {}
  FileHandle& operator=(FileHandle&& other) noexcept {
    std::swap(descriptor_, other.descriptor_);
    return *this;
  }
  ~FileHandle() {
    if (descriptor_ >= 0) close(descriptor_);
  }

  [[nodiscard]] bool isOpen() const noexcept { return descriptor_ >= 0; }
  [[nodiscard]] int get() const noexcept { return descriptor_; }
  /// Gives the descriptor away: it is no longer closed here.
  [[nodiscard]] int release() noexcept { return std::exchange(descriptor_, -1); }

 private:
  int descriptor_;
};

}  // namespace Blinklog
