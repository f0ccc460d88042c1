#include "fuzz/RingFileBytes.h"

#include <algorithm>
#include <array>
#include <cstring>

namespace Fuzz {
namespace {

constexpr std::size_t headerBytes = 4096;
constexpr std::size_t tableBytes = 258048;
constexpr std::size_t slotsOffset = headerBytes + tableBytes;
constexpr std::size_t slotBytes = 256;
constexpr std::size_t argumentBytes = 232;
constexpr std::size_t longestRow = 4096;
constexpr std::uint64_t emptySlot = ~std::uint64_t{0};
constexpr std::uint64_t endOfYear9999 = 253402300799;

constexpr unsigned mostSites = 6;
constexpr unsigned mostFragments = 6;
constexpr unsigned mostSlots = 8;
constexpr unsigned manySlots = 480;

template <class Number>
void append(std::string& bytes, Number number) {
  bytes.append(reinterpret_cast<const char*>(&number), sizeof number);
}

std::uint32_t numberOf(FuzzedBytes& input) {
  constexpr std::array<std::uint32_t, 6> edges{0, 1, 9, 0x7fffffff, 0x80000000, 0xffffffff};
  const unsigned which = input.below(2 * edges.size());
  return which < edges.size() ? edges[which] : input.below(0x10000);
}

// A text of at most `most` bytes: from the input, or one byte repeated.
std::string textOf(FuzzedBytes& input, std::size_t most) {
  const bool isLong = input.below(4) == 0;
  const auto limit = static_cast<unsigned>(isLong ? most : std::min<std::size_t>(most, 16));
  const std::size_t size = input.below(limit + 1);
  if (isLong) return std::string(size, static_cast<char>(input.byte()));
  std::string text;
  while (text.size() < size)
    text += static_cast<char>(input.byte());
  return text;
}

std::string fragmentOf(FuzzedBytes& input, std::size_t most) {
  switch (input.below(5)) {
    case 0:
      return "%s";
    case 1:
      return "%u";
    case 2:
      return "%b";
    case 3:
      return {'%', static_cast<char>(input.byte())};
    default:
      return textOf(input, most);
  }
}

bool isPlaceholder(const std::string& fragment) {
  return fragment == "%s" || fragment == "%u" || fragment == "%b";
}

RingSite siteOf(FuzzedBytes& input) {
  constexpr std::size_t numbers = (5 + mostFragments) * 4;
  constexpr std::size_t shortFragments = mostFragments * 2;
  std::size_t left = longestRow - numbers - shortFragments;
  RingSite site{{}, numberOf(input), {}, numberOf(input), {}};
  site.path = textOf(input, left);
  left -= site.path.size();
  site.function = textOf(input, left);
  left -= site.function.size();
  for (unsigned count = input.below(mostFragments + 1); count > 0; --count) {
    site.fragments.push_back(fragmentOf(input, left));
    left -= std::min(left, site.fragments.back().size());
  }
  return site;
}

void appendText(std::string& row, const std::string& text) {
  append(row, static_cast<std::uint32_t>(text.size()));
  row += text;
}

std::string rowOf(const RingSite& site) {
  std::string row;
  append(row, site.line);
  append(row, site.level);
  append(row, static_cast<std::uint32_t>(site.fragments.size()));
  appendText(row, site.path);
  appendText(row, site.function);
  for (const std::string& fragment : site.fragments)
    appendText(row, fragment);
  return row;
}

// Stands for each site for which the table has no space.
RingSite siteLeftOut() {
  return {{}, 0, {}, 0, {"a message whose site found no room in the file"}};
}

// The arguments of a message, as its writer stores them, and its text.
class Message final {
 public:
  Message(const RingSite& site, FuzzedBytes& input) {
    bool isSupplied = true;
    for (const std::string& fragment : site.fragments) {
      if (!isPlaceholder(fragment)) {
        text_ += fragment;
        continue;
      }
      isSupplied = isSupplied && input.below(16) != 15;
      if (!isSupplied || !put(fragment[1], input)) text_ += "...";
    }
  }

  [[nodiscard]] const std::string& arguments() const noexcept { return arguments_; }
  [[nodiscard]] const std::string& text() const noexcept { return text_; }

 private:
  // Returns whether the argument is complete.
  bool put(char kind, FuzzedBytes& input) {
    if (argumentBytes - arguments_.size() < sizeof(std::uint32_t)) return false;
    if (kind == 's') return putText(textOf(input, 300));
    const std::uint32_t number = numberOf(input);
    append(arguments_, number);
    text_ += kind == 'u' ? std::to_string(number) : number != 0 ? "true" : "false";
    return true;
  }
  bool putText(const std::string& text) {
    const std::size_t left = argumentBytes - arguments_.size() - sizeof(std::uint32_t);
    const std::string kept = text.substr(0, left);
    append(arguments_, static_cast<std::uint16_t>(kept.size()));
    append(arguments_, static_cast<std::uint16_t>(kept.size() != text.size()));
    arguments_ += kept;
    text_ += kept;
    return kept.size() == text.size();
  }

  std::string arguments_;
  std::string text_;
};

std::string slotOf(std::uint64_t sequence, std::uint32_t site, std::uint64_t time,
                   const std::string& arguments) {
  std::string slot;
  append(slot, sequence);
  append(slot, site);
  append(slot, static_cast<std::uint32_t>(arguments.size()));
  append(slot, time);
  slot += arguments;
  slot.resize(slotBytes);
  return slot;
}

// A number of nanoseconds.
std::uint64_t timeOf(FuzzedBytes& input) {
  return (std::uint64_t{numberOf(input)} << 32U) + numberOf(input);
}

std::uint64_t firstSequence(FuzzedBytes& input) {
  constexpr std::array<std::uint64_t, 4> edges{0, 0xfffffffe, std::uint64_t{1} << 63U, 1000};
  return edges[input.below(edges.size())];
}

// Writes messages into the slots of a file, in the order of their numbers.
class Slots final {
 public:
  Slots(RingFileBytes& file, const std::vector<RingSite>& sites, unsigned count)
      : file_(file), sites_(sites), slots_(count, slotOf(emptySlot, 0, 0, {})) {}

