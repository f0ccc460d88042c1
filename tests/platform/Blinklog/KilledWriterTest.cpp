// Whatever a process was doing when it was killed, its last messages are in the file.
#include <gmock/gmock.h>
#include <sys/mman.h>
#include <sys/wait.h>
#include <unistd.h>

#include <atomic>
#include <chrono>
#include <csignal>
#include <optional>
#include <random>
#include <string>
#include <thread>

#include "Blinklog/Ring.h"
#include "Blinklog/RingImage.h"
#include "testing/RandomSeed.h"
#include "tests/platform/Blinklog/RingFolder.h"
#include "tests/waiting/ChildProcess.h"
#include "tests/waiting/Wait.h"

namespace Blinklog {
namespace {

constexpr std::size_t writtenSlots = 64;

// What the writer says of itself, where it is read when the writer is dead.
struct Progress {
  std::atomic<std::uint64_t> begun;  // messages, as all of these
  std::atomic<std::uint64_t> ended;
};

class SharedProgress final {
 public:
  SharedProgress()
      : memory_(mmap(nullptr, sizeof(Progress), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS,
                     -1, 0)) {
    EXPECT_NE(memory_, MAP_FAILED);
  }
  SharedProgress(const SharedProgress&) = delete;
  SharedProgress& operator=(const SharedProgress&) = delete;
  ~SharedProgress() { munmap(memory_, sizeof(Progress)); }
  Progress* operator->() const { return static_cast<Progress*>(memory_); }

 private:
  void* memory_;
};

// Of another length each.
std::string nameOf(std::uint64_t number) {
  return std::string(number % 100, static_cast<char>('a' + number % 26));
}

SiteId numbered() {
  return siteIs({"/src/killed", 1, "write", 5, {"message ", "%u", " of ", "%s", ";", "%u"}});
}

std::string textOfMessage(std::uint64_t number) {
  const std::string digits = std::to_string(number);
  return "message " + digits + " of " + nameOf(number) + ';' + digits;
}

class KilledWriter : public ::testing::Test {
 protected:
  // A process that does this and nothing else.
  template <class Work>
  static Waiting::ChildProcess start(Work work) {
    Waiting::ChildProcess process(fork());
    if (process.id() == 0) {
      work();
      _exit(0);
    }
    EXPECT_GT(process.id(), 0);
    return process;
  }
  Waiting::ChildProcess startWriter(const SharedProgress& progress) const {
    progress->begun = progress->ended = 0;
    return start([&] {
      Ring ring(writtenSlots);
      ring.fileIs(file_);
      const SiteId site = numbered();
      for (std::uint64_t number = 0;; ++number) {
        const std::string name = nameOf(number);
        const auto narrow = static_cast<std::uint32_t>(number);
        progress->begun = number + 1;
        ring.write(site, std::array<Argument, 3>{{{'u', narrow}, {'s', 0, name}, {'u', narrow}}});
        progress->ended = number + 1;
      }
    });
  }
  // Returns whether the writer has written so many messages before the deadline.
  static bool hasWritten(const SharedProgress& progress, std::uint64_t messages) {
    return Waiting::waitUntil(
        std::to_string(messages) + " messages of the writer",
        [&] { return progress->ended >= messages; },
        [&] { return std::to_string(progress->ended) + " messages"; });
  }
  static void expectEndBySignal(Waiting::ChildProcess& process) {
    const std::optional<int> status = process.end();
    ASSERT_TRUE(status) << "the writer did not end";
    ASSERT_TRUE(WIFSIGNALED(*status));
  }
  static void kill(Waiting::ChildProcess& process) {
    ASSERT_TRUE(process.signal(SIGKILL));
    expectEndBySignal(process);
  }
  // Everything that was written is there, without a gap, as it was written.
  static void checkRun(const std::vector<Record>& records) {
    for (std::size_t i = 0; i < records.size(); ++i) {
      ASSERT_EQ(records[i].sequence, records.front().sequence + i);
      ASSERT_EQ(records[i].text, textOfMessage(records[i].sequence));
    }
  }

