#include "agent/model/packets/Captures.h"

#include <pcap/pcap.h>
#include <sys/stat.h>

#include <algorithm>
#include <cstddef>
#include <cstdio>
#include <cstdlib>
#include <new>
#include <span>
#include <string_view>
#include <system_error>
#include <utility>

#include "agent/language/Errors.h"
#include "agent/language/FileKind.h"
#include "agent/language/Limits.h"
#include "agent/language/PrintableText.h"
#include "agent/language/TextFile.h"
#include "agent/model/packets/HeldSignals.h"
#include "agent/model/packets/UnfinishedFile.h"

namespace ZelAgent {
namespace {

[[noreturn]] void failToRead(const std::string& file, const std::string& what) {
  throw CaptureError(printable(file, Limits::shownTextBytes) + ": " +
                     printable(what, Limits::shownTextBytes) +
                     "; give a capture (pcap) of Ethernet or of raw IP");
}

bool isRawIp(int linkType) {
  const auto known = {DLT_RAW, DLT_IPV4, DLT_IPV6};
  return std::find(known.begin(), known.end(), linkType) != known.end();
}

constexpr std::size_t addressesBytes = 12;
constexpr std::size_t typeBytes = 2;
constexpr std::size_t tagBytes = 4;

constexpr unsigned typeIpv4 = 0x0800;
constexpr unsigned typeIpv6 = 0x86dd;
constexpr unsigned typeVlan = 0x8100;
constexpr unsigned typeServiceVlan = 0x88a8;

constexpr int longestPacket = 65535 + 40;

// A pcap file has 32 bits for the seconds. libpcap reads them as a signed number, which is negative
// from January 2038 on.
std::int64_t secondsOf(const timeval& time) noexcept {
  constexpr std::int64_t all32Bits = std::int64_t{1} << 32;
  return time.tv_sec < 0 ? time.tv_sec + all32Bits : time.tv_sec;
}

std::filesystem::path fileNameOf(std::string interface) {
  const auto cannotStand = [](char byte) { return byte == '/' || byte == '\0'; };
  std::replace_if(interface.begin(), interface.end(), cannotStand, '_');
  return interface + ".pcap";
}

constexpr std::size_t fileHeaderBytes = 24;
constexpr std::size_t packetHeaderBytes = 16;

// Opens the file, or standard input for "-".
InputFile openCapture(const std::string& file) {
  if (file == "-") return {stdin, &std::fclose};
  try {
    return openInputFile(file);
  } catch (const InputFileError& error) {
    failToRead(file, error.what());
  }
}

[[noreturn]] void failToWrite(const std::filesystem::path& path, const std::string& what) {
  throw CaptureError(printable(path.string(), Limits::shownTextBytes) + ": " + what);
}

// Only a file is replaced, not what another program has put there.
void needReplaceable(const std::filesystem::path& name) {
  struct stat found {};
  if (lstat(name.c_str(), &found) != 0 || S_ISREG(found.st_mode)) return;
  failToWrite(name, "cannot be written: is " + std::string(fileKind(found.st_mode)) +
                        "; give a folder without it");
}

UnfinishedFile makeUnfinished(const std::filesystem::path& name, std::string_view bytes) {
  const std::filesystem::path unfinished = name.string() + ".unfinished";
  try {
    return {unfinished, bytes};
  } catch (const std::system_error& error) {
    if (error.code() == std::errc::file_exists) {
      failToWrite(unfinished, "exists already; end the command that writes it, or remove it");
    }
    failToWrite(name, "cannot be written: " + error.code().message() +
                          "; give a folder with room that can be written to");
  }
}

}  // namespace

void CaptureReader::Close::operator()(pcap* capture) const noexcept {
  pcap_close(capture);
}

CaptureReader::CaptureReader(std::string file) : file_(std::move(file)) {
  InputFile stream = openCapture(file_);
  char error[PCAP_ERRBUF_SIZE] = "";
  capture_.reset(
      pcap_fopen_offline_with_tstamp_precision(stream.get(), PCAP_TSTAMP_PRECISION_NANO, error));
  if (!capture_) failToRead(file_, error);
  static_cast<void>(stream.release());  // the capture closes it
  count(fileHeaderBytes);
  const int linkType = pcap_datalink(capture_.get());
  isEthernet_ = linkType == DLT_EN10MB;
  if (!isEthernet_ && !isRawIp(linkType)) {
    const char* const name = pcap_datalink_val_to_name(linkType);
    failToRead(file_, std::string("has link type ") +
                          (name == nullptr ? std::to_string(linkType) : std::string(name)));
  }
}

std::optional<CapturedPacket> CaptureReader::next() {
  pcap_pkthdr* header = nullptr;
  const std::uint8_t* bytes = nullptr;
  const int result = pcap_next_ex(capture_.get(), &header, &bytes);
  if (result == PCAP_ERROR_BREAK) return std::nullopt;
  if (result != 1) failToRead(file_, pcap_geterr(capture_.get()));
  count(packetHeaderBytes + header->caplen);
  const std::span<const std::uint8_t> frame(bytes, header->caplen);
  const auto packet = isEthernet_ ? ipPacketIn(frame) : frame;
  std::optional<std::vector<std::uint8_t>> ipPacket;
  if (packet) ipPacket = std::vector<std::uint8_t>(packet->begin(), packet->end());
  return CapturedPacket{{secondsOf(header->ts), header->ts.tv_usec}, std::move(ipPacket)};
}

// A file may grow while it is read. A pipe has no position, so its bytes are counted.
void CaptureReader::count(std::size_t packetBytes) {
  readBytes_ += packetBytes;
  const off_t position = ftello(pcap_file(capture_.get()));
  const std::size_t read = position < 0 ? readBytes_ : static_cast<std::size_t>(position);
  if (read > Limits::inputFileBytes) failToRead(file_, inputTooLarge().what());
}

std::optional<std::span<const std::uint8_t>> ipPacketIn(
    std::span<const std::uint8_t> frame) noexcept {
  for (std::size_t at = addressesBytes; at + typeBytes <= frame.size(); at += tagBytes) {
    const unsigned type = static_cast<unsigned>(frame[at]) << 8 | frame[at + 1];
    if (type == typeIpv4 || type == typeIpv6) return frame.subspan(at + typeBytes);
    if (type != typeVlan && type != typeServiceVlan) return std::nullopt;
  }
  return std::nullopt;
}

// A capture in memory.
class CaptureFolder::Capture final {
 public:
  // Throws a `std::bad_alloc`.
  Capture(pcap* kind, std::string interface)
      : interface_(std::move(interface)), stream_(open_memstream(&bytes_, &size_)) {
    dumper_ = stream_ == nullptr ? nullptr : pcap_dump_fopen(kind, stream_);
    if (dumper_ == nullptr) throw std::bad_alloc();
  }
  Capture(const Capture&) = delete;
  Capture& operator=(const Capture&) = delete;
  ~Capture() {
    if (stream_ != nullptr) std::fclose(stream_);
    std::free(bytes_);
  }

