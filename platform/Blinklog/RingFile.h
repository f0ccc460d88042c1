#pragma once

#include <cstddef>
#include <span>
#include <string>

#include "Blinklog/RingClock.h"
#include "Blinklog/RingFileFormat.h"
#include "Blinklog/RingFilePlace.h"
#include "Blinklog/Site.h"
#include "Blinklog/Slot.h"

namespace Blinklog {

/// The slots of a ring in a file that is mapped into memory, with everything that a reader of the
/// file needs. A shared mapping keeps what was stored, however the process ends.
///
/// Invariant: a registered site is in the table of the file, or counted as left out, before a
/// message of it can be written. All blocks of the file are allocated, so no store fails because
/// the disk is full. What the object decides never depends on the content of the file.
class RingFile final : public SiteNotifiee {
 public:
  /// Creates FILE.new with `slots` empty slots. `start` converts the times of their messages.
  /// Throws `RingFileError`.
  RingFile(const std::string& path, std::size_t slots, const ClockPair& start);
  /// Keeps the file.
  ~RingFile() override;

  [[nodiscard]] std::span<Slot> slots() const noexcept;
  /// Renames FILE.new to FILE. A previous FILE becomes FILE.previous. Throws `RingFileError`.
  void makeCurrent() { place_.makeCurrent(); }

  void onSite(const Site& site) override;

  /// Replaces the mapping by memory with empty slots if `address` is in it. Returns whether it has
  /// done so. May be called by a signal handler.
  [[nodiscard]] bool becomeMemory(const void* address) noexcept;

 private:
  void allocate(std::size_t slots, const ClockPair& start);
  void map();
  [[nodiscard]] RingFileFormat::Header& header() const noexcept;

  RingFilePlace place_;
  std::size_t bytes_;
  std::byte* memory_ = nullptr;
  std::size_t rowsEnd_ = RingFileFormat::headerBytes;
  bool isTableFull_ = false;
};

}  // namespace Blinklog
