#include "agent/model/packets/Captures.h"

#include <pcap/pcap.h>

#include <algorithm>
#include <cstddef>
#include <cstdio>
#include <span>
#include <system_error>
#include <utility>

#include "agent/language/Errors.h"
#include "agent/language/PrintableText.h"

namespace ZelAgent {
namespace {

// Some messages of the library begin with the file, and some do not.
std::string withoutFile(const std::string& file, const std::string& message) {
  const std::string start = file + ": ";
  return message.starts_with(start) ? message.substr(start.size()) : message;
}

[[noreturn]] void failToRead(const std::string& file, const std::string& what) {
  throw CaptureError(printable(file, 1000) + ": " + printable(what, 1000) +
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

std::filesystem::path fileNameOf(std::string interface) {
  const auto cannotStand = [](char byte) { return byte == '/' || byte == '\0'; };
  std::replace_if(interface.begin(), interface.end(), cannotStand, '_');
  return interface + ".pcap";
}

// Whether everything is in the file. The error flag of the stream covers earlier writes.
bool isWritten(pcap_dumper* dumper) {
  return pcap_dump_flush(dumper) == 0 && std::ferror(pcap_dump_file(dumper)) == 0;
}

[[noreturn]] void failToWrite(const std::filesystem::path& path, const std::string& what) {
  throw CaptureError(printable(path.string(), 1000) + ": " + what);
}

}  // namespace

void CaptureReader::Close::operator()(pcap* capture) const noexcept {
  pcap_close(capture);
}

CaptureReader::CaptureReader(std::string file) : file_(std::move(file)) {
  char error[PCAP_ERRBUF_SIZE] = "";
  capture_.reset(
      pcap_open_offline_with_tstamp_precision(file_.c_str(), PCAP_TSTAMP_PRECISION_NANO, error));
  if (!capture_) failToRead(file_, withoutFile(file_, error));
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
  const std::span<const std::uint8_t> frame(bytes, header->caplen);
  const auto packet = isEthernet_ ? ipPacketIn(frame) : frame;
  std::optional<std::vector<std::uint8_t>> ipPacket;
  if (packet) ipPacket = std::vector<std::uint8_t>(packet->begin(), packet->end());
  return CapturedPacket{{header->ts.tv_sec, header->ts.tv_usec}, std::move(ipPacket)};
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

void CaptureFolder::Close::operator()(pcap* capture) const noexcept {
  pcap_close(capture);
}

void CaptureFolder::Close::operator()(pcap_dumper* dumper) const noexcept {
  pcap_dump_close(dumper);
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

CaptureFolder::~CaptureFolder() {
  for (const auto& [name, file] : files_) {
    std::error_code ignored;
    std::filesystem::remove(file.unfinished, ignored);
  }
}

void CaptureFolder::write(const std::string& interface, const CaptureTime& time,
                          std::span<const std::uint8_t> packet) {
  pcap_pkthdr header{};
  header.ts.tv_sec = time.seconds;
  header.ts.tv_usec = time.nanoseconds;
  header.caplen = header.len = static_cast<bpf_u_int32>(packet.size());
  pcap_dump(reinterpret_cast<u_char*>(fileOf(interface).dumper.get()), &header, packet.data());
}

void CaptureFolder::keep() {
  for (auto& [name, file] : files_) {
    if (!isWritten(file.dumper.get())) {
      failToWrite(name, "cannot be written to the end; give a folder with room for it");
    }
    std::error_code unknown;
    if (std::filesystem::is_directory(name, unknown)) {
      failToWrite(name, "cannot be written: Is a directory; give a folder without it");
    }
  }
  for (auto& [name, file] : files_) {
    std::error_code error;
    std::filesystem::rename(file.unfinished, name, error);
    if (error) failToWrite(name, "cannot be written: " + error.message());
  }
  files_.clear();
}

CaptureFolder::File& CaptureFolder::fileOf(const std::string& interface) {
  const std::filesystem::path name = folder_ / fileNameOf(interface);
  const auto present = files_.find(name);
  if (present != files_.end()) {
    if (present->second.interface != interface) {
      failToWrite(name, "is wanted for two interfaces, " + inQuotes(present->second.interface) +
                            " and " + inQuotes(interface) + "; name them apart");
    }
    return present->second;
  }
  const std::filesystem::path unfinished = name.string() + ".unfinished";
  std::unique_ptr<pcap_dumper, Close> dumper(pcap_dump_open(rawIp_.get(), unfinished.c_str()));
  if (!dumper) {
    failToWrite(name, "cannot be written: " + printable(pcap_geterr(rawIp_.get()), 1000) +
                          "; give a folder that can be written to");
  }
  return files_.emplace(name, File{interface, unfinished, std::move(dumper)}).first->second;
}

}  // namespace ZelAgent
