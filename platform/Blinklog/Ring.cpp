#include "Blinklog/Ring.h"

#include "Blinklog/RingFile.h"
#include "Blinklog/Site.h"

namespace Blinklog {
namespace {

constexpr std::size_t processSlots = 4096;

}  // namespace

Ring::Ring(std::size_t slots, ClockReader clock)
    : slots_(slots),
      ownMemory_(std::make_unique<Slot[]>(slots)),
      ring_(ownMemory_.get()),
      clock_(clock),
      start_(ClockPair::now(clock)) {
  static_cast<void>(siteCount());  // so that the sites outlive the ring of the process
}

Ring::~Ring() = default;

void Ring::write(SiteId site, std::span<const Argument> arguments) noexcept {
  Message message(*this, site);
  for (const Argument& argument : arguments)
    message.put(argument);
}

std::vector<Record> Ring::dump() const {
  std::vector<Record> records;
  const std::uint64_t oldest = written_ < slots_ ? 0 : written_ - slots_;
  for (std::uint64_t sequence = oldest; sequence < written_; ++sequence) {
    const Slot& slot = ring_[sequence % slots_];
    if (slot.sequence != sequence || slot.site == Slot::noSite) continue;
    const Site& site = siteOf(slot.site);
    records.push_back({sequence, start_.wallAt(slot.time), &site,
                       textOf(site, std::span(slot.arguments).first(slot.size))});
  }
  return records;
}

void Ring::fileIs(const std::string& path) {
  auto file = std::make_unique<RingFile>(path, slots_, start_);
  std::copy_n(ring_, slots_, file->slots().data());
  file->makeCurrent();
  ring_ = file->slots().data();
  file_ = std::move(file);
  ownMemory_.reset();
}

bool Ring::leaveFile(const void* address) noexcept {
  return file_ != nullptr && file_->becomeMemory(address);
}

void Ring::clear() noexcept {
  for (std::size_t slot = 0; slot < slots_; ++slot)
    ring_[slot].sequence = Slot::noMessage;
}

// Constructed first when the platform is loaded, and destroyed last, so that messages can be sent
// until the process ends.
[[gnu::init_priority(101)]] Ring ringOfProcess(processSlots);

}  // namespace Blinklog
