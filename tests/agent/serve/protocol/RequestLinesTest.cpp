// Request lines from bytes, without a socket.
#include "agent/serve/protocol/Request.h"

#include <gmock/gmock.h>

#include <vector>

namespace ZelAgent {
namespace {

using Kind = RequestLine::Kind;
using ::testing::ElementsAre;

std::vector<std::string> takeAll(RequestLines& lines) {
  std::vector<std::string> texts;
  while (lines.hasNext())
    texts.push_back(lines.next().text);
  return texts;
}

TEST(RequestLines, ALineInPiecesIsOneRequest) {
  RequestLines lines;
  lines.append("show");
  EXPECT_FALSE(lines.hasNext());
  lines.append(" actions");
  EXPECT_FALSE(lines.hasNext());
  lines.append("\n");
  ASSERT_TRUE(lines.hasNext());
  EXPECT_EQ(lines.next().text, "show actions");
  EXPECT_FALSE(lines.hasNext());
}

TEST(RequestLines, SeveralLinesInOnePieceStayInOrder) {
  RequestLines lines;
  lines.append("a\nb\n\nc\nd");
  EXPECT_THAT(takeAll(lines), ElementsAre("a", "b", "", "c"));
  lines.append("e\n");
  EXPECT_THAT(takeAll(lines), ElementsAre("de"));
}

TEST(RequestLines, TheLinesDoNotDependOnThePieces) {
  const std::string bytes = "one\n\ntwo words\n{\"x\":1}\n";
  for (std::size_t first = 0; first <= bytes.size(); ++first) {
    for (std::size_t second = first; second <= bytes.size(); ++second) {
      SCOPED_TRACE("cut at " + std::to_string(first) + " and " + std::to_string(second));
      RequestLines lines;
      std::vector<std::string> texts;
      for (const std::string& piece :
           {bytes.substr(0, first), bytes.substr(first, second - first), bytes.substr(second)}) {
        lines.append(piece);
        if (lines.hasNext()) texts.push_back(lines.next().text);  // the rest stays for later
      }
      for (const std::string& text : takeAll(lines))
        texts.push_back(text);
      EXPECT_THAT(texts, ElementsAre("one", "", "two words", "{\"x\":1}"));
    }
  }
}

TEST(RequestLines, ALineOfTheGreatestLengthIsWhole) {
  RequestLines lines;
  lines.append(std::string(RequestLines::longest, 'x') + "\n");
  const RequestLine line = lines.next();
  EXPECT_EQ(line.kind, Kind::whole);
  EXPECT_EQ(line.text.size(), RequestLines::longest);
}

TEST(RequestLines, ALineOfTheGreatestLengthWaitsForItsEnd) {
  RequestLines lines;
  lines.append(std::string(RequestLines::longest, 'x'));
  EXPECT_FALSE(lines.hasNext());
  lines.append("\nnext\n");
  EXPECT_EQ(lines.next().kind, Kind::whole);
  EXPECT_EQ(lines.next().text, "next");
}

TEST(RequestLines, ALineOfTheGreatestLengthMayFollowAnother) {
  RequestLines lines;
  lines.append("first\n" + std::string(RequestLines::longest, 'x'));
  EXPECT_EQ(lines.next().text, "first");
  EXPECT_FALSE(lines.hasNext());
  lines.append("x");
  ASSERT_TRUE(lines.hasNext());
  EXPECT_EQ(lines.next().kind, Kind::tooLong);
}

TEST(RequestLines, TheGreatestLengthIs64KiB) {
  EXPECT_EQ(RequestLines::longest, 65536U);
}

TEST(RequestLines, ALineThatIsLongerIsTooLongWithOrWithoutItsEnd) {
  for (const char* const end : {"", "\n"}) {
    RequestLines lines;
    lines.append(std::string(RequestLines::longest + 1, 'x') + end);
    ASSERT_TRUE(lines.hasNext());
    const RequestLine line = lines.next();
    EXPECT_EQ(line.kind, Kind::tooLong);
    EXPECT_EQ(line.text, std::string(100, 'x'));
  }
}

TEST(RequestLines, NothingFollowsALineThatIsTooLong) {
  RequestLines lines;
  lines.append("first\n" + std::string(RequestLines::longest + 1, 'x') + "\nafter\n");
  EXPECT_EQ(lines.next().text, "first");
  EXPECT_EQ(lines.next().kind, Kind::tooLong);
  lines.append("later\n");
  lines.end();
  EXPECT_FALSE(lines.hasNext());
}

TEST(RequestLines, ALineWithoutItsEndIsUnfinished) {
  RequestLines lines;
  lines.append("whole\nhal");
  lines.end();
  EXPECT_EQ(lines.next().kind, Kind::whole);
  const RequestLine line = lines.next();
  EXPECT_EQ(line.kind, Kind::unfinished);
  EXPECT_EQ(line.text, "hal");
  EXPECT_FALSE(lines.hasNext());
}

TEST(RequestLines, AnEndAfterAWholeLineAddsNothing) {
  RequestLines lines;
  lines.append("whole\n");
  lines.end();
  EXPECT_THAT(takeAll(lines), ElementsAre("whole"));
}

TEST(RequestLines, NulBytesStayInTheLine) {
  RequestLines lines;
  lines.append(std::string_view("a\0b\n", 4));
  EXPECT_EQ(lines.next().text, std::string("a\0b", 3));
}

}  // namespace
}  // namespace ZelAgent
