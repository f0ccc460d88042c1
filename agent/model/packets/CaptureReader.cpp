#include "agent/model/packets/CaptureReader.h"

#include <pcap/pcap.h>

#include <algorithm>
#include <span>
#include <utility>

#include "agent/language/Errors.h"
#include "agent/language/PrintableText.h"
#include "agent/model/packets/EthernetFrame.h"

namespace ZelAgent {
namespace {

// Some messages of the library begin with the file, and some do not.
std::string withoutFile(const std::string& file, const std::string& message) {
  const std::string start = file + ": ";
  return message.starts_with(start) ? message.substr(start.size()) : message;
}

[[noreturn]] void fail(const std::string& file, const std::string& what) {
  throw CaptureError(printable(file, 1000) + ": " + printable(what, 1000) +
                     "; give a capture (pcap) of Ethernet or of raw IP");
}

bool isRawIp(int linkType) {
  const auto known = {DLT_RAW, DLT_IPV4, DLT_IPV6};
  return std::find(known.begin(), known.end(), linkType) != known.end();
}

}  // namespace

void CaptureReader::Close::operator()(pcap* capture) const noexcept {
  pcap_close(capture);
}

CaptureReader::CaptureReader(std::string file) : file_(std::move(file)) {
  char error[PCAP_ERRBUF_SIZE] = "";
  capture_.reset(
      pcap_open_offline_with_tstamp_precision(file_.c_str(), PCAP_TSTAMP_PRECISION_NANO, error));
  if (!capture_) fail(file_, withoutFile(file_, error));
  const int linkType = pcap_datalink(capture_.get());
  isEthernet_ = linkType == DLT_EN10MB;
  if (!isEthernet_ && !isRawIp(linkType)) {
    const char* const name = pcap_datalink_val_to_name(linkType);
    fail(file_, std::string("has link type ") +
                    (name == nullptr ? std::to_string(linkType) : std::string(name)));
  }
}

std::optional<CapturedPacket> CaptureReader::next() {
  pcap_pkthdr* header = nullptr;
  const std::uint8_t* bytes = nullptr;
  const int result = pcap_next_ex(capture_.get(), &header, &bytes);
  if (result == PCAP_ERROR_BREAK) return std::nullopt;
  if (result != 1) fail(file_, pcap_geterr(capture_.get()));
  const std::span<const std::uint8_t> frame(bytes, header->caplen);
  const auto packet = isEthernet_ ? ipPacketIn(frame) : frame;
  std::optional<std::vector<std::uint8_t>> ipPacket;
  if (packet) ipPacket = std::vector<std::uint8_t>(packet->begin(), packet->end());
  return CapturedPacket{{header->ts.tv_sec, header->ts.tv_usec}, std::move(ipPacket)};
}

}  // namespace ZelAgent
