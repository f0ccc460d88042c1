// A ring in a file, and what becomes of the files.
#include <fcntl.h>
#include <gmock/gmock.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <csignal>
#include <ctime>
#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

#include "Blinklog/Ring.h"
#include "Blinklog/RingImage.h"
#include "tests/platform/Allocations.h"
#include "tests/platform/Blinklog/RingFolder.h"

namespace Blinklog {
namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;

SiteId site(std::vector<std::string> fragments, unsigned line = 10) {
  return siteIs({"/src/ring", line, "write", 5, std::move(fragments)});
}

std::vector<std::string> textsOf(const std::vector<Record>& records) {
  std::vector<std::string> texts;
  for (const Record& record : records)
    texts.push_back(record.text);
  return texts;
}

std::vector<std::string> textsIn(const std::string& path) {
  return textsOf(RingImage(path).records());
}

class RingFileTest : public ::testing::Test {
 protected:
  static void write(Ring& ring, unsigned from, unsigned to) {
    const SiteId numbered = site({"message ", "%u"});
    for (unsigned value = from; value < to; ++value)
      ring.write(numbered, std::vector<Argument>{{'u', value}});
  }
  // One process' life: a ring in the file with some messages.
  void live(unsigned from, unsigned to) const {
    Ring ring(4);
    ring.fileIs(file_);
    write(ring, from, to);
  }
  // What keeps a ring from the file; nothing of the folder may have changed.
  std::string refusal() const { return refusalOf(file_); }
  // Likewise where a file cannot grow beyond `bytes`.
  std::string refusalWithRoomFor(rlim_t bytes) const {
    struct rlimit before {};
    EXPECT_EQ(getrlimit(RLIMIT_FSIZE, &before), 0);
    const auto handler = std::signal(SIGXFSZ, SIG_IGN);
    const rlimit little{bytes, before.rlim_max};
    EXPECT_EQ(setrlimit(RLIMIT_FSIZE, &little), 0);
    std::string problem = refusal();
    EXPECT_EQ(setrlimit(RLIMIT_FSIZE, &before), 0);
    std::signal(SIGXFSZ, handler);
    return problem;
  }
  std::string refusalOf(const std::string& path) const {
    const std::vector<std::string> before = folder_.names();
    Ring ring(4);
    write(ring, 0, 2);
    std::string problem;
    try {
      ring.fileIs(path);
      ADD_FAILURE() << path << " was taken";
    } catch (const RingFileError& error) {
      EXPECT_EQ(error.what(), error.path() + ": " + error.problem());
      problem = error.what();
    }
    EXPECT_EQ(folder_.names(), before);
    write(ring, 2, 3);
    EXPECT_THAT(textsOf(ring.dump()), ElementsAre("message 0", "message 1", "message 2"));
    return problem;
  }

