#include "agent/model/packets/CaptureFolder.h"

#include <pcap/pcap.h>

#include <algorithm>
#include <cstdio>
#include <system_error>
#include <utility>

#include "agent/language/Errors.h"
#include "agent/language/PrintableText.h"

namespace ZelAgent {
namespace {

constexpr int longestPacket = 65535 + 40;

std::filesystem::path fileNameOf(std::string interface) {
  const auto cannotStand = [](char byte) { return byte == '/' || byte == '\0'; };
  std::replace_if(interface.begin(), interface.end(), cannotStand, '_');
  return interface + ".pcap";
}

// Whether all of it is in the file; what could not be written earlier may be lost by now.
bool isWritten(pcap_dumper* dumper) {
  return pcap_dump_flush(dumper) == 0 && std::ferror(pcap_dump_file(dumper)) == 0;
}

[[noreturn]] void fail(const std::filesystem::path& path, const std::string& what) {
  throw CaptureError(printable(path.string(), 1000) + ": " + what);
}

}  // namespace

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
    fail(folder_, "cannot be made: " + error.message() + "; give a folder that can be written to");
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
      fail(name, "cannot be written to the end; give a folder with room for it");
    }
    std::error_code unknown;
    if (std::filesystem::is_directory(name, unknown)) {
      fail(name, "cannot be written: Is a directory; give a folder without it");
    }
  }
  for (auto& [name, file] : files_) {
    std::error_code error;
    std::filesystem::rename(file.unfinished, name, error);
    if (error) fail(name, "cannot be written: " + error.message());
  }
  files_.clear();
}

CaptureFolder::File& CaptureFolder::fileOf(const std::string& interface) {
  const std::filesystem::path name = folder_ / fileNameOf(interface);
  const auto present = files_.find(name);
  if (present != files_.end()) {
    if (present->second.interface != interface) {
      fail(name, "is wanted for two interfaces, " + inQuotes(present->second.interface) + " and " +
                     inQuotes(interface) + "; name them apart");
    }
    return present->second;
  }
  const std::filesystem::path unfinished = name.string() + ".unfinished";
  std::unique_ptr<pcap_dumper, Close> dumper(pcap_dump_open(rawIp_.get(), unfinished.c_str()));
  if (!dumper) {
    fail(name, "cannot be written: " + printable(pcap_geterr(rawIp_.get()), 1000) +
                   "; give a folder that can be written to");
  }
  return files_.emplace(name, File{interface, unfinished, std::move(dumper)}).first->second;
}

}  // namespace ZelAgent
