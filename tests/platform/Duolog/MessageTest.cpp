#include "Duolog/Message.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "Blinklog/Ring.h"
#include "Mox/TraceHandle.h"
#include "tests/platform/Allocations.h"

namespace Duolog {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

Mox::TraceHandle& handle() {
  static Mox::TraceHandle ofTests("DuologTest", 0);
  return ofTests;
}

const Message::Source source{[]() -> const Mox::TraceHandle& { return handle(); }, "/src/duolog"};

const Message& deleting() {
  static const Message message(source, 7, 35, "handleIt",
                               {"Vrf::", "handleIt", ": Deleting ", "%s"});
  return message;
}

/// Text trace in `lines` and what the ring got since the test began.
class MessageTest : public ::testing::Test {
 protected:
  MessageTest()
      : before_(Mox::traceSinkIs([this](std::string_view line) { lines.emplace_back(line); })) {
    handle().levelsOnIs(0);
  }
  ~MessageTest() override {
    Mox::traceSinkIs(before_);
    handle().levelsOnIs(0);
  }

  static void levelIs(unsigned level) { handle().levelsOnIs(1U << level); }

  [[nodiscard]] std::vector<Blinklog::Record> records() const {
    std::vector<Blinklog::Record> since;
    for (Blinklog::Record& record : Blinklog::ring().dump()) {
      if (record.sequence >= firstRecord_) since.push_back(std::move(record));
    }
    return since;
  }
  [[nodiscard]] std::vector<std::string> ringTexts() const {
    std::vector<std::string> texts;
    for (const Blinklog::Record& record : records())
      texts.push_back(record.text);
    return texts;
  }

  std::vector<std::string> lines;