  RingFolder folder_;
  std::string file_ = folder_.path("ring");
};

TEST_F(RingFileTest, TellsWhatTheRingTells) {
  Ring ring(4);
  ring.fileIs(file_);
  const std::string bytes("a\0b\n\xff%s", 7);
  const SiteId mixed = siteIs({"/src/other", 77, "mix", 7, {"<", "%s", "|", "%u", "%b", ">"}});
  ring.write(mixed, std::vector<Argument>{{'s', 0, bytes}, {'u', 4294967295U}, {'b', 1}});
  ring.write(site({"%s", "|", "%u"}),
             std::vector<Argument>{{'s', 0, std::string(1000, 'x')}, {'u', 7}});
  const RingImage image(file_);
  ASSERT_EQ(image.records().size(), 2U);
  const Record& first = image.records()[0];
  EXPECT_EQ(first.text, "<" + bytes + "|4294967295true>");
  EXPECT_EQ(first.sequence, 0U);
  EXPECT_EQ(*first.site, (Site{"/src/other", 77, "mix", 7, {"<", "%s", "|", "%u", "%b", ">"}}));
  EXPECT_TRUE(image.records()[1].text.ends_with("x...|..."));
  EXPECT_EQ(textsIn(file_), textsOf(ring.dump()));
}

TEST_F(RingFileTest, HoldsTheLastMessagesOldestFirst) {
  Ring ring(4);
  ring.fileIs(file_);
  EXPECT_THAT(textsIn(file_), IsEmpty());
  write(ring, 0, 3);
  EXPECT_THAT(textsIn(file_), ElementsAre("message 0", "message 1", "message 2"));
  write(ring, 3, 1003);
  EXPECT_THAT(textsIn(file_),
              ElementsAre("message 999", "message 1000", "message 1001", "message 1002"));
  EXPECT_EQ(RingImage(file_).records().back().sequence, 1002U);
}

TEST_F(RingFileTest, TakesAlongWhatTheRingHeldBefore) {
  Ring ring(4);
  write(ring, 0, 6);
  ring.fileIs(file_);
  EXPECT_EQ(textsIn(file_), textsOf(ring.dump()));
  write(ring, 6, 7);
  EXPECT_THAT(textsIn(file_), ElementsAre("message 3", "message 4", "message 5", "message 6"));
  EXPECT_EQ(textsIn(file_), textsOf(ring.dump()));
}

TEST_F(RingFileTest, KnowsSitesThatAreRegisteredLater) {
  Ring ring(4);
  ring.fileIs(file_);
  ring.write(site({"registered later"}, 11), {});
  EXPECT_THAT(textsIn(file_), ElementsAre("registered later"));
}

TEST_F(RingFileTest, TellsTheProcessAndWhenItBegan) {
  const auto before = static_cast<std::uint64_t>(std::time(nullptr));
  live(0, 1);
  const RingImage image(file_);
  EXPECT_EQ(image.process(), static_cast<std::uint32_t>(getpid()));
  EXPECT_GE(image.madeAt(), before);
  EXPECT_LE(image.madeAt(), static_cast<std::uint64_t>(std::time(nullptr)));
}

TEST_F(RingFileTest, IsEmptyOnceTheRingIsCleared) {
  Ring ring(4);
  ring.fileIs(file_);
  write(ring, 0, 3);
  ring.clear();
  EXPECT_THAT(textsIn(file_), IsEmpty());
  write(ring, 3, 4);
  EXPECT_THAT(textsIn(file_), ElementsAre("message 3"));
}

TEST_F(RingFileTest, StaysWhenTheRingIsGone) {
  live(0, 3);
  EXPECT_THAT(textsIn(file_), ElementsAre("message 0", "message 1", "message 2"));
}

TEST_F(RingFileTest, IsForItsOwnerOnlyAndWhollyAllocatedWhateverTheMask) {
  const mode_t before = umask(0);
  live(0, 1);
  umask(before);
  struct stat found {};
  ASSERT_EQ(stat(file_.c_str(), &found), 0);
  EXPECT_EQ(found.st_mode, S_IFREG | 0600U);
  EXPECT_GE(found.st_blocks * 512, found.st_size);
}

TEST_F(RingFileTest, OfTheRunBeforeIsKeptAsPrevious) {
  live(0, 1);
  EXPECT_THAT(folder_.names(), ElementsAre("ring"));
  live(1, 2);
  EXPECT_THAT(folder_.names(), ElementsAre("ring", "ring.previous"));
  EXPECT_THAT(textsIn(file_), ElementsAre("message 1"));
  EXPECT_THAT(textsIn(file_ + ".previous"), ElementsAre("message 0"));
  live(2, 3);
  EXPECT_THAT(textsIn(file_ + ".previous"), ElementsAre("message 1"));
}

TEST_F(RingFileTest, IsNotSharedByTwoRings) {
  Ring first(4);
  first.fileIs(file_);
  EXPECT_EQ(refusal(),
            file_ + ": another process writes its trace there; end it, or give another file");
  write(first, 5, 6);
  EXPECT_THAT(textsIn(file_), ElementsAre("message 5"));
}

TEST_F(RingFileTest, MayMoveToAnother) {
  Ring ring(4);
  ring.fileIs(file_);
  write(ring, 0, 1);
  ring.fileIs(folder_.path("other"));
  write(ring, 1, 2);
  EXPECT_THAT(textsIn(file_), ElementsAre("message 0"));
  EXPECT_THAT(textsIn(folder_.path("other")), ElementsAre("message 0", "message 1"));
  live(7, 8);  // nobody holds the first one any more
}

TEST_F(RingFileTest, ReplacesWhatWasLeftByOneThatDiedMakingIt) {
  for (const char* const leftover : {"", "Blinklog and nothing more"}) {
    RingFolder::write(file_ + ".new", leftover);
    live(0, 1);
    EXPECT_FALSE(std::filesystem::exists(file_ + ".new"));
    EXPECT_THAT(textsIn(file_), ElementsAre("message 0"));
  }
}

TEST_F(RingFileTest, NeverReplacesWhatIsNoRing) {
  const std::string precious = "precious, and long enough to be read";
  for (const char* const suffix : {"", ".new", ".previous"}) {
    const std::string path = file_ + suffix;
    RingFolder::write(path, precious);
    EXPECT_EQ(refusal(),
              path +
                  ": is a file that holds no trace ring and would be lost; move it away, or "
                  "give another file");
    EXPECT_EQ(RingFolder::read(path), precious);
    std::filesystem::remove(path);
  }
}

TEST_F(RingFileTest, NeverReplacesAnEmptyFileOrAFolder) {
  RingFolder::write(file_, "");
  EXPECT_THAT(refusal(), HasSubstr("holds no trace ring"));
  std::filesystem::remove(file_);
  std::filesystem::create_directory(file_);
  EXPECT_THAT(refusal(), HasSubstr("holds no trace ring"));
}

TEST_F(RingFileTest, WaitsForNobodyAtAPipe) {
  ASSERT_EQ(mkfifo(file_.c_str(), 0600), 0);
  EXPECT_THAT(refusal(), HasSubstr("holds no trace ring"));
  EXPECT_THROW(RingImage image(file_), RingFileError);
}

TEST_F(RingFileTest, DoesNotFollowALink) {
  live(0, 1);
  const std::string link = folder_.path("link");
  std::filesystem::create_symlink(file_, link);
  EXPECT_EQ(refusalOf(link), link + ": is a link; give the name of the file itself");
}

TEST_F(RingFileTest, CannotBeInAFolderThatIsNotThere) {
  const std::string path = folder_.path("none/ring");
  EXPECT_EQ(refusalOf(path),
            path + ".new: cannot be made: No such file or directory; give another file");
}

TEST_F(RingFileTest, CannotBeWhereThereIsNoRoom) {
  EXPECT_THAT(refusalOf("/dev/full"), HasSubstr("/dev/full: is a file that holds no trace ring"));
  EXPECT_EQ(refusalWithRoomFor(8192),
            file_ + ".new: needs " + std::to_string(256 * 1024 + 4 * 256) +
                " bytes: File too large; make room, or give another file");
  EXPECT_EQ(refusalWithRoomFor(16), file_ +
                                        ".new: cannot be written: No space left on device; give "
                                        "another file");
}

TEST_F(RingFileTest, HoldsNoMoreSlotsThanAReaderTakes) {
  Ring ring(65537);
  EXPECT_THROW(ring.fileIs(file_), RingFileError);
  EXPECT_THAT(folder_.names(), IsEmpty());
  Ring largest(65536);
  largest.fileIs(file_);
  write(largest, 0, 1);
  EXPECT_THAT(textsIn(file_), ElementsAre("message 0"));
}

TEST_F(RingFileTest, IsWrittenWithoutAllocation) {
  Ring ring(4);
  ring.fileIs(file_);
  const SiteId mixed = site({"%s", "%u", "%s", "%b"});
  const std::string longText(1000, 'x');
  const std::vector<Argument> arguments{{'s', 0, "red"}, {'u', 1}, {'s', 0, longText}, {'b', 1}};
  const std::size_t before = PlatformTests::allocations();
  for (int round = 0; round < 100; ++round)
    ring.write(mixed, arguments);
  EXPECT_EQ(PlatformTests::allocations(), before);
}

TEST_F(RingFileTest, StandsInForSitesThatAreTooLongOrTooMany) {
  Ring ring(4);
  const SiteId early = site({"in time"}, 20);
  ring.fileIs(file_);
  ring.write(site({std::string(4096, 'x')}, 21), {});
  EXPECT_THAT(textsIn(file_), ElementsAre("a message whose site is too long to be told here"));
  for (unsigned line = 100; line < 190; ++line)
    static_cast<void>(site({std::string(3000, 'y')}, line));
  ring.write(site({"left out"}, 22), {});
  ring.write(early, {});
  const RingImage image(file_);
  EXPECT_THAT(textsOf(image.records()),
              ElementsAre("a message whose site is too long to be told here",
                          "a message whose site found no room in the file", "in time"));
  EXPECT_EQ(image.records()[0].site->line, 21U);
  EXPECT_EQ(image.records()[0].site->level, 5U);
  EXPECT_EQ(ring.dump()[1].text, "left out");
}

// The table of sites is full after some of these. Small sites would still fit into its rest.
TEST_F(RingFileTest, NeverShowsTheSiteOfAnotherMessageWhenTheTableIsFull) {
  constexpr unsigned sites = 200;
  Ring ring(sites);
  ring.fileIs(file_);
  for (unsigned line = 0; line < sites; ++line) {
    const std::string text(line % 2 == 0 ? 3500 : 1, 'z');
    ring.write(siteIs({"/src/full", line, "write", 5, {text}}), {});
  }
  const RingImage image(file_);
  ASSERT_EQ(image.records().size(), sites);
  for (unsigned line = 0; line < sites; ++line) {
    const Record& record = image.records()[line];
    if (record.text == "a message whose site found no room in the file") continue;
    EXPECT_EQ(record.site->line, line);
    EXPECT_EQ(record.text.size(), line % 2 == 0 ? 3500U : 1U);
  }
  EXPECT_EQ(image.records().back().text, "a message whose site found no room in the file");
}

}  // namespace
}  // namespace Blinklog
