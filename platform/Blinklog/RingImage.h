#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "Blinklog/Record.h"
#include "Blinklog/RingFileError.h"
#include "Blinklog/Site.h"
#include "Velo/Export.h"

namespace Blinklog {

/// What a file that holds a ring tells, whether the process that wrote it lives or not.
///
///     const Blinklog::RingImage image("/var/lib/agent/trace.ring");
///     for (const Blinklog::Record& record : image.records())
///       std::cout << record.text << '\n';
///
/// The file may hold any bytes: it is either told or refused, in memory bounded by its size. A
/// message that was not written to its end is left out; of a living process so is what it writes
/// meanwhile.
class ZEL_EXPORT RingImage {
 public:
  /// Reads the file. Throws a RingFileError.
  explicit RingImage(const std::string& path);
  RingImage(const RingImage&) = delete;
  RingImage& operator=(const RingImage&) = delete;
  ~RingImage();

  /// The process that wrote it, and when it began to, in seconds since 1970.
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
