#include "Blinklog/RingImage.h"

#include <fcntl.h>
#include <sys/stat.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <optional>
#include <span>
#include <string_view>

#include "Blinklog/FileHandle.h"
#include "Blinklog/RingFileFormat.h"
#include "Blinklog/Slot.h"

namespace Blinklog {
namespace {

using RingFileFormat::Header;

constexpr std::uint64_t endOfYear9999 = 253402300799;
// The messages may take this many times the size of the file when they are printed.
constexpr std::uint64_t mostPrinted = 7;

// The problem, without the name of the file.
class Problem final : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

[[noreturn]] void failAsOther(const std::string& what) {
  throw Problem(what + "; give a file that holds a trace ring");
}

[[noreturn]] void failAsDamaged(const std::string& what) {
  throw Problem("is damaged: " + what + "; give an undamaged copy");
}

std::uint64_t sizeOf(const FileHandle& file) {
  struct stat found {};
  if (fstat(file.get(), &found) != 0)
    failAsOther(std::string("cannot be read: ") + strerror(errno));
  if (!S_ISREG(found.st_mode)) failAsOther("is not a regular file");
  return static_cast<std::uint64_t>(found.st_size);
}

FileHandle openToRead(const std::string& path) {
  FileHandle file(open(path.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC));
  if (!file.isOpen()) failAsOther(std::string("cannot be opened: ") + strerror(errno));
  return file;
}

// Reads at most `size` bytes.
std::vector<std::byte> readBeginning(const FileHandle& file, std::size_t size) {
  std::vector<std::byte> bytes(size);
  std::size_t used = 0;
  while (used < size) {
    const ssize_t got =
        pread(file.get(), bytes.data() + used, size - used, static_cast<off_t>(used));
    if (got < 0 && errno == EINTR) continue;
    if (got < 0) failAsOther(std::string("cannot be read: ") + strerror(errno));
    if (got == 0) break;
    used += static_cast<std::size_t>(got);
  }
  bytes.resize(used);
  return bytes;
}

// Reads numbers and texts from the front of some bytes; nothing if there are too few bytes.
class Row final {
 public:
  explicit Row(std::span<const std::byte> bytes) noexcept : bytes_(bytes) {}

  [[nodiscard]] std::size_t left() const noexcept { return bytes_.size(); }
  std::optional<std::uint32_t> number() noexcept {
    std::uint32_t number = 0;
    if (bytes_.size() < sizeof number) return std::nullopt;
    std::memcpy(&number, bytes_.data(), sizeof number);
    bytes_ = bytes_.subspan(sizeof number);
    return number;
  }
  std::optional<std::string> text() {
    const std::optional<std::uint32_t> length = number();
    if (!length || *length > bytes_.size()) return std::nullopt;
    std::string text(reinterpret_cast<const char*>(bytes_.data()), *length);
    bytes_ = bytes_.subspan(*length);
    return text;
  }
  std::optional<Site> site() {
    const auto line = number();
    const auto level = number();
    const auto fragments = number();
    auto path = text();
    auto function = text();
    if (!line || !level || !fragments || !path || !function) return std::nullopt;
    Site site{std::move(*path), *line, std::move(*function), *level, {}};
    for (std::uint32_t i = 0; i < *fragments; ++i) {
      auto fragment = text();
      if (!fragment) return std::nullopt;
      site.fragments.push_back(std::move(*fragment));
    }
    return site;
  }

