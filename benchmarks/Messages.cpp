// One message with a name and a number to the ring, compared with the ring of a logging library and
// with a bare copy of 64 bytes. Also one text message whose level is off, compared with a branch.

#include <spdlog/sinks/ringbuffer_sink.h>
#include <spdlog/spdlog.h>

#include <array>
#include <cstring>

#include "Duolog/Message.h"
#include "Mox/TraceHelper.h"
#include "benchmarks/Families.h"
#include "benchmarks/World.h"

namespace Benchmarks {
namespace {

constexpr std::size_t ringSlots = 4096;
constexpr const char* path = "/src/benchmarks/Messages";

const Mox::TraceHandle& handle() {
  static const Mox::TraceHandle made("Benchmarks", 0U);
  return made;
}

const Duolog::Message assigned({&handle, path}, 5, 1, "assign",
                               {"Benchmarks::", "assign", ": VRF:", "%s", " vrfId:", "%u"});

/// Copies 64 bytes per call, to slots of the same size as those of the ring.
class BareCopy {
 public:
  void copy(const void* bytes) noexcept {
    std::memcpy(slots_[written_++ % ringSlots].data(), bytes, 64);
  }

 private:
  std::vector<std::array<char, 256>> slots_{ringSlots};
  std::uint64_t written_ = 0;
};

void ringMessage(Report& report) {
  const std::string name = vrfNames()[7].str();
  auto sink = std::make_shared<spdlog::sinks::ringbuffer_sink_st>(ringSlots);
  spdlog::logger logger("benchmarks", sink);
  BareCopy bare;
  std::array<char, 64> bytes{};

  Comparison("one ring-buffer message with a name and a number")
      .ours([&, number = 0U](benchmark::State& state) mutable {
        for (auto _ : state)
          assigned(std::string_view(name), ++number);
      })
      .beside("spdlog ring-buffer sink", timesFaster(10),
              [&, number = 0U](benchmark::State& state) mutable {
                for (auto _ : state)
                  logger.info("Benchmarks::assign: VRF:{} vrfId:{}", name, ++number);
              })
      .beside("bare copy of 64 bytes", noTarget(),
              [&](benchmark::State& state) {
                for (auto _ : state) {
                  benchmark::DoNotOptimize(bytes);
                  bare.copy(bytes.data());
                  benchmark::ClobberMemory();
                }
              })
      .measure(report);
}

void textMessage(Report& report) {
  const std::string name = vrfNames()[7].str();
  const Mox::TraceHandle& off = handle();
  bool isOn = false;
  benchmark::DoNotOptimize(isOn);
  unsigned taken = 0;

  Comparison("one text message whose level is off")
      .ours([&](benchmark::State& state) {
        for (auto _ : state) {
          benchmark::ClobberMemory();
          if (off.isOn(5)) {
            Mox::TraceHelper(off, 5, path, 1, "assign").stream() << "VRF:" << name;
          }
        }
      })
      .beside("inlined branch", ratioAtMost(1.2),
              [&](benchmark::State& state) {
                for (auto _ : state) {
                  benchmark::ClobberMemory();
                  if (isOn) benchmark::DoNotOptimize(++taken);
                }
              })
      .measure(report);
}

}  // namespace

void messages(Report& report) {
  ringMessage(report);
  textMessage(report);
}

}  // namespace Benchmarks
