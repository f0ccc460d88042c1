// The file of a ring is truncated while the ring is used. The next store raises SIGBUS.
#include <gmock/gmock.h>

#include <csignal>
#include <filesystem>
#include <string>
#include <vector>

#include "Blinklog/Ring.h"
#include "tests/platform/Blinklog/RingFolder.h"

namespace Blinklog {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

constexpr std::size_t truncatedSlots = 64;  // four pages

Ring* truncatedRing = nullptr;
volatile sig_atomic_t busErrors = 0;

void leaveTruncatedFile(int /*signal*/, siginfo_t* info, void* /*context*/) {
  busErrors = busErrors + 1;
  if (!truncatedRing->leaveFile(info->si_addr)) std::abort();
}

class TruncatedRingFile : public ::testing::Test {
 protected:
  TruncatedRingFile() {
    ring_.fileIs(file_);
    truncatedRing = &ring_;
    busErrors = 0;
    struct sigaction action {};
    action.sa_sigaction = &leaveTruncatedFile;
    action.sa_flags = SA_SIGINFO;
    sigaction(SIGBUS, &action, &before_);
  }
  ~TruncatedRingFile() override { sigaction(SIGBUS, &before_, nullptr); }

  void write(unsigned from, unsigned to) {
    for (unsigned value = from; value < to; ++value)
      ring_.write(numbered_, std::vector<Argument>{{'u', value}});
  }
  [[nodiscard]] std::vector<std::string> texts() const {
    std::vector<std::string> texts;
    for (const Record& record : ring_.dump())
      texts.push_back(record.text);
    return texts;
  }
  void truncateTo(std::uintmax_t bytes) const { std::filesystem::resize_file(file_, bytes); }

  const SiteId numbered_ = siteIs({"/src/truncated", 1, "write", 5, {"message ", "%u"}});
  RingFolder folder_;
  std::string file_ = folder_.path("ring");
  Ring ring_{truncatedSlots};
  struct sigaction before_ {};
};

TEST_F(TruncatedRingFile, LosesTheMessagesSoFarAndKeepsTheNextOnes) {
  write(0, 3);
  truncateTo(0);
  write(3, 5);
  EXPECT_THAT(texts(), ElementsAre("message 3", "message 4"));
  EXPECT_EQ(busErrors, 1);
}

TEST_F(TruncatedRingFile, IsLeftAsAWholeWhenItsEndIsGone) {
  write(0, 3);
  truncateTo(256 * 1024 + 4096);
  write(3, 20);
  EXPECT_EQ(texts().size(), 4U);
  EXPECT_EQ(texts().front(), "message 16");
  EXPECT_EQ(busErrors, 1);
}

TEST_F(TruncatedRingFile, LeavesOutTheMessageThatWasPartlyWritten) {
  {
    Ring::Message message(ring_, siteIs({"/src/truncated", 2, "write", 5, {"%s", " and ", "%u"}}));
    message.put({'s', 0, "the beginning"});
    truncateTo(0);
    message.put({'u', 7});
  }
  write(1, 2);
  EXPECT_THAT(texts(), ElementsAre("message 1"));
}

TEST_F(TruncatedRingFile, MayGetNewSitesAfterwards) {
  truncateTo(0);
  const SiteId late = siteIs({"/src/truncated", 3, "write", 5, {"of a late site"}});
  ring_.write(late, {});
  EXPECT_THAT(texts(), ElementsAre("of a late site"));
  EXPECT_EQ(busErrors, 1);
}

TEST_F(TruncatedRingFile, IsNotLeftForAnAddressOutsideOfIt) {
  write(0, 2);
  int elsewhere = 0;
  EXPECT_FALSE(ring_.leaveFile(nullptr));
  EXPECT_FALSE(ring_.leaveFile(&elsewhere));
  EXPECT_THAT(texts(), ElementsAre("message 0", "message 1"));
}

TEST_F(TruncatedRingFile, CannotBeLeftByARingThatHasNone) {
  const Ring inMemory(1);
  EXPECT_FALSE(Ring(1).leaveFile(&inMemory));
}

}  // namespace
}  // namespace Blinklog