  [[nodiscard]] const std::string& interface() const noexcept { return interface_; }
  void add(const pcap_pkthdr& header, std::span<const std::uint8_t> packet) {
    pcap_dump(reinterpret_cast<u_char*>(dumper_), &header, packet.data());
  }
  // All bytes of the file. Throws a `std::bad_alloc` if memory did not suffice for them.
  [[nodiscard]] std::string_view bytes() {
    if (std::fflush(stream_) != 0 || std::ferror(stream_) != 0) throw std::bad_alloc();
    return {bytes_, size_};
  }

 private:
  std::string interface_;
  char* bytes_ = nullptr;
  std::size_t size_ = 0;
  std::FILE* stream_;
  pcap_dumper* dumper_ = nullptr;  // writes to the stream
};

void CaptureFolder::Close::operator()(pcap* capture) const noexcept {
  pcap_close(capture);
}

CaptureFolder::CaptureFolder(std::filesystem::path folder)
    : folder_(std::move(folder)),
      rawIp_(pcap_open_dead_with_tstamp_precision(DLT_RAW, longestPacket,
                                                  PCAP_TSTAMP_PRECISION_NANO)) {
  std::error_code error;
  std::filesystem::create_directories(folder_, error);
  if (error) {
    failToWrite(folder_,
                "cannot be made: " + error.message() + "; give a folder that can be written to");
  }
}

CaptureFolder::~CaptureFolder() = default;

void CaptureFolder::write(const std::string& interface, const CaptureTime& time,
                          std::span<const std::uint8_t> packet) {
  pcap_pkthdr header{};
  header.ts.tv_sec = time.seconds;
  header.ts.tv_usec = time.nanoseconds;
  header.caplen = header.len = static_cast<bpf_u_int32>(packet.size());
  captureOf(interface).add(header, packet);
}

void CaptureFolder::keep() {
  const HeldSignals signals;  // ends after the unfinished files are removed
  std::vector<UnfinishedFile> unfinished;
  unfinished.reserve(captures_.size());
  for (auto& [name, capture] : captures_) {
    needReplaceable(name);
    unfinished.push_back(makeUnfinished(name, capture.bytes()));
    if (signals.anyArrived()) failToWrite(folder_, "a signal ended the command");
  }
  auto file = unfinished.begin();
  for (const auto& [name, capture] : captures_) {
    try {
      (file++)->renameTo(name);
    } catch (const std::system_error& error) {
      failToWrite(name, "cannot be written: " + error.code().message());
    }
  }
  captures_.clear();
}

CaptureFolder::Capture& CaptureFolder::captureOf(const std::string& interface) {
  const std::filesystem::path name = folder_ / fileNameOf(interface);
  Capture& capture = captures_.try_emplace(name, rawIp_.get(), interface).first->second;
  if (capture.interface() != interface) {
    failToWrite(name, "is wanted for two interfaces, " + inQuotes(capture.interface()) + " and " +
                          inQuotes(interface) + "; name them apart");
  }
  return capture;
}

}  // namespace ZelAgent
