// The memory of 100,000 actions in both tables and the index by VRF. The peer is two hash maps with
// keys of three strings and a byte. The measure is the memory that the C library's allocator has in
// use, with its overhead, after minus before.

#include <malloc.h>

#include <memory>
#include <unordered_map>

#include "benchmarks/Families.h"
#include "benchmarks/World.h"

namespace Benchmarks {
namespace {

using ZelVrfSelectionPolicy::HwStatus;
using ZelVrfSelectionPolicy::VrfAction;

constexpr std::size_t actionCount = 100'000;

// Names are shared, so an action is three references and a byte. It is in both tables, with a count
// in one and an outcome in the other.
constexpr std::size_t fieldBytes =
    2 * (3 * sizeof(L3::VrfName) + 1) + sizeof(unsigned) + 2 + sizeof(Velo::String);

struct TextKey {
  std::string vrfName;
  std::string fallbackVrfName;
  std::string postDecapVrfName;
  unsigned char action;
  friend bool operator==(const TextKey&, const TextKey&) = default;
};

struct TextKeyHash {
  std::size_t operator()(const TextKey& key) const {
    const std::hash<std::string> hash;
    return hash(key.vrfName) * 31 + hash(key.fallbackVrfName) * 7 + hash(key.postDecapVrfName);
  }
};

struct TextStatus {
  unsigned char status = 0;
  unsigned char failureReason = 0;
  std::string failureDescription;
};

struct TextTables {
  explicit TextTables(const std::vector<VrfAction>& present) {
    for (const VrfAction& action : present) {
      const TextKey key{action.vrfName().str(), action.fallbackVrfName().str(),
                        action.postDecapVrfName().str(),
                        static_cast<unsigned char>(action.action())};
      users.emplace(key, 1U);
      statuses.emplace(key, TextStatus());
    }
  }
  std::unordered_map<TextKey, unsigned, TextKeyHash> users;
  std::unordered_map<TextKey, TextStatus, TextKeyHash> statuses;
};

double allocatedBytes() {
  const struct mallinfo2 now = mallinfo2();
  return static_cast<double>(now.uordblks + now.hblkhd);
}

/// The bytes per action of a `State` with these actions.
template <class State>
std::vector<double> bytesOf(const std::vector<VrfAction>& present) {
  const double before = allocatedBytes();
  const auto state = std::make_unique<State>(present);
  return {(allocatedBytes() - before) / static_cast<double>(actionCount)};
}

}  // namespace

void memory(Report& report) {
  const std::vector<VrfAction> present = actions(actionCount, 1);
  Row row;
  row.work = "memory per action, both tables and the index";
  row.size = actionCount;
  row.unit = "B";
  row.ours = bytesOf<World>(present);
  row.beside.push_back(
      {"two std::unordered_map of strings", ratioAtMost(1.0 / 3), bytesOf<TextTables>(present)});
  row.beside.push_back({"sum of the fields", noTarget(), {static_cast<double>(fieldBytes)}});
  report.rowIs(std::move(row));
}

}  // namespace Benchmarks
