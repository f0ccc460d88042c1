#pragma once

#include <string>

#include "Blinklog/FileHandle.h"

namespace Blinklog {

/// The names by which a file that holds a ring is known while it comes and goes: it is made as
/// FILE.new, becomes FILE when it is complete, and FILE.previous when the next one is.
///
/// Invariant: none of the three is ever replaced unless it begins as such a file does, and FILE is
/// not as long as a process lives that made it, which is told by a lock that ends with its
/// descriptor. So of several that want FILE at once, at most one gets it.
class RingFilePlace final {
 public:
  /// Makes FILE.new, empty and for its owner only. Throws a RingFileError.
  explicit RingFilePlace(const std::string& path);
  RingFilePlace(const RingFilePlace&) = delete;
  RingFilePlace& operator=(const RingFilePlace&) = delete;
  /// Takes FILE.new away unless it became FILE.
  ~RingFilePlace();

  /// The open file, which is locked until this goes.
  [[nodiscard]] const FileHandle& file() const noexcept { return file_; }
  /// What the file is called at the moment.
  [[nodiscard]] const std::string& name() const noexcept { return isTaken_ ? path_ : newPath_; }
  /// Makes FILE of FILE.new, and FILE.previous of what was FILE. Throws a RingFileError.
  void take();

 private:
  std::string path_;
  std::string newPath_;
  std::string previousPath_;
  FileHandle file_;
  bool isTaken_ = false;
};

}  // namespace Blinklog