  RingFolder folder_;
  std::string file_ = folder_.path("ring");
};

TEST_F(KilledWriter, AtAnyMomentLeavesItsLastMessagesInOrderAndWhole) {
  const ZelVrfSelectionPolicy::Testing::RandomSeed seed;
  SCOPED_TRACE(seed.replay());
  std::mt19937 random(seed.value());
  const SharedProgress progress;
  int cutShort = 0;
  constexpr int kills = 40;
  for (int round = 0; round < kills; ++round) {
    Waiting::ChildProcess writer = startWriter(progress);
    ASSERT_TRUE(hasWritten(progress, writtenSlots));
    std::this_thread::sleep_for(std::chrono::microseconds(random() % 2000));
    kill(writer);
    const RingImage image(file_);
    checkRun(image.records());
    ASSERT_GE(image.records().size(), writtenSlots - 1);
    const std::uint64_t last = image.records().back().sequence + 1;
    EXPECT_GE(last, progress->ended);
    EXPECT_LE(last, progress->begun);
    cutShort += image.records().size() < writtenSlots ? 1 : 0;
  }
  std::printf("%d kills, %d of them in the middle of a message\n", kills, cutShort);
}

TEST_F(KilledWriter, InTheMiddleOfAMessageLeavesThatOneOut) {
  Waiting::ChildProcess writer = start([this] {
    Ring ring(writtenSlots);
    ring.fileIs(file_);
    for (std::uint32_t number = 0; number < writtenSlots + 3; ++number) {
      const std::string name = nameOf(number);
      ring.write(numbered(),
                 std::array<Argument, 3>{{{'u', number}, {'s', 0, name}, {'u', number}}});
    }
    Ring::Message begun(ring, numbered());
    begun.put({'u', 67});
    ::kill(getpid(), SIGKILL);
  });
  expectEndBySignal(writer);
  const RingImage image(file_);
  checkRun(image.records());
  ASSERT_EQ(image.records().size(), writtenSlots - 1);
  EXPECT_EQ(image.records().front().sequence, 4U);
  EXPECT_EQ(image.records().back().sequence, writtenSlots + 2);
}

TEST_F(KilledWriter, MayBeReadWhileItLives) {
  const SharedProgress progress;
  Waiting::ChildProcess writer = startWriter(progress);
  ASSERT_TRUE(hasWritten(progress, writtenSlots));
  std::size_t told = 0;
  for (int round = 0; round < 200; ++round) {
    const std::uint64_t before = progress->ended;
    const RingImage image(file_);
    const std::uint64_t after = progress->begun;
    for (const Record& record : image.records()) {
      ASSERT_EQ(record.text, textOfMessage(record.sequence));
      ASSERT_GE(record.sequence + writtenSlots + 1, before);
      ASSERT_LT(record.sequence, after);
    }
    told += image.records().size();
  }
  kill(writer);
  const RingImage image(file_);
  ASSERT_GE(image.records().size(), writtenSlots - 1);
  checkRun(image.records());
  std::printf("%zu messages told while they were overwritten\n", told);
}

TEST_F(KilledWriter, GivesTheFileFree) {
  const SharedProgress progress;
  Waiting::ChildProcess writer = startWriter(progress);
  ASSERT_TRUE(hasWritten(progress, 1));
  Ring ring(writtenSlots);
  EXPECT_THROW(ring.fileIs(file_), RingFileError);
  kill(writer);
  ring.fileIs(file_);
  EXPECT_TRUE(RingImage(file_).records().empty());
  const RingImage previous(file_ + ".previous");
  EXPECT_GE(previous.records().back().sequence + 1, progress->ended);
  checkRun(previous.records());
}

}  // namespace
}  // namespace Blinklog
