#include "tests/agent/CaptureFile.h"

#include <gtest/gtest.h>
#include <pcap/pcap.h>

#include <algorithm>

#include "tests/files/TemporaryFolder.h"

namespace ZelAgent {
namespace {

int linkTypeOf(CaptureLink link) {
  switch (link) {
    case CaptureLink::ethernet:
      return DLT_EN10MB;
    case CaptureLink::rawIp:
      return DLT_RAW;
    case CaptureLink::ipv4:
      return DLT_IPV4;
    case CaptureLink::ipv6:
      return DLT_IPV6;
    case CaptureLink::linuxCooked:
      return DLT_LINUX_SLL;
  }
  return -1;
}

}  // namespace

void writeCapture(const std::filesystem::path& file, CaptureLink link,
                  const std::vector<CaptureFrame>& frames, std::size_t cutAt) {
  constexpr int snapLength = 65535;
  pcap_t* const capture = pcap_open_dead_with_tstamp_precision(linkTypeOf(link), snapLength,
                                                               PCAP_TSTAMP_PRECISION_NANO);
  pcap_dumper_t* const dumper = pcap_dump_open(capture, file.c_str());
  ASSERT_NE(dumper, nullptr) << pcap_geterr(capture);
  for (const CaptureFrame& frame : frames) {
    pcap_pkthdr header{};
    header.ts.tv_sec = frame.seconds;
    header.ts.tv_usec = frame.nanoseconds;
    header.len = static_cast<bpf_u_int32>(frame.bytes.size());
    header.caplen = static_cast<bpf_u_int32>(std::min(frame.bytes.size(), cutAt));
    pcap_dump(reinterpret_cast<u_char*>(dumper), &header, frame.bytes.data());
  }
  pcap_dump_close(dumper);
  pcap_close(capture);
}

std::vector<CaptureFrame> readRawIpCapture(const std::filesystem::path& file) {
  char error[PCAP_ERRBUF_SIZE] = "";
  pcap_t* const capture =
      pcap_open_offline_with_tstamp_precision(file.c_str(), PCAP_TSTAMP_PRECISION_NANO, error);
  EXPECT_NE(capture, nullptr) << error;
  if (capture == nullptr) return {};
  EXPECT_EQ(pcap_datalink(capture), DLT_RAW) << file;
  std::vector<CaptureFrame> frames;
  pcap_pkthdr* header = nullptr;
  const u_char* bytes = nullptr;
  int result = 0;
  while ((result = pcap_next_ex(capture, &header, &bytes)) == 1) {
    EXPECT_EQ(header->len, header->caplen) << file;
    frames.push_back({{bytes, bytes + header->caplen}, header->ts.tv_sec, header->ts.tv_usec});
  }
  EXPECT_EQ(result, PCAP_ERROR_BREAK) << pcap_geterr(capture);
  pcap_close(capture);
  return frames;
}

std::vector<std::string> namesIn(const std::filesystem::path& folder) {
  std::vector<std::string> names;
  for (const auto& entry : std::filesystem::directory_iterator(folder))
    names.push_back(entry.path().filename());
  std::sort(names.begin(), names.end());
  return names;
}

std::filesystem::path emptyFolder(const std::string& name) {
  const auto* const test = ::testing::UnitTest::GetInstance()->current_test_info();
  std::string unique = std::string(test->test_suite_name()) + '.' + test->name() + '.' + name;
  std::replace(unique.begin(), unique.end(), '/', '.');
  const auto folder = TestFiles::processFolder() / unique;
  std::filesystem::remove_all(folder);
  std::filesystem::create_directories(folder);
  return folder;
}

}  // namespace ZelAgent
