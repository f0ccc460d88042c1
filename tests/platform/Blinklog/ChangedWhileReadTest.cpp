// Slots that a living process writes while the file is read are left out.
#include <fcntl.h>
#include <gmock/gmock.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "Blinklog/Ring.h"
#include "Blinklog/RingImage.h"
#include "tests/platform/Blinklog/RingFolder.h"

namespace Blinklog {
namespace {

constexpr std::size_t firstSlot = std::size_t{256} * 1024;
// Called once, after the first reading of a file with slots.
std::function<void()> afterFirstReading;

}  // namespace
}  // namespace Blinklog

// Replaces the function of the C library in this program.
extern "C" [[gnu::visibility("default")]] ssize_t pread(int file, void* to, std::size_t size,
                                                        off_t place) {
  const auto got = static_cast<ssize_t>(syscall(SYS_pread64, file, to, size, place));
  if (size > Blinklog::firstSlot && Blinklog::afterFirstReading) {
    std::exchange(Blinklog::afterFirstReading, nullptr)();
  }
  return got;
}

namespace Blinklog {
namespace {

using ::testing::ElementsAre;

class ChangedWhileRead : public ::testing::Test {
 protected:
  ChangedWhileRead() {
    ring_.fileIs(file_);
    for (std::uint32_t number = 0; number < 4; ++number)
      write(number);
  }
  ~ChangedWhileRead() override { afterFirstReading = nullptr; }

  void write(std::uint32_t number) {
    const SiteId site = siteIs({"/src/changed", 1, "write", 5, {"number ", "%u"}});
    ring_.write(site, std::vector<Argument>{{'u', number}});
  }
  std::vector<std::string> textsRead() const {
    std::vector<std::string> texts;
    const RingImage image(file_);
    EXPECT_FALSE(afterFirstReading) << "the file was read once";
    for (const Record& record : image.records())
      texts.push_back(record.text);
    return texts;
  }

  RingFolder folder_;
  std::string file_ = folder_.path("ring");
  Ring ring_{4};
};

TEST_F(ChangedWhileRead, ASlotWithAnotherMessageIsLeftOut) {
  afterFirstReading = [this] { write(4); };
  EXPECT_THAT(textsRead(), ElementsAre("number 1", "number 2", "number 3"));
  afterFirstReading = [] {};
  EXPECT_THAT(textsRead(), ElementsAre("number 1", "number 2", "number 3", "number 4"));
}

// Such a slot was read while its message was written.
TEST_F(ChangedWhileRead, ASlotWithOtherBytesOfTheSameMessageIsLeftOut) {
  afterFirstReading = [this] {
    const int file = open(file_.c_str(), O_WRONLY | O_CLOEXEC);
    constexpr off_t lastSlot = firstSlot + 3 * 256;
    EXPECT_EQ(pwrite(file, "\x09", 1, lastSlot + 24), 1);
    close(file);
  };
  EXPECT_THAT(textsRead(), ElementsAre("number 0", "number 1", "number 2"));
}

TEST_F(ChangedWhileRead, ASlotWhoseMessageIsBeingWrittenIsLeftOut) {
  std::unique_ptr<Ring::Message> begun;
  afterFirstReading = [&] {
    begun = std::make_unique<Ring::Message>(
        ring_, siteIs({"/src/changed", 1, "write", 5, {"number ", "%u"}}));
  };
  EXPECT_THAT(textsRead(), ElementsAre("number 1", "number 2", "number 3"));
}

}  // namespace
}  // namespace Blinklog
