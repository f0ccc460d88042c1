// Fuzzes `zel-agent forward`. The input is the choices that make up one or two captures, the damage
// to them, and the interfaces by which their packets arrive. The configuration is an example.
//
// An undamaged capture of Ethernet or raw IP is read exactly, packet by packet and time by time.
// Any other capture is read or refused by one printable line. A refused one leaves no output file.
// Otherwise every packet is counted once: as leaving, as dropped, or as a frame without IP. What
// leaves is in captures of raw IP that are read back. They hold as many packets and bytes as are
// counted, none of them longer than the longest packet, with the times and in the order in which
// the packets arrived.

#include <algorithm>
#include <cstdint>
#include <filesystem>
#include <nlohmann/json.hpp>
#include <optional>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

#include "agent/commands/offline/OfflineCommands.h"
#include "agent/language/Errors.h"
#include "agent/language/TextFile.h"
#include "agent/model/packets/Captures.h"
#include "fuzz/AgentChecks.h"
#include "fuzz/CaptureBytes.h"
#include "fuzz/MemoryFile.h"
#include "fuzz/Must.h"

namespace {

using Fuzz::CaptureBytes;
using Fuzz::FuzzedBytes;
using Fuzz::must;
using nlohmann::json;
using ZelAgent::CapturedPacket;
using ZelAgent::CaptureError;
using ZelAgent::CaptureReader;
using ZelAgent::CaptureTime;

constexpr std::size_t longestPacket = 65535 + 40;

// The folder of the outputs. It is removed at the end of the process.
class OutFolder final {
 public:
  OutFolder() {
    std::string name = std::filesystem::temp_directory_path() / "zel-captures-XXXXXX";
    must(mkdtemp(name.data()) != nullptr, "a temporary folder can be made");
    path_ = name;
  }
  OutFolder(const OutFolder&) = delete;
  OutFolder& operator=(const OutFolder&) = delete;
  ~OutFolder() { std::filesystem::remove_all(path_); }

  [[nodiscard]] const std::filesystem::path& path() const noexcept { return path_; }
  [[nodiscard]] std::vector<std::filesystem::path> files() const {
    std::vector<std::filesystem::path> files;
    for (const auto& entry : std::filesystem::directory_iterator(path_))
      files.push_back(entry.path());
    return files;
  }
  void clear() const {
    for (const auto& file : files())
      std::filesystem::remove(file);
  }

 private:
  std::filesystem::path path_;
};

const OutFolder& outFolder() {
  static const OutFolder folder;
  return folder;
}

using Packets = std::vector<CapturedPacket>;

// All packets of the capture. Nothing if it is refused.
std::optional<Packets> packetsIn(const std::string& path) {
  Packets packets;
  try {
    CaptureReader reader(path);
    while (auto packet = reader.next())
      packets.push_back(std::move(*packet));
  } catch (const CaptureError& error) {
    Fuzz::checkError(error.what(), path + ": ");
    return std::nullopt;
  }
  return packets;
}

// A capture that arrives by an interface.
class Arriving final {
 public:
  explicit Arriving(FuzzedBytes& input) {
    static constexpr std::array<const char*, 3> interfaces{"Ethernet1", "Ethernet2", "Ethernet20"};
    unsigned damages = input.below(3);
    interface_ = interfaces[input.below(interfaces.size())];
    CaptureBytes capture = Fuzz::captureOf(input);
    const bool isUndamaged = damages == 0;
    for (; damages > 0; --damages)
      Fuzz::damage(capture, input);
    file_.emplace(capture.bytes);
    packets_ = packetsIn(file_->path());
    if (isUndamaged) mustBeExact(capture);
  }

  [[nodiscard]] const std::optional<Packets>& packets() const noexcept { return packets_; }
  [[nodiscard]] std::string argument() const { return interface_ + '=' + file_->path(); }

 private:
  void mustBeExact(const CaptureBytes& capture) const {
    must(packets_.has_value() == capture.isReadable, "captures of Ethernet and raw IP are read");
    if (!packets_) return;
    must(packets_->size() == capture.packets.size(), "each packet is read");
    for (std::size_t at = 0; at < packets_->size(); ++at) {
      must((*packets_)[at].time == capture.packets[at].time, "a packet has its time");
      must((*packets_)[at].ipPacket == capture.packets[at].ipPacket, "a packet is read exactly");
    }
  }