  void write(std::uint64_t sequence, FuzzedBytes& input) {
    const unsigned site = input.below(static_cast<unsigned>(sites_.size()));
    time_ += timeOf(input);
    write(sequence, site, Message(sites_[site], input), input.below(8) == 7);
  }
  // Fills all slots with messages that differ in their numbers only.
  void fill(std::uint64_t first, FuzzedBytes& input) {
    const unsigned site = input.below(static_cast<unsigned>(sites_.size()));
    const Message message(sites_[site], input);
    for (std::uint64_t sequence = first; sequence < first + slots_.size(); ++sequence)
      write(sequence, site, message, false);
  }
  void end() {
    for (const std::string& slot : slots_)
      file_.bytes += slot;
  }

 private:
  void write(std::uint64_t sequence, std::uint32_t site, const Message& message,
             bool isIncomplete) {
    auto& messages = file_.messages;
    if (sequence >= slots_.size() && !messages.empty() &&
        messages.front().sequence <= sequence - slots_.size()) {
      messages.erase(messages.begin());
    }
    const std::uint64_t number = isIncomplete ? emptySlot : sequence;
    slots_[sequence % slots_.size()] = slotOf(number, site, time_, message.arguments());
    // The difference wraps, and so does the sum.
    const std::uint64_t wallTime = file_.wallStart + (time_ - file_.monotonicStart);
    if (!isIncomplete) messages.push_back({sequence, wallTime, sites_[site], message.text()});
  }

  RingFileBytes& file_;
  const std::vector<RingSite>& sites_;
  std::vector<std::string> slots_;
  std::uint64_t time_ = 0;  // of the message
};

std::string headerOf(const RingFileBytes& file, unsigned slots, unsigned sites, unsigned leftOut) {
  std::string header = "Blinklog";
  for (const std::uint32_t number :
       {std::uint32_t{0x01020304}, std::uint32_t{2}, static_cast<std::uint32_t>(tableBytes),
        static_cast<std::uint32_t>(slotBytes), static_cast<std::uint32_t>(slots),
        static_cast<std::uint32_t>(sites), static_cast<std::uint32_t>(leftOut), file.process})
    append(header, number);
  for (const std::uint64_t time : {file.madeAt, file.monotonicStart, file.wallStart})
    append(header, time);
  header.resize(headerBytes);
  return header;
}

void overwrite(std::string& bytes, std::size_t at, std::uint64_t number, std::size_t size) {
  if (at < bytes.size()) std::memcpy(bytes.data() + at, &number, std::min(size, bytes.size() - at));
}

std::size_t placeOf(FuzzedBytes& input) {
  switch (input.below(3)) {
    case 0:
      return input.below(64);
    case 1:
      return headerBytes + input.below(2048);
    default:
      return slotsOffset + input.below((mostSlots + 1) * slotBytes);
  }
}

std::size_t sizeOf(FuzzedBytes& input, std::size_t present) {
  switch (input.below(3)) {
    case 0:
      return input.below(64);
    case 1:
      return slotsOffset + input.below(mostSlots * slotBytes);
    default:
      return present + 1 + input.below(slotBytes);
  }
}

}  // namespace

RingFileBytes ringFileOf(FuzzedBytes& input) {
  RingFileBytes file;
  file.process = numberOf(input);
  file.madeAt = std::uint64_t{numberOf(input)} * (1 + input.below(59)) % (endOfYear9999 + 1);
  file.monotonicStart = timeOf(input);
  file.wallStart = timeOf(input);
  const bool isBig = input.below(64) == 63;
  const unsigned slots = isBig ? manySlots : 1 + input.below(mostSlots);
  std::vector<RingSite> sites(1 + input.below(mostSites));
  std::generate(sites.begin(), sites.end(), [&] { return siteOf(input); });
  const auto rows = static_cast<unsigned>(sites.size());
  const unsigned leftOut = input.below(3);
  sites.resize(rows + leftOut, siteLeftOut());
  file.bytes = headerOf(file, slots, rows, leftOut);
  for (unsigned row = 0; row < rows; ++row)
    file.bytes += rowOf(sites[row]);
  file.bytes.resize(slotsOffset);
  Slots ring(file, sites, slots);
  const std::uint64_t first = firstSequence(input);
  if (isBig) {
    ring.fill(first, input);
  } else {
    for (std::uint64_t count = input.below(2 * mostSlots + 1), sent = 0; sent < count; ++sent)
      ring.write(first + sent, input);
  }
  ring.end();
  return file;
}

void damage(std::string& bytes, FuzzedBytes& input) {
  constexpr std::array<std::uint64_t, 8> edges{
      0, 1, 241, 0x10000, 0x7fffffff, 0xffffffff, 0xfffffffe, ~std::uint64_t{0}};
  if (input.below(4) == 0) return bytes.resize(sizeOf(input, bytes.size()));
  const std::size_t at = placeOf(input);
  const unsigned which = input.below(2 * edges.size());
  const std::uint64_t number = which < edges.size() ? edges[which] : input.byte();
  overwrite(bytes, at, number, std::size_t{1} << input.below(4));
}

}  // namespace Fuzz
