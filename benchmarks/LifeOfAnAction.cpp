// An action gets its first user and loses it again, in tables with many other actions. The peer
// keeps the same state in two hash maps with keys of three strings and a byte.

#include <absl/container/flat_hash_map.h>

#include "benchmarks/Families.h"
#include "benchmarks/World.h"

namespace Benchmarks {
namespace {

using ZelVrfSelectionPolicy::VrfAction;

struct TextAction {
  std::string vrfName;
  std::string fallbackVrfName;
  std::string postDecapVrfName;
  unsigned char action;

  explicit TextAction(const VrfAction& of)
      : vrfName(of.vrfName().str()),
        fallbackVrfName(of.fallbackVrfName().str()),
        postDecapVrfName(of.postDecapVrfName().str()),
        action(static_cast<unsigned char>(of.action())) {}

  friend bool operator==(const TextAction&, const TextAction&) = default;
  template <class Hash>
  friend Hash AbslHashValue(Hash hash, const TextAction& of) {
    return Hash::combine(std::move(hash), of.vrfName, of.fallbackVrfName, of.postDecapVrfName,
                         of.action);
  }
};

struct TextStatus {
  unsigned char status = 0;
  unsigned char failureReason = 0;
  std::string failureDescription;
};

class TextChip {
 public:
  virtual ~TextChip() = default;
  virtual TextStatus createVrf(const TextAction& action) = 0;
  virtual void deleteVrf(const TextAction& action) = 0;
};

class CountingTextChip final : public TextChip {
 public:
  TextStatus createVrf(const TextAction& /*action*/) override {
    ++calls_;
    return {};
  }
  void deleteVrf(const TextAction& /*action*/) override { ++calls_; }

 private:
  std::uint64_t calls_ = 0;
};

class TextTables {
 public:
  explicit TextTables(const std::vector<VrfAction>& present) {
    for (const VrfAction& action : present)
      userIs(TextAction(action));
  }

  void userIs(const TextAction& action) {
    if (++users_[action] == 1) statuses_.insert_or_assign(action, chip_->createVrf(action));
  }
  void userDel(const TextAction& action) {
    const auto user = users_.find(action);
    if (--user->second != 0) return;
    chip_->deleteVrf(action);
    users_.erase(user);
    statuses_.erase(action);
  }

 private:
  std::unique_ptr<TextChip> chip_ = std::make_unique<CountingTextChip>();
  absl::flat_hash_map<TextAction, unsigned> users_;
  absl::flat_hash_map<TextAction, TextStatus> statuses_;
};

constexpr std::size_t lives = 1024;  // the number of different actions, used in turn

void measure(Report& report, std::size_t size) {
  const std::vector<VrfAction> present = actions(size, 1);
  const std::vector<VrfAction> coming = actions(lives, 2);
  const std::vector<TextAction> textComing(coming.begin(), coming.end());
  const World world(present);
  TextTables tables(present);

  Comparison("life of an action: count 0 to 1 to 0", size)
      .shouldNotGrow()
      .ours([&, i = std::size_t{0}](benchmark::State& state) mutable {
        for (auto _ : state) {
          const VrfAction& action = coming[i++ % lives];
          world.users->vrfRefCountInc(action, 1);
          world.users->vrfRefCountDec(action, 1);
        }
      })
      .beside("two absl::flat_hash_map of strings", ratioAtMost(0.7),
              [&, i = std::size_t{0}](benchmark::State& state) mutable {
                for (auto _ : state) {
                  const TextAction& action = textComing[i++ % lives];
                  tables.userIs(action);
                  tables.userDel(action);
                }
              })
      .measure(report);
}

}  // namespace

void lifeOfAnAction(Report& report) {
  for (const std::size_t size : sizes)
    measure(report, size);
}

}  // namespace Benchmarks
