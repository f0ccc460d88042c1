#include "Blinklog/RingFile.h"

#include <fcntl.h>
#include <sys/mman.h>

#include <atomic>
#include <cerrno>
#include <chrono>
#include <cstring>
#include <functional>
#include <memory>

#include "Blinklog/RingFileError.h"

namespace Blinklog {
namespace {

using RingFileFormat::Header;

Header headerOf(std::size_t slots, const ClockPair& start) {
  Header header;
  header.slots = static_cast<std::uint32_t>(slots);
  header.process = static_cast<std::uint32_t>(getpid());
  header.madeAt =
      static_cast<std::uint64_t>(std::chrono::duration_cast<std::chrono::seconds>(
                                     std::chrono::system_clock::now().time_since_epoch())
                                     .count());
  header.start = start;
  return header;
}

// Replaces a site that is too long for a row.
Site placeholderFor(const Site& site) {
  return {{}, site.line, {}, site.level, {"a message whose site is too long to be told here"}};
}

}  // namespace

RingFile::RingFile(const std::string& path, std::size_t slots, const ClockPair& start)
    : place_(path), bytes_(RingFileFormat::fileBytes(slots)) {
  allocate(slots, start);
  map();
  std::uninitialized_default_construct(this->slots().begin(), this->slots().end());
  siteNotifieeIs(*this);
}

RingFile::~RingFile() {
  siteNotifieeDel(*this);
  munmap(memory_, bytes_);
}

// Writes the header first, so that the file of a killed process is recognised.
void RingFile::allocate(std::size_t slots, const ClockPair& start) {
  if (slots > RingFileFormat::maxSlots) {
    throw RingFileError(place_.name(), "cannot hold a ring of " + std::to_string(slots) +
                                           " slots; at most " +
                                           std::to_string(RingFileFormat::maxSlots) + " are told");
  }
  const int file = place_.file().get();
  const Header header = headerOf(slots, start);
  errno = ENOSPC;  // for an incomplete write
  if (pwrite(file, &header, sizeof header, 0) != static_cast<ssize_t>(sizeof header)) {
    throw RingFileError(place_.name(), std::string("cannot be written: ") + std::strerror(errno) +
                                           "; give another file");
  }
  if (const int error = posix_fallocate(file, 0, static_cast<off_t>(bytes_)); error != 0) {
    throw RingFileError(place_.name(), "needs " + std::to_string(bytes_) +
                                           " bytes: " + std::strerror(error) +
                                           "; make room, or give another file");
  }
}

void RingFile::map() {
  void* const memory =
      mmap(nullptr, bytes_, PROT_READ | PROT_WRITE, MAP_SHARED, place_.file().get(), 0);
  if (memory == MAP_FAILED) {
    throw RingFileError(place_.name(), std::string("cannot be mapped: ") + std::strerror(errno) +
                                           "; give another file");
  }
  memory_ = static_cast<std::byte*>(memory);
}

std::span<Slot> RingFile::slots() const noexcept {
  return {reinterpret_cast<Slot*>(memory_ + RingFileFormat::slotsOffset),
          (bytes_ - RingFileFormat::slotsOffset) / Slot::bytes};
}

RingFileFormat::Header& RingFile::header() const noexcept {
  return *reinterpret_cast<Header*>(memory_);
}

void RingFile::onSite(const Site& site) {
  std::string row = RingFileFormat::toRow(site);
  if (row.size() > RingFileFormat::maxSiteBytes) row = RingFileFormat::toRow(placeholderFor(site));
  // Rows are found by their number, so no row may follow a missing one.
  isTableFull_ = isTableFull_ || RingFileFormat::slotsOffset - rowsEnd_ < row.size();
  if (isTableFull_) {
    ++header().sitesLeftOut;
    return;
  }
  std::memcpy(memory_ + rowsEnd_, row.data(), row.size());
  rowsEnd_ += row.size();
  std::atomic_signal_fence(std::memory_order_seq_cst);
  ++header().sites;
}

bool RingFile::becomeMemory(const void* address) noexcept {
  const auto* const at = static_cast<const std::byte*>(address);
  if (std::less<>()(at, memory_) || !std::less<>()(at, memory_ + bytes_)) return false;
  void* const memory =
      mmap(memory_, bytes_, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS | MAP_FIXED, -1, 0);
  if (memory == MAP_FAILED) return false;
  for (Slot& slot : slots()) {
    slot.sequence = Slot::noMessage;
    slot.site = Slot::noSite;
  }
  return true;
}

}  // namespace Blinklog
