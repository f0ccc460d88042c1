// Why: what leaves by an interface is written to a capture of that interface, in one folder.
// Always: one file of raw IP per interface by which anything left, INTERFACE.pcap with "_" in place
// of "/" and of bytes of zero; packets in the order in which they were written. Files appear when
// all is written: without a call of `keep` there is none, and those of the same names are as
// before.
#pragma once

#include <cstdint>
#include <filesystem>
#include <map>
#include <memory>
#include <span>
#include <string>

#include "agent/model/packets/CaptureReader.h"

struct pcap_dumper;

namespace ZelAgent {

class CaptureFolder final {
 public:
  // Makes the folder if it is not there. Throws a CaptureError, like all of these.
  explicit CaptureFolder(std::filesystem::path folder);
  CaptureFolder(const CaptureFolder&) = delete;
  CaptureFolder& operator=(const CaptureFolder&) = delete;
  ~CaptureFolder();

  void write(const std::string& interface, const CaptureTime& time,
             std::span<const std::uint8_t> packet);
  // Gives the files their names.
  void keep();

 private:
  struct Close {
    void operator()(pcap* capture) const noexcept;
    void operator()(pcap_dumper* dumper) const noexcept;
  };
  struct File {
    std::string interface;
    std::filesystem::path unfinished;
    std::unique_ptr<pcap_dumper, Close> dumper;
  };

  File& fileOf(const std::string& interface);

  std::filesystem::path folder_;
  std::unique_ptr<pcap, Close> rawIp_;
  std::map<std::filesystem::path, File> files_;  // by the name that they get
};

}  // namespace ZelAgent