  std::string interface_;
  std::optional<Fuzz::MemoryFile> file_;
  std::optional<Packets> packets_;
};

// The packets in the order in which they arrive: the earliest of those that are next.
Packets inOrder(const std::vector<Packets>& captures) {
  std::vector<std::size_t> next(captures.size(), 0);
  Packets all;
  while (true) {
    std::optional<std::size_t> earliest;
    for (std::size_t at = 0; at < captures.size(); ++at) {
      if (next[at] == captures[at].size()) continue;
      if (!earliest || captures[at][next[at]].time < captures[*earliest][next[*earliest]].time) {
        earliest = at;
      }
    }
    if (!earliest) return all;
    all.push_back(captures[*earliest][next[*earliest]++]);
  }
}

struct Sum {
  std::uint64_t packets = 0;
  std::uint64_t bytes = 0;

  friend bool operator==(const Sum&, const Sum&) = default;
};

Sum sumOf(const json& counters) {
  Sum sum;
  for (const json& counter : counters) {
    sum.packets += counter.at("packets").get<std::uint64_t>();
    sum.bytes += counter.at("bytes").get<std::uint64_t>();
  }
  return sum;
}

// A capture holds 32 bits of each of both numbers.
CaptureTime written(const CaptureTime& time) {
  return {static_cast<std::uint32_t>(time.seconds), static_cast<std::uint32_t>(time.nanoseconds)};
}

// Checks one output file, and adds its packets to the sum.
void checkOutput(const std::string& file, const Packets& arrived, Sum& left) {
  const std::string bytes = ZelAgent::readTextFile(file, "a capture");
  const std::uint32_t header[] = {0xa1b23c4d, 0x00040002, 0, 0, longestPacket, 101};
  must(bytes.compare(0, sizeof header,
                     std::string_view(reinterpret_cast<const char*>(header), sizeof header)) == 0,
       "what leaves is in a capture of raw IP with a clock of nanoseconds");
  const auto packets = packetsIn(file);
  must(packets && !packets->empty(), "an output is read back, and holds packets");
  auto from = arrived.begin();
  for (const CapturedPacket& packet : *packets) {
    ++left.packets;
    left.bytes += packet.ipPacket->size();
    must(packet.ipPacket->size() <= longestPacket, "no packet is longer than the longest");
    from = std::find_if(from, arrived.end(), [&](const CapturedPacket& candidate) {
      return written(candidate.time) == written(packet.time) && candidate.ipPacket &&
             candidate.ipPacket->size() >= packet.ipPacket->size();
    });
    must(from != arrived.end(), "packets leave in the order of arrival, at their times");
    ++from;
  }
}

void checkForwarded(const json& counters, const Packets& arrived) {
  const Sum left = sumOf(counters.at("vrfs"));
  const auto notIp = std::count_if(arrived.begin(), arrived.end(),
                                   [](const CapturedPacket& packet) { return !packet.ipPacket; });
  must(counters.at("notIp") == notIp, "frames without IP are counted");
  must(left.packets + sumOf(counters.at("drops")).packets + static_cast<std::uint64_t>(notIp) ==
           arrived.size(),
       "each packet is counted once");
  must(sumOf(counters.at("rules")).packets + static_cast<std::uint64_t>(notIp) <= arrived.size(),
       "a packet is counted for one rule at most");
  Sum written;
  for (const auto& file : outFolder().files())
    checkOutput(file, arrived, written);
  must(written == left, "what is counted as leaving is written");
}

void forward(const std::vector<std::string>& arguments, const std::vector<Packets>& captures,
             bool withEvents) {
  ZelAgent::ForwardOptions options;
  options.configuration = ZEL_EXAMPLES_DIR "/decap.json";
  if (withEvents) options.events = ZEL_EXAMPLES_DIR "/decap.events";
  options.captures = arguments;
  options.folder = outFolder().path();
  options.json = true;
  std::ostringstream out;
  std::ostringstream err;
  const ZelAgent::ExitStatus status = ZelAgent::forwardCaptures(options, out, err);
  if (captures.size() == arguments.size()) {
    must(status == ZelAgent::ExitStatus::success && err.str().empty(), "it is forwarded");
    checkForwarded(json::parse(out.str()), inOrder(captures));
    outFolder().clear();
    return;
  }
  must(status == ZelAgent::ExitStatus::badInput && out.str().empty(), "it is refused");
  must(err.str().ends_with('\n'), "a refusal is a line");
  Fuzz::checkError(err.str().substr(0, err.str().size() - 1), "error: /proc/self/fd/");
  must(outFolder().files().empty(), "a refusal leaves no output");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  FuzzedBytes input(data, size);
  const bool withEvents = input.flag();
  const std::size_t count = 1 + input.below(2);
  std::vector<std::string> arguments;
  std::vector<Packets> captures;  // those that are read
  std::vector<std::unique_ptr<Arriving>> arriving;
  while (arriving.size() < count) {
    arriving.push_back(std::make_unique<Arriving>(input));
    arguments.push_back(arriving.back()->argument());
    if (arriving.back()->packets()) captures.push_back(*arriving.back()->packets());
  }
  forward(arguments, captures, withEvents);
  return 0;
}