 private:
  std::span<const std::byte> bytes_;
};

Header headerIn(std::span<const std::byte> bytes) {
  if (bytes.empty()) failAsOther("is empty");
  Header header{};
  const std::size_t marked = std::min(bytes.size(), header.magic.size());
  if (std::memcmp(bytes.data(), header.magic.data(), marked) != 0) {
    failAsOther("is no trace ring: it does not begin with \"Blinklog\"");
  }
  if (bytes.size() < sizeof header) {
    failAsDamaged("it is cut after " + std::to_string(bytes.size()) + " bytes, in its header");
  }
  std::memcpy(&header, bytes.data(), sizeof header);
  return header;
}

void needReadable(const Header& header) {
  if (header.byteOrder == __builtin_bswap32(RingFileFormat::byteOrder)) {
    throw Problem("has the other byte order; read it on a machine like the one that wrote it");
  }
  if (header.byteOrder != RingFileFormat::byteOrder) {
    failAsDamaged("the mark of its byte order is " + std::to_string(header.byteOrder));
  }
  if (header.version != RingFileFormat::version) {
    throw Problem("has version " + std::to_string(header.version) + " of the format, not " +
                  std::to_string(RingFileFormat::version) +
                  "; read it with the release that wrote it");
  }
}

void needSizes(const Header& header, std::uint64_t fileBytes) {
  if (header.siteTableBytes != RingFileFormat::siteTableBytes || header.slotBytes != Slot::bytes) {
    failAsDamaged("its header tells a table of " + std::to_string(header.siteTableBytes) +
                  " bytes and slots of " + std::to_string(header.slotBytes) + ", not " +
                  std::to_string(RingFileFormat::siteTableBytes) + " and " +
                  std::to_string(Slot::bytes));
  }
  if (header.slots == 0 || header.slots > RingFileFormat::maxSlots) {
    failAsDamaged("its header tells " + std::to_string(header.slots) + " slots, not 1 to " +
                  std::to_string(RingFileFormat::maxSlots));
  }
  if (fileBytes != RingFileFormat::fileBytes(header.slots)) {
    failAsDamaged("it has " + std::to_string(fileBytes) + " bytes where its header tells " +
                  std::to_string(RingFileFormat::fileBytes(header.slots)));
  }
  if (header.madeAt > endOfYear9999) {
    failAsDamaged("its header tells that it was made " + std::to_string(header.madeAt) +
                  " seconds after 1970");
  }
}

std::vector<Site> sitesIn(const Header& header, std::span<const std::byte> file) {
  Row table(file.subspan(RingFileFormat::headerBytes, RingFileFormat::siteTableBytes));
  std::vector<Site> sites;
  for (std::uint32_t number = 0; number < header.sites; ++number) {
    const std::size_t before = table.left();
    std::optional<Site> site = table.site();
    if (!site || before - table.left() > RingFileFormat::maxSiteBytes) {
      failAsDamaged("row " + std::to_string(number) + " of its table of sites is longer than " +
                    "a row or the table can be");
    }
    sites.push_back(std::move(*site));
  }
  // For all sites that did not fit into the table.
  sites.push_back({{}, 0, {}, 0, {"a message whose site found no room in the file"}});
  return sites;
}

const Site& siteFor(const Slot& slot, const Header& header, const std::vector<Site>& sites,
                    const std::string& place) {
  if (slot.site >= std::uint64_t{header.sites} + header.sitesLeftOut) {
    failAsDamaged(place + " names site " + std::to_string(slot.site) + ", but there are " +
                  std::to_string(header.sites));
  }
  return sites[std::min(slot.site, header.sites)];
}

Slot slotAt(std::span<const std::byte> file, std::size_t number) {
  Slot slot;
  std::memcpy(&slot, file.data() + RingFileFormat::slotsOffset + number * Slot::bytes, sizeof slot);
  return slot;
}

Record recordOf(const Slot& slot, std::size_t number, const Header& header,
                const std::vector<Site>& sites) {
  const std::string place = "slot " + std::to_string(number);
  if (slot.sequence % header.slots != number) {
    failAsDamaged(place + " holds message " + std::to_string(slot.sequence) +
                  ", whose place is another");
  }
  const Site& site = siteFor(slot, header, sites, place);
  if (slot.size > slot.arguments.size()) {
    failAsDamaged(place + " tells " + std::to_string(slot.size) + " bytes of arguments, not 0 to " +
                  std::to_string(slot.arguments.size()));
  }
  const auto arguments = std::span(slot.arguments).first(slot.size);
  if (!areComplete(site, arguments)) {
    failAsDamaged(place + " holds an argument that is longer than what is left of the slot");
  }
  Record record{slot.sequence, header.start.wallAt(slot.time), &site, textOf(site, arguments)};
  record.text.shrink_to_fit();
  return record;
}

// The size of the byte when it is printed, escaped if it is unusual.
std::uint64_t printedBytes(char byte) noexcept {
  constexpr std::uint64_t longestEscape = 6;
  if (byte == '"' || byte == '\\') return 2;  // as in JSON
  return byte >= ' ' && byte <= '~' ? 1 : longestEscape;
}

std::uint64_t printedBytes(std::string_view text) noexcept {
  std::uint64_t bytes = 0;
  for (const char byte : text)
    bytes += printedBytes(byte);
  return bytes;
}

std::uint64_t printedBytes(const Record& record) noexcept {
  return printedBytes(record.site->path) + printedBytes(record.site->function) +
         printedBytes(record.text);
}

// Slots that are equal in two successive readings are consistent: none was written between the two.
std::vector<Record> recordsIn(const Header& header, const std::vector<Site>& sites,
                              std::span<const std::byte> before, std::span<const std::byte> after) {
  std::vector<Record> records;
  records.reserve(header.slots);
  std::uint64_t printed = 0;
  for (std::size_t number = 0; number < header.slots; ++number) {
    const Slot slot = slotAt(after, number);
    const Slot earlier = slotAt(before, number);
    if (slot.sequence == Slot::noMessage || std::memcmp(&slot, &earlier, sizeof slot) != 0)
      continue;
    records.push_back(recordOf(slot, number, header, sites));
    printed += printedBytes(records.back());
    if (printed > mostPrinted * after.size()) {
      failAsDamaged("its messages would take more than " + std::to_string(mostPrinted) +
                    " times its size when they are printed");
    }
  }
  std::sort(records.begin(), records.end(),
            [](const Record& a, const Record& b) { return a.sequence < b.sequence; });
  if (!records.empty() && records.back().sequence - records.front().sequence >= header.slots) {
    failAsDamaged("it holds messages " + std::to_string(records.front().sequence) + " and " +
                  std::to_string(records.back().sequence) + ", which no " +
                  std::to_string(header.slots) + " slots hold at once");
  }
  return records;
}

}  // namespace

RingImage::RingImage(const std::string& path) try {
  const FileHandle file = openToRead(path);
  const std::uint64_t size = sizeOf(file);
  needReadable(headerIn(readBeginning(file, std::min<std::uint64_t>(size, sizeof(Header)))));
  needSizes(headerIn(readBeginning(file, sizeof(Header))), size);
  const std::vector<std::byte> before = readBeginning(file, size);
  const std::vector<std::byte> after = readBeginning(file, size);
  const Header header = headerIn(after);
  needReadable(header);
  needSizes(header, std::min(before.size(), after.size()));
  process_ = header.process;
  madeAt_ = header.madeAt;
  sites_ = sitesIn(header, after);
  records_ = recordsIn(header, sites_, before, after);
} catch (const Problem& problem) {
  throw RingFileError(path, problem.what());
}

RingImage::~RingImage() = default;

}  // namespace Blinklog
