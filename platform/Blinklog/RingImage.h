#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "Blinklog/Record.h"
#include "Blinklog/RingFileError.h"
#include "Blinklog/Site.h"
#include "Velo/Export.h"

namespace Blinklog {

/// The messages of a file that holds a ring. The process that wrote it may live or not.
///
///     const Blinklog::RingImage image("/var/lib/agent/trace.ring");
///     for (const Blinklog::Record& record : image.records())
///       std::cout << record.text << '\n';
///
/// The file may hold any bytes: it is either read or refused. The memory used is at most ten times
/// the size of the file. An incomplete message is left out, and so is a message that a living
/// process writes during the reading.
class ZEL_EXPORT RingImage {
 public:
  /// Reads the file. Throws `RingFileError`.
  explicit RingImage(const std::string& path);
  RingImage(const RingImage&) = delete;
  RingImage& operator=(const RingImage&) = delete;
  ~RingImage();

  /// The id of the process that wrote the file, and the time of creation in seconds since 1970.
  [[nodiscard]] std::uint32_t process() const noexcept { return process_; }
  [[nodiscard]] std::uint64_t madeAt() const noexcept { return madeAt_; }
  /// The messages, oldest first.
  [[nodiscard]] const std::vector<Record>& records() const noexcept { return records_; }

 private:
  std::uint32_t process_ = 0;
  std::uint64_t madeAt_ = 0;
  std::vector<Site> sites_;
  std::vector<Record> records_;
};

}  // namespace Blinklog
