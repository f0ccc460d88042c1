// One VRF changes that 16 actions name, in tables with many other actions. One peer is a bare loop
// over these 16. The other is a walk over the whole table that compares three strings. Sixteen such
// VRFs, spread over the table, are refreshed in turn.

#include <unordered_map>

#include "benchmarks/Families.h"
#include "benchmarks/World.h"

namespace Benchmarks {
namespace {

using ZelVrfSelectionPolicy::HwStatus;
using ZelVrfSelectionPolicy::VrfAction;

constexpr unsigned namingEach = 16;
constexpr unsigned changingVrfs = 16;
constexpr std::size_t sizeOfWalk = 100'000;

std::vector<L3::VrfName> changingNames() {
  std::vector<L3::VrfName> names;
  for (unsigned i = 0; i < changingVrfs; ++i)
    names.emplace_back(
        std::string("customer-network-change").append(1, static_cast<char>('a' + i)));
  return names;
}

VrfAction naming(const L3::VrfName& vrf, unsigned number, Draw& draw) {
  VrfAction action(number % 3 == 0 ? vrf : draw.vrf(), PolicyMap::ActionType::vrf);
  action.fallbackVrfNameIs(number % 3 == 1 ? vrf : draw.vrf());
  action.postDecapVrfNameIs(number % 3 == 2 ? vrf : draw.vrf());
  return action;
}

bool names(const VrfAction& action, const L3::VrfName& vrf) {
  return action.vrfName() == vrf || action.fallbackVrfName() == vrf ||
         action.postDecapVrfName() == vrf;
}

/// The actions of a table of that size, in the order of their insertion.
std::vector<VrfAction> presentActions(std::size_t size, const std::vector<L3::VrfName>& changing) {
  std::vector<VrfAction> present = actions(size - namingEach * changingVrfs, 1);
  Draw draw(3);
  for (const L3::VrfName& vrf : changing) {
    for (unsigned i = 0; i < namingEach; ++i)
      present.push_back(naming(vrf, i, draw));
  }
  return shuffled(std::move(present), 4);
}

std::vector<std::vector<BareEntry>> bareEntries(const std::vector<VrfAction>& present,
                                                const std::vector<L3::VrfName>& changing) {
  std::vector<std::vector<BareEntry>> entries;
  for (const L3::VrfName& vrf : changing) {
    std::vector<BareEntry>& ofVrf = entries.emplace_back();
    for (const VrfAction& action : present) {
      if (names(action, vrf)) ofVrf.push_back({action, HwStatus()});
    }
  }
  return entries;
}

struct TextKey {
  std::string vrfName;
  std::string fallbackVrfName;
  std::string postDecapVrfName;
  explicit TextKey(const VrfAction& of)
      : vrfName(of.vrfName().str()),
        fallbackVrfName(of.fallbackVrfName().str()),
        postDecapVrfName(of.postDecapVrfName().str()) {}
  friend bool operator==(const TextKey&, const TextKey&) = default;
  [[nodiscard]] bool has(const std::string& name) const {
    return vrfName == name || fallbackVrfName == name || postDecapVrfName == name;
  }
};

struct TextKeyHash {
  std::size_t operator()(const TextKey& key) const {
    const std::hash<std::string> hash;
    return hash(key.vrfName) * 31 + hash(key.fallbackVrfName) * 7 + hash(key.postDecapVrfName);
  }
};

using TextTable = std::unordered_map<TextKey, BareEntry, TextKeyHash>;

TextTable textTable(const std::vector<VrfAction>& present) {
  TextTable table;
  for (const VrfAction& action : present)
    table.emplace(TextKey(action), BareEntry{action, HwStatus()});
  return table;
}

void walk(TextTable& table, ZelVrfSelectionPolicy::VrfHelper& chip, BareRing& ring,
          const std::string& vrf) {
  for (auto& [key, entry] : table) {
    if (!key.has(vrf)) continue;
    ring.write(1, vrf);
    HwStatus outcome = chip.updateVrf(entry.action);
    if (!(outcome == entry.status)) entry.status = std::move(outcome);
  }
}

void measure(Report& report, std::size_t size) {
  const std::vector<L3::VrfName> changing = changingNames();
  const std::vector<VrfAction> present = presentActions(size, changing);
  const World world(present);
  auto entries = bareEntries(present, changing);
  BareRing ring;

  Comparison comparison("refresh of one VRF named by 16 actions", size);
  comparison.shouldNotGrow()
      .ours([&, i = 0U](benchmark::State& state) mutable {
        for (auto _ : state)
          world.vrfSm->updateAllVrfActions(changing[i++ % changingVrfs]);
      })
      .beside("bare loop over the 16", ratioAtMost(2.0),
              [&, i = 0U](benchmark::State& state) mutable {
                for (auto _ : state) {
                  const unsigned vrf = i++ % changingVrfs;
                  ring.write(2, changing[vrf].bytes());
                  reprogram(entries[vrf], *world.chip, ring, changing[vrf].bytes());
                }
              });
  TextTable table;
  if (size == sizeOfWalk) {
    table = textTable(present);
    comparison.beside("walk over std::unordered_map", timesFaster(1000),
                      [&, i = 0U](benchmark::State& state) mutable {
                        for (auto _ : state)
                          walk(table, *world.chip, ring, changing[i++ % changingVrfs].str());
                      });
  }
  comparison.measure(report);
}

}  // namespace

void refresh(Report& report) {
  for (const std::size_t size : sizes)
    measure(report, size);
}

}  // namespace Benchmarks
