#include "Blinklog/Ring.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <string_view>
#include <vector>

#include "tests/platform/Allocations.h"

namespace Blinklog {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

Argument text(std::string_view bytes) {
  return {'s', 0, bytes};
}
Argument number(std::uint32_t value) {
  return {'u', value};
}
Argument boolean(bool value) {
  return {'b', value};
}

SiteId writtenSite(std::vector<std::string> fragments) {
  return siteIs({"/src/ring", 10, "write", 5, std::move(fragments)});
}

class RingTest : public ::testing::Test {
 protected:
  void write(SiteId at, std::vector<Argument> arguments) { ring.write(at, arguments); }
  void writeNumbers(unsigned from, unsigned to) {
    const SiteId numbered = writtenSite({"message ", "%u"});
    for (unsigned value = from; value < to; ++value)
      write(numbered, {number(value)});
  }
  std::vector<std::string> texts() const {
    std::vector<std::string> shown;
    for (const Record& record : ring.dump())
      shown.push_back(record.text);
    return shown;
  }

  Ring ring{4};
};

TEST_F(RingTest, IsEmptyAtFirst) {
  EXPECT_THAT(ring.dump(), IsEmpty());
  EXPECT_EQ(ring.written(), 0u);
  EXPECT_EQ(ring.slots(), 4u);
}

TEST_F(RingTest, ShowsArgumentsInTheirPlaces) {
  write(writtenSite({"Vrf::", "handle", ": ", "%s", " id:", "%u", " on:", "%b", "%b"}),
        {text("red"), number(4294967295u), boolean(true), boolean(false)});
  EXPECT_THAT(texts(), ElementsAre("Vrf::handle: red id:4294967295 on:truefalse"));
}

TEST_F(RingTest, ShowsAnyOtherFragmentOfAPercentSignAsItIs) {
  write(writtenSite({"100", "%%", "%d", " of ", "%s"}), {text("red")});
  EXPECT_THAT(texts(), ElementsAre("100%%%d of red"));
}

TEST_F(RingTest, RecordsBearSequenceAndSite) {
  writeNumbers(0, 1);
  const SiteId other = siteIs({"/src/other", 77, "handleOther", 7, {"other"}});
  write(other, {});
  const std::vector<Record> records = ring.dump();
  ASSERT_EQ(records.size(), 2u);
  EXPECT_EQ(records[0].sequence, 0u);
  EXPECT_EQ(records[1].sequence, 1u);
  EXPECT_EQ(records[1].text, "other");
  EXPECT_EQ(records[1].site->path, "/src/other");
  EXPECT_EQ(records[1].site->line, 77u);
  EXPECT_EQ(records[1].site->function, "handleOther");
  EXPECT_EQ(records[1].site->level, 7u);
}

TEST_F(RingTest, HoldsTheLastMessagesOldestFirst) {
  writeNumbers(0, 4);
  EXPECT_THAT(texts(), ElementsAre("message 0", "message 1", "message 2", "message 3"));
  writeNumbers(4, 6);
  EXPECT_THAT(texts(), ElementsAre("message 2", "message 3", "message 4", "message 5"));
  EXPECT_EQ(ring.written(), 6u);
}

TEST_F(RingTest, SequencesGoOnThroughManyRounds) {
  writeNumbers(0, 1003);
  const std::vector<Record> records = ring.dump();
  ASSERT_EQ(records.size(), 4u);
  for (unsigned place = 0; place < 4; ++place) {
    EXPECT_EQ(records[place].sequence, 999u + place);
    EXPECT_EQ(records[place].text, "message " + std::to_string(999 + place));
  }
}

TEST_F(RingTest, OfOneSlotHoldsTheLastMessage) {
  Ring one(1);
  const SiteId numbered = writtenSite({"%u"});
  for (unsigned value = 0; value < 3; ++value)
    one.write(numbered, std::vector<Argument>{number(value)});
  ASSERT_EQ(one.dump().size(), 1u);
  EXPECT_EQ(one.dump()[0].text, "2");
  EXPECT_EQ(one.dump()[0].sequence, 2u);
}

TEST_F(RingTest, ForgetsWhenItIsClearedAndGoesOnNumbering) {
  writeNumbers(0, 3);
  ring.clear();
  EXPECT_THAT(texts(), IsEmpty());
  writeNumbers(7, 8);
  ASSERT_EQ(ring.dump().size(), 1u);
  EXPECT_EQ(ring.dump()[0].sequence, 3u);
  EXPECT_EQ(ring.dump()[0].text, "message 7");
}

TEST_F(RingTest, DumpingChangesNothing) {
  writeNumbers(0, 5);
  EXPECT_EQ(texts(), texts());
  EXPECT_EQ(ring.written(), 5u);
}

TEST_F(RingTest, CopiesTheTextsThatAreWritten) {
  std::string name = "red";
  write(writtenSite({"%s"}), {text(name)});
  name = "YYY";
  EXPECT_THAT(texts(), ElementsAre("red"));
}

TEST_F(RingTest, KeepsAnyBytesAndEmptyTexts) {
  const std::string bytes("a\0b\n\xff%s", 7);
  write(writtenSite({"<", "%s", "|", "%s", ">"}), {text(bytes), text("")});
  EXPECT_THAT(texts(), ElementsAre("<" + bytes + "|>"));
}

TEST_F(RingTest, TakesNoPlaceholderFromAnArgument) {
  write(writtenSite({"%s", "%u"}), {text("%u"), number(5)});
  EXPECT_THAT(texts(), ElementsAre("%u5"));
}

TEST_F(RingTest, ShowsFragmentsThatOnlyBeginLikeAPlaceholder) {
  write(writtenSite({"100", "%", "%unused", "%s"}), {text("red")});
  EXPECT_THAT(texts(), ElementsAre("100%%unusedred"));
}

TEST_F(RingTest, HoldsTwoNamesOfAHundredBytesWhole) {
  const std::string first(100, 'a');
  const std::string second(100, 'b');
  write(writtenSite({"%s", " ", "%s"}), {text(first), text(second)});
  EXPECT_THAT(texts(), ElementsAre(first + " " + second));
}

TEST_F(RingTest, HoldsTwoNamesOfAHundredBytesWithNumbersBetween) {
  const std::string first(100, 'a');
  const std::string second(100, 'b');
  write(writtenSite({"%s", "%u", "%s", "%b"}),
        {text(first), number(1234567890), text(second), boolean(true)});
  EXPECT_THAT(texts(), ElementsAre(first + "1234567890" + second + "true"));
}

TEST_F(RingTest, CutsATextThatDoesNotFitAndShowsIt) {
  const std::string longText(1000, 'x');
  write(writtenSite({"<", "%s", ">"}), {text(longText)});
  ASSERT_EQ(texts().size(), 1u);
  const std::string shown = texts()[0];
  ASSERT_LT(shown.size(), Ring::slotBytes);
  ASSERT_GT(shown.size(), 200u);
  EXPECT_EQ(shown, "<" + std::string(shown.size() - 5, 'x') + "...>");
}

TEST_F(RingTest, CutsATextOfMoreThanSixtyFourKilobytes) {
  const std::string longText(70000, 'x');
  write(writtenSite({"%s"}), {text(longText)});
  ASSERT_EQ(texts().size(), 1u);
  EXPECT_TRUE(texts()[0].ends_with("x..."));
  EXPECT_LT(texts()[0].size(), Ring::slotBytes);
}

TEST_F(RingTest, ShowsThatTextsBehindALongOneWereCut) {
  const std::string longText(1000, 'x');
  write(writtenSite({"%s", "|", "%s", "|"}), {text(longText), text("cut away")});
  ASSERT_EQ(texts().size(), 1u);
  EXPECT_TRUE(texts()[0].ends_with("x...|...|")) << texts()[0];
}

TEST_F(RingTest, ShowsThatANumberBehindALongTextWasCut) {
  const std::string longText(1000, 'x');
  write(writtenSite({"%s", "|", "%u", "|"}), {text(longText), number(7)});
  ASSERT_EQ(texts().size(), 1u);
  EXPECT_TRUE(texts()[0].ends_with("x...|...|")) << texts()[0];
}

TEST_F(RingTest, NothingOfAnEarlierMessageShowsInASlotThatIsUsedAgain) {
  const std::string longText(200, 'x');
  for (int round = 0; round < 4; ++round)
    write(writtenSite({"%s"}), {text(longText)});
  for (int round = 0; round < 4; ++round)
    write(writtenSite({"<", "%s", ">"}), {text("y")});
  EXPECT_THAT(texts(), ElementsAre("<y>", "<y>", "<y>", "<y>"));
}

TEST_F(RingTest, WritingNeverAllocates) {
  const SiteId mixed = writtenSite({"%s", "%u", "%s", "%b"});
  const std::string longText(1000, 'x');
  const std::vector<Argument> arguments{text("red"), number(1), text(longText), boolean(true)};
  const std::size_t before = PlatformTests::allocations();
  for (int round = 0; round < 100; ++round)
    ring.write(mixed, arguments);
  EXPECT_EQ(PlatformTests::allocations(), before);
  EXPECT_EQ(ring.written(), 100u);
}

TEST(RingSites, EqualSitesHaveOneIdOthersAnother) {
  const Site first{"/src/sites", 1, "f", 5, {"a", "%s"}};
  const SiteId id = siteIs(first);
  EXPECT_EQ(siteIs(first), id);
  for (const Site& other :
       {Site{"/src/other", 1, "f", 5, {"a", "%s"}}, Site{"/src/sites", 2, "f", 5, {"a", "%s"}},
        Site{"/src/sites", 1, "g", 5, {"a", "%s"}}, Site{"/src/sites", 1, "f", 7, {"a", "%s"}},
        Site{"/src/sites", 1, "f", 5, {"a"}}}) {
    EXPECT_NE(siteIs(other), id);
  }
}

TEST(RingSites, AreNumberedInTheOrderOfTheirFirstRegistration) {
  const SiteId first = siteIs({"/src/numbered", 1, "f", 5, {"first"}});
  EXPECT_EQ(siteIs({"/src/numbered", 1, "f", 5, {"first"}}), first);
  const SiteId second = siteIs({"/src/numbered", 2, "f", 5, {"second"}});
  EXPECT_EQ(second, first + 1);
  EXPECT_EQ(siteIs({"/src/numbered", 1, "f", 5, {"first"}}), first);
  EXPECT_EQ(siteIs({"/src/numbered", 3, "f", 5, {"third"}}), second + 1);
}

TEST(RingSites, AreCopiedAndStayWhereTheyAre) {
  Ring ring(8);
  {
    const std::string fleeting = "gone text";
    ring.write(siteIs({"/src/fleeting", 1, "f", 5, {fleeting}}), {});
  }
  const Site* before = ring.dump()[0].site;
  for (unsigned line = 0; line < 200; ++line)
    static_cast<void>(siteIs({"/src/many", line, "f", 5, {"x"}}));
  EXPECT_EQ(ring.dump()[0].site, before);
  EXPECT_EQ(ring.dump()[0].text, "gone text");
}

TEST(RingOfTheProcess, IsOne) {
  EXPECT_EQ(&ring(), &ring());
  EXPECT_GT(ring().slots(), 0u);
}

}  // namespace
}  // namespace Blinklog
