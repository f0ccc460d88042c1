// Compares the library with the reference model over many random histories.
//
// The first seed is drawn in each run, or given by ZEL_TEST_SEED. ZEL_MODEL_SEED=n replays the
// history of that one seed. ZEL_TEST_PERCENT sets the number of histories.

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/mman.h>

#include <charconv>
#include <cstdlib>
#include <map>
#include <set>
#include <stdexcept>
#include <string_view>

#include "EventSource.h"
#include "History.h"
#include "Isolation.h"
#include "Report.h"
#include "testing/RandomRounds.h"
#include "testing/RandomSeed.h"

namespace VrfModel {
namespace {

constexpr unsigned shards = 8;
constexpr std::size_t eventsPerHistory = 500;
constexpr std::size_t histories = 320;
constexpr std::uint64_t firstSeed = 1;

// The seed to replay, 0 for none.
std::uint64_t replayedSeed() {
  const char* name = "ZEL_MODEL_SEED";
  const char* text = std::getenv(name);
  if (text == nullptr) return 0;
  const std::string_view digits(text);
  std::uint64_t number = 0;
  const auto [end, error] = std::from_chars(text, text + digits.size(), number);
  if (error == std::errc() && end == text + digits.size()) return number;
  throw std::invalid_argument(std::string(name) + "='" + text + "': expected a decimal number");
}

/// The history of one seed.
struct Drawn {
  explicit Drawn(std::uint64_t seed) {
    RandomChoices choices(seed);
    cast = castOf(choices);
    events = historyOf(cast, choices, eventsPerHistory);
  }
  Cast cast;
  std::vector<Event> events;
};

/// A number that a child process writes and its parent reads.
class SharedNumber {
 public:
  SharedNumber()
      : place_(mmap(nullptr, sizeof(std::uint64_t), PROT_READ | PROT_WRITE,
                    MAP_SHARED | MAP_ANONYMOUS, -1, 0)) {
    if (place_ == MAP_FAILED) throw std::bad_alloc();
  }
  SharedNumber(const SharedNumber&) = delete;
  SharedNumber& operator=(const SharedNumber&) = delete;
  ~SharedNumber() { munmap(place_, sizeof(std::uint64_t)); }

  [[nodiscard]] volatile std::uint64_t& operator*() const {
    return *static_cast<volatile std::uint64_t*>(place_);
  }

