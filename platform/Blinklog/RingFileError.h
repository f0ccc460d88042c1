#pragma once

#include <stdexcept>
#include <string>

#include "Velo/Export.h"

namespace Blinklog {

/// What is wrong with a file that holds a ring or shall hold one.
class ZEL_EXPORT RingFileError : public std::runtime_error {
 public:
  RingFileError(std::string path, const std::string& problem)
      : std::runtime_error(path + ": " + problem), path_(std::move(path)), problem_(problem) {}

  /// The file, in its own bytes, which may be any.
  [[nodiscard]] const std::string& path() const noexcept { return path_; }
  /// One line: what is wrong with the file, and what would be right.
  [[nodiscard]] const std::string& problem() const noexcept { return problem_; }

 private:
  std::string path_;
  std::string problem_;
};

}  // namespace Blinklog
