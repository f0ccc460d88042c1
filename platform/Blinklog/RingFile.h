#pragma once

#include <cstddef>
#include <span>
#include <string>

#include "Blinklog/RingFileFormat.h"
#include "Blinklog/RingFilePlace.h"
#include "Blinklog/Site.h"
#include "Blinklog/Slot.h"

namespace Blinklog {

/// The slots of a ring in a file that is mapped into memory, with everything needed to read them
/// when this process is gone, however it ended: what is stored in a shared mapping is the file's.
///
/// Invariant: every registered site is in the table of the file, or counted as left out, before a
/// message of it can be written. All blocks of the file are allocated, so that no store fails for
/// want of room.
class RingFile final : public SiteNotifiee {
 public:
  /// Makes FILE.new, complete and with `slots` empty slots. Throws a RingFileError.
  RingFile(const std::string& path, std::size_t slots);
  /// The file stays.
  ~RingFile() override;

  [[nodiscard]] std::span<Slot> slots() const noexcept;
  /// Gives it its name; what had it before is kept as FILE.previous. Throws a RingFileError.
  void take() { place_.take(); }

  void onSite(const Site& site) override;

 private:
  void allocate(std::size_t slots);
  void map();
  [[nodiscard]] RingFileFormat::Header& header() const noexcept;

  RingFilePlace place_;
  std::size_t bytes_;
  std::byte* memory_ = nullptr;
  std::size_t rowsEnd_ = RingFileFormat::headerBytes;
};

}  // namespace Blinklog
