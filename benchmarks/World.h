#pragma once

#include <algorithm>
#include <cstdint>
#include <random>
#include <string>
#include <string_view>
#include <vector>

#include "ZelVrfSelectionPolicy/tables/VrfHelper.h"
#include "ZelVrfSelectionPolicy/tables/VrfHwConfig.h"
#include "ZelVrfSelectionPolicy/vrf/VrfSm.h"

namespace Benchmarks {

// The inputs of all benchmarks: 4,096 VRFs with names of 24 bytes, actions that name three random
// VRFs, and a chip whose hooks only count. The random numbers are the same in every run.

inline constexpr unsigned vrfCount = 4096;
inline constexpr std::size_t nameBytes = 24;

/// The table sizes for costs that should not grow.
inline constexpr std::size_t sizes[] = {1000, 10'000, 100'000, 1'000'000};

/// The names of the VRFs.
[[nodiscard]] const std::vector<L3::VrfName>& vrfNames();

/// Random numbers that are the same in every run.
class Draw {
 public:
  explicit Draw(unsigned seed) : engine_(seed) {}
  /// A number below `end`.
  [[nodiscard]] unsigned below(unsigned end) {
    return static_cast<unsigned>((std::uint64_t{engine_()} * end) >> 32U);
  }
  [[nodiscard]] const L3::VrfName& vrf() { return vrfNames()[below(vrfCount)]; }
  [[nodiscard]] ZelVrfSelectionPolicy::VrfAction action();

 private:
  std::mt19937 engine_;
};

/// `count` different actions. Two seeds have almost no action in common.
[[nodiscard]] std::vector<ZelVrfSelectionPolicy::VrfAction> actions(std::size_t count,
                                                                    unsigned seed);

/// `items` in random order.
template <class Item>
[[nodiscard]] std::vector<Item> shuffled(std::vector<Item> items, unsigned seed) {
  Draw draw(seed);
  for (std::size_t left = items.size(); left > 1; --left)
    std::swap(items[left - 1], items[draw.below(static_cast<unsigned>(left))]);
  return items;
}

/// A chip whose hooks only count.
class CountingChip final : public ZelVrfSelectionPolicy::VrfHelper {
 public:
  using VrfAction = ZelVrfSelectionPolicy::VrfAction;
  using HwStatus = ZelVrfSelectionPolicy::HwStatus;

  CountingChip() : VrfHelper("counter", nullptr, nullptr, nullptr) {}
  HwStatus createVrf(const VrfAction& /*action*/) override { return counted(); }
  HwStatus updateVrf(const VrfAction& /*action*/) override { return counted(); }
  void deleteVrf(const VrfAction& /*action*/) override { ++calls_; }

  [[nodiscard]] std::uint64_t calls() const noexcept { return calls_; }

 private:
  HwStatus counted() noexcept {
    ++calls_;
    return {};
  }

  std::uint64_t calls_ = 0;
};

/// The state machine with its tables and inputs.
struct World {
  using VrfHwConfig = ZelVrfSelectionPolicy::VrfHwConfig;
  using VrfHwStatus = ZelVrfSelectionPolicy::VrfHwStatus;

  /// A world whose tables hold `present`, one user each.
  explicit World(const std::vector<ZelVrfSelectionPolicy::VrfAction>& present = {});

  Mox::Ptr<VrfHwConfig> users = VrfHwConfig::VrfHwConfigIs();
  Mox::Ptr<VrfHwStatus> statuses = VrfHwStatus::VrfHwStatusIs();
  Mox::Ptr<ZelVrfSelectionPolicy::VrfHelper> chip = Mox::makePtr<CountingChip>();
  Mox::Ptr<VrfSelectionPolicy::VrfSelectionFallbackVrf> fallback =
      VrfSelectionPolicy::VrfSelectionFallbackVrf::VrfSelectionFallbackVrfIs();
  Mox::Ptr<Routing::Hardware::RouteStatus> routes = Routing::Hardware::RouteStatus::RouteStatusIs();
  Mox::Ptr<Routing6::Hardware::RouteStatus> routes6 =
      Routing6::Hardware::RouteStatus::RouteStatusIs();
  Mox::Ptr<ZelVrfSelectionPolicy::VrfSm> vrfSm;
};

/// A ring that only copies bytes: the lower bound for the cost of a message.
class BareRing {
 public:
  void write(std::uint32_t site, std::string_view text) noexcept {
    Slot& slot = slots_[written_ % slotCount];
    slot.site = site;
    slot.size = static_cast<std::uint32_t>(sizeof(std::uint32_t) + text.size());
    slot.textSize = static_cast<std::uint32_t>(text.size());
    std::copy_n(text.data(), std::min(text.size(), sizeof slot.text), slot.text);
    slot.sequence = written_++;
  }

 private:
  struct Slot {
    std::uint64_t sequence;
    std::uint32_t site;
    std::uint32_t size;
    std::uint32_t textSize;
    char text[236];
  };
  static_assert(sizeof(Slot) == 256);

  static constexpr std::size_t slotCount = 4096;

  std::vector<Slot> slots_{slotCount};
  std::uint64_t written_ = 0;
};

/// An action with its record, for bare loops.
struct BareEntry {
  ZelVrfSelectionPolicy::VrfAction action;
  ZelVrfSelectionPolicy::HwStatus status;
};

/// Makes the chip program `entries`, and stores the outcomes: the lower bound for a refresh.
void reprogram(std::vector<BareEntry>& entries, ZelVrfSelectionPolicy::VrfHelper& chip,
               BareRing& ring, std::string_view text);

}  // namespace Benchmarks
