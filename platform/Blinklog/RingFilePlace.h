#pragma once

#include <string>

#include "Blinklog/FileHandle.h"

namespace Blinklog {

/// The names that a file with a ring has in turn. It is created as FILE.new, renamed to FILE when
/// it is complete, and renamed to FILE.previous when the next file is complete.
///
/// Invariant: a file is replaced only if it begins as a file with a ring does. FILE is not replaced
/// while the process that created it lives: it holds a lock on the file, which ends with the
/// descriptor. So of several processes that use the same FILE, at most one succeeds.
class RingFilePlace final {
 public:
  /// Creates an empty FILE.new that only its owner may read and write. Throws `RingFileError`.
  explicit RingFilePlace(const std::string& path);
  RingFilePlace(const RingFilePlace&) = delete;
  RingFilePlace& operator=(const RingFilePlace&) = delete;
  /// Removes FILE.new unless it was renamed.
  ~RingFilePlace();

  /// The open file. It is locked during the lifetime of this object.
  [[nodiscard]] const FileHandle& file() const noexcept { return file_; }
  /// The present name of the file.
  [[nodiscard]] const std::string& name() const noexcept { return isCurrent_ ? path_ : newPath_; }
  /// Renames FILE to FILE.previous, and FILE.new to FILE. Throws `RingFileError`.
  void makeCurrent();

 private:
  std::string path_;
  std::string newPath_;
  std::string previousPath_;
  FileHandle file_;
  bool isCurrent_ = false;
};

}  // namespace Blinklog
