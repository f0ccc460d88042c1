#include "L3/VrfName.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <new>
#include <random>
#include <set>
#include <sstream>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "Mox/Exceptions.h"
#include "Mox/Strep.h"
#include "testing/RandomSeed.h"
#include "tests/platform/Allocations.h"

namespace L3 {
namespace {

using ::testing::ElementsAre;
using ZelVrfSelectionPolicy::Testing::RandomSeed;

constexpr const char* tooLong = "Mox::String::bytes > maxLength() not allowed";

static_assert(sizeof(VrfName) == sizeof(void*));

// What the range exception for building a name from `bytes` says; empty when there is none.
std::string refusal(const std::string& bytes) {
  try {
    const VrfName name(bytes);
    return "";
  } catch (const Mox::RangeException& error) {
    return error.what();
  }
}

TEST(VrfName, IsEmptyByDefaultAndWhenMadeFromNothing) {
  EXPECT_TRUE(VrfName().empty());
  EXPECT_TRUE(VrfName("").empty());
  EXPECT_EQ(VrfName(), VrfName(""));
  EXPECT_EQ(VrfName().bytes(), "");
  EXPECT_EQ(VrfName().str(), "");
  EXPECT_FALSE(VrfName().isDefaultVrf());
}

TEST(VrfName, OfAHundredBytesIsAccepted) {
  const std::string bytes(100, 'x');
  EXPECT_EQ(refusal(bytes), "");
  EXPECT_EQ(VrfName(bytes).bytes(), bytes);
}

TEST(VrfName, OfMoreThanAHundredBytesIsRefusedWithThePlatformsText) {
  EXPECT_EQ(refusal(std::string(101, 'x')), tooLong);
  EXPECT_EQ(refusal(std::string(100000, 'x')), tooLong);
}

TEST(VrfName, TheLimitCountsBytesNotCharacters) {
  std::string umlauts;
  for (int i = 0; i < 50; ++i)
    umlauts += "\xc3\xa4";
  EXPECT_EQ(refusal(umlauts), "");
  EXPECT_EQ(refusal(umlauts + "a"), tooLong);
}

TEST(VrfName, IsMadeFromEveryKindOfText) {
  const VrfName name("red");
  EXPECT_EQ(VrfName(std::string("red")), name);
  EXPECT_EQ(VrfName(std::string_view("red")), name);
  EXPECT_EQ(VrfName(Velo::String("red")), name);
}

TEST(VrfName, EqualityIsThatOfTheBytes) {
  std::string bytes = "red";
  const VrfName first(bytes);
  bytes = "red and blue";
  const VrfName second(std::string_view(bytes).substr(0, 3));
  EXPECT_EQ(first, second);
  EXPECT_NE(first, VrfName("Red"));
  EXPECT_NE(first, VrfName("re"));
  EXPECT_NE(first, VrfName());
  EXPECT_NE(VrfName(std::string_view("red\0", 4)), first);
}

TEST(VrfName, EqualNamesShareTheirText) {
  EXPECT_EQ(VrfName("shared text").bytes(), "shared text");
  const VrfName first("shared text");
  const VrfName second(std::string("shared") + " text");
  EXPECT_EQ(first.bytes().data(), second.bytes().data());
}

TEST(VrfName, CopyingComparingAndHashingDoNotAllocate) {
  const VrfName name("a name that no small buffer would hold in place");
  const VrfName other("another name");
  const std::size_t before = PlatformTests::allocations();
  VrfName copy = name;
  copy = other;
  copy = name;
  const VrfName moved = std::move(copy);
  EXPECT_TRUE(moved == name && !(moved == other) && moved.hash(3) == name.hash(3));
  EXPECT_EQ(PlatformTests::allocations(), before);
}

TEST(VrfName, BuildingAnExistingOneDoesNotAllocate) {
  const VrfName name("a name that no small buffer would hold in place");
  const std::size_t before = PlatformTests::allocations();
  const VrfName again(name.bytes());
  EXPECT_EQ(PlatformTests::allocations(), before);
  EXPECT_EQ(again, name);
}

TEST(VrfName, BuildingANewOneAllocatesItsBytesAlone) {
  { const VrfName makesRoom("one that goes leaves its place to the next"); }
  const std::size_t before = PlatformTests::allocations();
  const VrfName name("a name that no small buffer would hold in place");
  EXPECT_EQ(PlatformTests::allocations(), before + 1);
}

TEST(VrfName, LeavesNothingBehindWhenTheLastCopyGoes) {
  { const VrfName warmUp("the table itself stays"); }
  const std::size_t before = PlatformTests::liveAllocations();
  {
    VrfName outer;
    {
      const VrfName inner("the last copy decides");
      outer = inner;
    }
    EXPECT_EQ(outer.bytes(), "the last copy decides");
  }
  EXPECT_EQ(PlatformTests::liveAllocations(), before);
}

TEST(VrfName, SurvivesAssignmentToItself) {
  VrfName name("red");
  VrfName& same = name;
  name = same;
  EXPECT_EQ(name.bytes(), "red");
}

TEST(VrfName, MovedFromIsEmpty) {
  VrfName from("red");
  const VrfName to = std::move(from);
  EXPECT_EQ(to.bytes(), "red");
  EXPECT_TRUE(from.empty());  // NOLINT(bugprone-use-after-move): what is tested
}

TEST(VrfName, DefaultIsTheNameDefault) {
  EXPECT_EQ(VrfName::defaultVrf().bytes(), "default");
  EXPECT_TRUE(VrfName("default").isDefaultVrf());
  EXPECT_FALSE(VrfName("Default").isDefaultVrf());
  EXPECT_FALSE(VrfName("default ").isDefaultVrf());
}

TEST(VrfName, OrdersDefaultFirstThenTheEmptyNameThenByBytes) {
  std::vector<VrfName> names{"b", "\x80", "default", "ab", "", "a", "defaul", "defaults", "B"};
  std::sort(names.begin(), names.end());
  EXPECT_THAT(names,
              ElementsAre(VrfName("default"), VrfName(), VrfName("B"), VrfName("a"), VrfName("ab"),
                          VrfName("b"), VrfName("defaul"), VrfName("defaults"), VrfName("\x80")));
}

TEST(VrfName, OrderIsStrict) {
  const std::vector<VrfName> names{"default", "", "a", "b"};
  for (const VrfName& a : names) {
    EXPECT_FALSE(a < a) << a;
    for (const VrfName& b : names)
      EXPECT_EQ((a < b) + (b < a) + (a == b), 1) << a << " and " << b;
  }
}

TEST(VrfName, ByteHashIsThatOfItsBytes) {
  for (const std::string& bytes :
       {std::string(), std::string("red"), std::string(100, 'x'), std::string("nul\0inside", 10)}) {
    EXPECT_EQ(VrfName(bytes).byteHash(), Mox::hashSingleAttr(0, bytes)) << bytes;
  }
}

TEST(VrfName, HashIsThatOfItsBytesUnderTheSeedOfTheProcessScattered) {
  for (const std::string& bytes : {std::string(), std::string("red"), std::string(100, 'x')}) {
    for (const unsigned seed : {0U, 1U, 0xffffffffU}) {
      Mox::Hash expected(seed, 0);
      expected.hashMix(Mox::hashSingleAttr(Mox::HashHelper::hashSeed32(), bytes));
      EXPECT_EQ(VrfName(bytes).hash(seed), expected.result()) << bytes << ' ' << seed;
    }
  }
}

TEST(VrfName, HashDependsOnSeedAndName) {
  EXPECT_EQ(VrfName("red").hash(1), VrfName("red").hash(1));
  EXPECT_NE(VrfName("red").hash(1), VrfName("red").hash(2));
  EXPECT_NE(VrfName("red").hash(1), VrfName("blue").hash(1));
}

TEST(VrfName, NumberIsZeroForTheEmptyNameAndItsOwnForAnyOther) {
  EXPECT_EQ(VrfName().number(), 0U);
  std::set<unsigned> numbers{0U};
  EXPECT_TRUE(numbers.insert(VrfName::defaultVrf().number()).second);
  std::vector<VrfName> names;
  for (unsigned i = 0; i < 100; ++i) {
    names.emplace_back("numbered" + std::to_string(i));
    EXPECT_TRUE(numbers.insert(names.back().number()).second) << names.back();
  }
  for (const VrfName& name : names)
    EXPECT_EQ(VrfName(name.bytes()).number(), name.number()) << name;
}

TEST(VrfName, NumberGoesToAnotherNameWhenTheLastUserHasGoneTheLatestFirst) {
  VrfName user("passing");
  VrfName later("passing later");
  const unsigned number = user.number();
  const unsigned latest = later.number();
  VrfName lastUser = user;
  user = VrfName();
  const VrfName meanwhile("comes meanwhile");
  EXPECT_NE(meanwhile.number(), number) << "it has a user";
  lastUser = VrfName();
  later = VrfName();
  const VrfName first("comes first");
  const VrfName second("comes second");
  EXPECT_EQ(first.number(), latest);
  EXPECT_EQ(second.number(), number);
}

TEST(VrfName, NumberStaysWhileOtherNamesComeAndGo) {
  const VrfName name("steady");
  const unsigned number = name.number();
  const unsigned ofDefault = VrfName::defaultVrf().number();
  std::vector<VrfName> others;
  for (unsigned i = 0; i < 500; ++i) {
    others.emplace_back("other" + std::to_string(i));
    ASSERT_EQ(name.number(), number) << i;
    if (i % 3 == 0) others.erase(others.begin());
  }
  others.clear();
  EXPECT_EQ(name.number(), number);
  EXPECT_EQ(VrfName::defaultVrf().number(), ofDefault);
}

TEST(VrfName, NumberIsThatOfEveryCopy) {
  VrfName name("copied");
  const unsigned number = name.number();
  const VrfName copy = name;
  EXPECT_EQ(copy.number(), number);
  const VrfName moved = std::move(name);
  EXPECT_EQ(moved.number(), number);
  VrfName assigned("another");
  assigned = moved;
  EXPECT_EQ(assigned.number(), number);
}

TEST(VrfName, NumbersAreUsedAgainHoweverManyNamesComeAndGo) {
  std::set<unsigned> numbers;
  for (unsigned i = 0; i < 1000; ++i)
    numbers.insert(VrfName("fleeting" + std::to_string(i)).number());
  EXPECT_EQ(numbers.size(), 1U);
}

TEST(VrfName, WritesItsBareBytes) {
  std::ostringstream stream;
  stream << VrfName("a'b") << VrfName();
  EXPECT_EQ(stream.str(), "a'b");
}

TEST(VrfName, StringFormIsQuotedAndEscaped) {
  EXPECT_EQ(valueToStrep(VrfName("red")).bytes(), "'red'");
  EXPECT_EQ(valueToStrep(VrfName()).bytes(), "''");
  EXPECT_EQ(valueToStrep(VrfName("it's a \\\n")).bytes(), R"('it\'s a \\\n')");
}

TEST(VrfName, AnyBytesSurvivePrintingAndParsing) {
  for (const std::string& bytes :
       {std::string(), std::string("red"), std::string("it's"), std::string("\\"),
        std::string("line\nline\r\t"), std::string("\0", 1), std::string("a\0'\\\n\xff", 6),
        std::string("', 'fallbackVrfName': '"), std::string("%s"), std::string(100, '\'')}) {
    const VrfName name(bytes);
    EXPECT_EQ(Mox::strepToValue<VrfName>(valueToStrep(name).bytes()), name) << bytes;
  }
}

TEST(VrfName, EveryByteSurvivesPrintingAndParsing) {
  for (int byte = 0; byte < 256; ++byte) {
    const VrfName name(std::string(1, static_cast<char>(byte)));
    EXPECT_EQ(Mox::strepToValue<VrfName>(valueToStrep(name).bytes()), name) << byte;
  }
}

TEST(VrfName, RandomBytesSurvivePrintingAndParsing) {
  const RandomSeed seed;
  SCOPED_TRACE(seed.replay());
  std::mt19937 random(seed.value());
  for (int round = 0; round < 500; ++round) {
    std::string bytes(random() % 101, ' ');
    for (char& byte : bytes)
      byte = static_cast<char>(random());
    const VrfName name(bytes);
    ASSERT_EQ(Mox::strepToValue<VrfName>(valueToStrep(name).bytes()).str(), bytes);
  }
}

TEST(VrfName, ParsingATooLongNameIsRefusedAsAtConstruction) {
  try {
    static_cast<void>(Mox::strepToValue<VrfName>("'" + std::string(101, 'x') + "'"));
    FAIL() << "accepted";
  } catch (const Mox::RangeException& error) {
    EXPECT_STREQ(error.what(), tooLong);
  }
}

TEST(VrfName, ParsingRefusesWhatIsNoQuotedText) {
  for (const char* text : {"", "red", "'red", "red'", "\"red\"", "'red' ", " 'red'", "''red"}) {
    EXPECT_THROW(static_cast<void>(Mox::strepToValue<VrfName>(text)), Mox::RangeException) << text;
  }
}

TEST(VrfName, ThatExistsIsBuiltWithoutMemoryHoweverManyThereAre) {
  std::vector<VrfName> names;
  names.reserve(200);
  for (unsigned number = 0; number < 200; ++number) {
    const std::string text = "known" + std::to_string(number);
    names.emplace_back(text);
    const std::size_t before = PlatformTests::allocations();
    EXPECT_EQ(VrfName(text), names.back());
    EXPECT_EQ(PlatformTests::allocations(), before);
  }
}

}  // namespace
}  // namespace L3
