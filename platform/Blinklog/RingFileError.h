#pragma once

#include <stdexcept>
#include <string>

#include "Velo/Export.h"

namespace Blinklog {

/// The error that a file cannot be used to hold or read a ring.
class ZEL_EXPORT RingFileError : public std::runtime_error {
 public:
  RingFileError(std::string path, const std::string& problem)
      : std::runtime_error(path + ": " + problem), path_(std::move(path)), problem_(problem) {}

  /// The path of the file, which may hold any bytes.
  [[nodiscard]] const std::string& path() const noexcept { return path_; }
  /// One line that says what is wrong with the file and what is expected.
  [[nodiscard]] const std::string& problem() const noexcept { return problem_; }

 private:
  std::string path_;
  std::string problem_;
};

}  // namespace Blinklog
