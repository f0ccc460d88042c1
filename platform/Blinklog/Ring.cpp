#include "Blinklog/Ring.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <cstring>
#include <deque>

namespace Blinklog {
namespace {

constexpr std::size_t processSlots = 4096;
constexpr std::uint64_t noMessage = ~std::uint64_t{0};

std::deque<Site>& sites() {
  static std::deque<Site> registered;
  return registered;
}

// How many bytes of a text are kept, and whether that is all of it.
struct TextHeader {
  std::uint16_t kept;
  std::uint16_t cut;
};

}  // namespace

struct Ring::Slot {
  std::uint64_t sequence = noMessage;
  SiteId site = 0;
  std::uint32_t size = 0;
  std::array<std::byte, slotBytes - 16> arguments;
};

namespace {

// Puts arguments into the bytes of a slot, as many as there is room for.
class Writer {
 public:
  explicit Writer(std::span<std::byte> room) noexcept : room_(room) {}

  void put(const Argument& argument) noexcept {
    if (argument.kind != 's') {
      putBytes(&argument.number, sizeof argument.number);
      return;
    }
    if (left() < sizeof(TextHeader)) return;
    const std::size_t kept = std::min(argument.text.size(), left() - sizeof(TextHeader));
    const TextHeader header{static_cast<std::uint16_t>(kept), kept != argument.text.size()};
    putBytes(&header, sizeof header);
    putBytes(argument.text.data(), kept);
  }

  [[nodiscard]] std::size_t used() const noexcept { return used_; }

 private:
  [[nodiscard]] std::size_t left() const noexcept { return room_.size() - used_; }
  void putBytes(const void* bytes, std::size_t size) noexcept {
    if (size == 0 || left() < size) return;
    std::memcpy(room_.data() + used_, bytes, size);
    used_ += size;
  }

  std::span<std::byte> room_;
  std::size_t used_ = 0;
};

// Takes arguments out again and appends them to a text.
class Reader {
 public:
  explicit Reader(std::span<const std::byte> bytes) noexcept : bytes_(bytes) {}

  void appendTo(std::string& text, char kind) {
    const bool isWhole = kind == 's' ? appendText(text) : appendNumber(text, kind);
    if (!isWhole) text += cutMark;
  }

 private:
  static constexpr std::string_view cutMark = "...";

  // These say whether all of the argument is there.
  bool appendText(std::string& text) {
    TextHeader header{};
    if (!take(&header, sizeof header) || header.kept > bytes_.size()) return false;
    text.append(reinterpret_cast<const char*>(bytes_.data()), header.kept);
    bytes_ = bytes_.subspan(header.kept);
    return header.cut == 0;
  }
  bool appendNumber(std::string& text, char kind) {
    std::uint32_t number = 0;
    if (!take(&number, sizeof number)) return false;
    text += kind == 'b' ? (number != 0 ? "true" : "false") : std::to_string(number);
    return true;
  }
  bool take(void* to, std::size_t size) noexcept {
    if (bytes_.size() < size) return false;
    std::memcpy(to, bytes_.data(), size);
    bytes_ = bytes_.subspan(size);
    return true;
  }

  std::span<const std::byte> bytes_;
};

std::string textOf(const Site& site, std::span<const std::byte> arguments) {
  Reader reader(arguments);
  std::string text;
  for (const std::string& fragment : site.fragments) {
    if (fragment.size() == 2 && fragment[0] == '%') {
      reader.appendTo(text, fragment[1]);
    } else {
      text += fragment;
    }
  }
  return text;
}

}  // namespace

SiteId siteIs(const Site& site) {
  const auto found = std::find(sites().begin(), sites().end(), site);
  const auto id = static_cast<SiteId>(found - sites().begin());
  if (found == sites().end()) sites().push_back(site);
  return id;
}

Ring::Ring(std::size_t slots) : slots_(slots), ring_(std::make_unique<Slot[]>(slots)) {}

Ring::~Ring() = default;

void Ring::write(SiteId site, std::span<const Argument> arguments) noexcept {
  Slot& slot = ring_[written_ % slots_];
  slot.sequence = noMessage;
  std::atomic_signal_fence(std::memory_order_seq_cst);
  Writer writer(slot.arguments);
  for (const Argument& argument : arguments)
    writer.put(argument);
  slot.site = site;
  slot.size = static_cast<std::uint32_t>(writer.used());
  std::atomic_signal_fence(std::memory_order_seq_cst);
  slot.sequence = written_++;
}

std::vector<Record> Ring::dump() const {
  std::vector<Record> records;
  const std::uint64_t oldest = written_ < slots_ ? 0 : written_ - slots_;
  for (std::uint64_t sequence = oldest; sequence < written_; ++sequence) {
    const Slot& slot = ring_[sequence % slots_];
    if (slot.sequence != sequence) continue;
    const Site& site = sites()[slot.site];
    records.push_back({sequence, &site, textOf(site, std::span(slot.arguments).first(slot.size))});
  }
  return records;
}

void Ring::clear() noexcept {
  for (std::size_t slot = 0; slot < slots_; ++slot)
    ring_[slot].sequence = noMessage;
}

namespace {

// Made while the platform is loaded, so that messages can be sent until the process ends.
Ring ringOfProcess(processSlots);

}  // namespace

Ring& ring() {
  return ringOfProcess;
}

}  // namespace Blinklog