 private:
  std::uint64_t firstRecord_ = Blinklog::ring().written();
  Mox::TraceSink before_;
};

TEST_F(MessageTest, GoesToTheRingAloneWhileItsLevelIsOff) {
  levelIs(5);
  deleting()("red");
  EXPECT_THAT(lines, IsEmpty());
  EXPECT_THAT(ringTexts(), ElementsAre("Vrf::handleIt: Deleting red"));
}

TEST_F(MessageTest, GoesToBothSinksWhileItsLevelIsOn) {
  levelIs(7);
  deleting()(std::string_view("red"));
  EXPECT_THAT(lines,
              ElementsAre("DuologTest 7 /src/duolog:35 handleIt Vrf::handleIt: Deleting red"));
  EXPECT_THAT(ringTexts(), ElementsAre("Vrf::handleIt: Deleting red"));
}

TEST_F(MessageTest, RingRecordBearsItsSite) {
  deleting()(Velo::String("red"));
  const std::vector<Blinklog::Record> since = records();
  ASSERT_EQ(since.size(), 1u);
  EXPECT_EQ(since[0].site->path, "/src/duolog");
  EXPECT_EQ(since[0].site->line, 35u);
  EXPECT_EQ(since[0].site->function, "handleIt");
  EXPECT_EQ(since[0].site->level, 7u);
}

TEST_F(MessageTest, ShowsNumbersAndBooleansAlikeInBothSinks) {
  static const Message message(source, 5, 40, "f",
                               {"id:", "%u", " zero:", "%u", " on:", "%b", "%b"});
  levelIs(5);
  message(4294967295u, 0u, true, false);
  EXPECT_THAT(lines,
              ElementsAre("DuologTest 5 /src/duolog:40 f id:4294967295 zero:0 on:truefalse"));
  EXPECT_THAT(ringTexts(), ElementsAre("id:4294967295 zero:0 on:truefalse"));
}

TEST_F(MessageTest, ShowsTheNameOfANumberInTheTextAndTheNumberInTheRing) {
  static const Message message(source, 5, 41, "f", {"Error:", "%u", ";"});
  levelIs(5);
  message(Argument(2, "failureVrfResourceExhausted"));
  EXPECT_THAT(lines,
              ElementsAre("DuologTest 5 /src/duolog:41 f Error:failureVrfResourceExhausted;"));
  EXPECT_THAT(ringTexts(), ElementsAre("Error:2;"));
}

TEST_F(MessageTest, WithoutArgumentsIsItsFragments) {
  static const Message message(source, 5, 42, "f", {"one", " ", "two"});
  levelIs(5);
  message();
  EXPECT_THAT(lines, ElementsAre("DuologTest 5 /src/duolog:42 f one two"));
  EXPECT_THAT(ringTexts(), ElementsAre("one two"));
}

TEST_F(MessageTest, ShowsAnEmptyTextAsNothing) {
  levelIs(7);
  deleting()(std::string_view());
  EXPECT_THAT(lines, ElementsAre("DuologTest 7 /src/duolog:35 handleIt Vrf::handleIt: Deleting "));
  EXPECT_THAT(ringTexts(), ElementsAre("Vrf::handleIt: Deleting "));
}

TEST_F(MessageTest, TakesNoOtherPercentSignForAPlaceholder) {
  static const Message message(source, 5, 44, "f", {"100", "%%", "%d", " of ", "%s"});
  levelIs(5);
  message("red");
  EXPECT_THAT(lines, ElementsAre("DuologTest 5 /src/duolog:44 f 100%%%d of red"));
  EXPECT_THAT(ringTexts(), ElementsAre("100%%%d of red"));
}

TEST_F(MessageTest, TakesNoPlaceholderFromAnArgument) {
  levelIs(7);
  deleting()(std::string_view("%s%u"));
  EXPECT_THAT(lines,
              ElementsAre("DuologTest 7 /src/duolog:35 handleIt Vrf::handleIt: Deleting %s%u"));
  EXPECT_THAT(ringTexts(), ElementsAre("Vrf::handleIt: Deleting %s%u"));
}

TEST_F(MessageTest, StaysOneLineOfTextWhateverTheNameAndKeepsItsBytesInTheRing) {
  levelIs(7);
  deleting()(std::string_view("a\nb"));
  EXPECT_THAT(lines,
              ElementsAre("DuologTest 7 /src/duolog:35 handleIt Vrf::handleIt: Deleting a?b"));
  EXPECT_THAT(ringTexts(), ElementsAre("Vrf::handleIt: Deleting a\nb"));
}

TEST_F(MessageTest, ShowsALongTextWholeInTheTextAndCutInTheRing) {
  const std::string name(1000, 'x');
  levelIs(7);
  deleting()(std::string_view(name));
  EXPECT_THAT(lines,
              ElementsAre("DuologTest 7 /src/duolog:35 handleIt Vrf::handleIt: Deleting " + name));
  ASSERT_EQ(ringTexts().size(), 1u);
  EXPECT_TRUE(ringTexts()[0].ends_with("xxx..."));
}

TEST_F(MessageTest, ArgumentsAreWhatTheyAreMadeFrom) {
  EXPECT_EQ(Argument("red").kept().kind, 's');
  EXPECT_EQ(Argument("red").shown(), "red");
  EXPECT_EQ(Argument(Velo::String("red")).kept().text, "red");
  EXPECT_EQ(Argument(7u).kept().kind, 'u');
  EXPECT_EQ(Argument(true).kept().kind, 'b');
  EXPECT_EQ(Argument(true).shown(), "true");
}

TEST_F(MessageTest, SendingDoesNotAllocateWhileTheTextIsOff) {
  const Message& message = deleting();
  const std::string name(100, 'x');
  const std::size_t before = PlatformTests::allocations();
  message(std::string_view(name));
  EXPECT_EQ(PlatformTests::allocations(), before);
  EXPECT_THAT(ringTexts(), ElementsAre("Vrf::handleIt: Deleting " + name));
}

}  // namespace
}  // namespace Duolog