 private:
  void* place_;
};

// The seeds of one shard: every `shards`-th seed, or only the seed to replay.
std::vector<std::uint64_t> seedsOf(unsigned shard) {
  const std::uint64_t replayed = replayedSeed();
  if (replayed != 0) {
    return shard == 0 ? std::vector<std::uint64_t>{replayed} : std::vector<std::uint64_t>{};
  }
  std::vector<std::uint64_t> seeds;
  static const std::uint64_t first = ZelVrfSelectionPolicy::Testing::RandomSeed().value();
  const std::size_t count = ZelVrfSelectionPolicy::Testing::randomRounds(histories);
  for (std::uint64_t index = shard; index < count; index += shards)
    seeds.push_back(first + index);
  return seeds;
}

class Histories : public testing::TestWithParam<unsigned> {};

TEST_P(Histories, LibraryDoesWhatTheModelSays) {
  const std::vector<std::uint64_t> seeds = seedsOf(GetParam());
  const SharedNumber seed;
  RecordProperty("histories", std::to_string(seeds.size()));
  if (!seeds.empty()) RecordProperty("firstSeed", std::to_string(seeds.front()));

  constexpr std::chrono::milliseconds longestHistory{100};
  const auto limit = Waiting::Deadline::usual + longestHistory * seeds.size();
  const auto playAll = [&]() -> std::string {
    for (const std::uint64_t each : seeds) {
      *seed = each;
      const Drawn drawn(each);
      const auto difference = firstDifference(drawn.cast, drawn.events);
      if (difference) return difference->text;
    }
    return {};
  };
  const std::string failure = isolated(playAll, limit);

  if (failure.empty()) return;
  const Drawn drawn(*seed);
  ADD_FAILURE() << "the history of seed " << *seed << " (replay it with ZEL_MODEL_SEED=" << *seed
                << ") " << reportOf(drawn.cast, drawn.events, failure);
}

INSTANTIATE_TEST_SUITE_P(Shard, Histories, testing::Range(0U, shards));

// The ends of the first `count` histories that must stop the process in the way of `stop`.
std::vector<std::string> endsOfStopping(Stop stop, std::size_t count) {
  std::vector<std::string> ends;
  for (std::uint64_t seed = firstSeed; ends.size() < count; ++seed) {
    const Drawn drawn(seed);
    const std::string end = isolated([&]() -> std::string {
      return survives(drawn.cast, drawn.events, stop) ? "survived" : "";
    });
    if (!end.empty()) ends.push_back(end);
  }
  return ends;
}

TEST(HistoriesOfTheModel, StopTheProcessAtACountWithoutAResource) {
  EXPECT_THAT(endsOfStopping(Stop::invalidIncrement, 40),
              testing::Each(testing::AllOf(testing::HasSubstr("Invalid ref count increment"),
                                           testing::HasSubstr("died of signal 6"))));
}

TEST(HistoriesOfTheModel, StopTheProcessAtTheDeletionOfAResourceThatIsNotThere) {
  EXPECT_THAT(endsOfStopping(Stop::uncreatedDeletion, 40),
              testing::Each(testing::AllOf(
                  testing::HasSubstr("Trying to delete a vrf HW resource that has not been "
                                     "created yet. VRF:Value('ZelVrfSelectionPolicy::VrfAction'"),
                  testing::HasSubstr("died of signal 6"))));
}

/// The effects that a number of histories had.
struct Reached {
  std::size_t drawn = 0;
  std::size_t happened = 0;
  std::map<Kind, unsigned> effectsOfKind;
  std::set<unsigned> lines;
  std::set<Hook> hooks;
  std::set<Table> tables;

  void add(const Event& event, const Expected& expected) {
    ++happened;
    for (const Message& message : expected.messages.items())
      lines.insert(message.line);
    for (const HookCall& call : expected.hooks.items())
      hooks.insert(call.hook);
    for (const Notice& notice : expected.notices.items())
      tables.insert(notice.table);
    effectsOfKind[event.kind] += expected.messages.items().empty() ? 0 : 1;
  }
};

Reached reachedBy(std::uint64_t count) {
  Reached reached;
  for (std::uint64_t seed = firstSeed; seed < firstSeed + count; ++seed) {
    const Drawn drawn(seed);
    const auto witness = [&](const Event& event, const Expected& expected) {
      reached.add(event, expected);
    };
    const auto difference = firstDifference(drawn.cast, drawn.events, witness);
    EXPECT_FALSE(difference) << "seed " << seed << ": " << difference->text;
    reached.drawn += drawn.events.size();
  }
  return reached;
}

TEST(HistoriesOfTheModel, ReachEveryMessageHookAndTable) {
  const Reached reached = reachedBy(60);
  const std::set<unsigned> every{26,  35,  59,  69,  85,  130, 137, 149, 177, 201, 206,
                                 219, 227, 235, 242, 249, 257, 266, 278, 282, 289};
  EXPECT_EQ(reached.lines, every);
  EXPECT_EQ(reached.hooks.size(), 3U);
  EXPECT_EQ(reached.tables.size(), 2U);
}

TEST(HistoriesOfTheModel, HaveEventsOfEveryKindTakeEffectAndPassOverFew) {
  Reached reached = reachedBy(60);
  for (std::size_t kind = 0; kind < kinds; ++kind) {
    const bool isSwitch = static_cast<Kind>(kind) == Kind::topActive ||
                          static_cast<Kind>(kind) == Kind::machineActive;
    if (isSwitch) continue;
    EXPECT_GT(reached.effectsOfKind[static_cast<Kind>(kind)], 0U) << "kind " << kind;
  }
  EXPECT_GT(reached.happened * 100, reached.drawn * 80);
  RecordProperty("passedOver", std::to_string(reached.drawn - reached.happened));
}

}  // namespace
}  // namespace VrfModel
