#include "ZelVrfSelectionPolicy/values/VrfAction.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <concepts>
#include <limits>
#include <sstream>
#include <type_traits>
#include <vector>

#include "Mox/Hash.h"
#include "Mox/Strep.h"
#include "ParseError.h"

namespace ZelVrfSelectionPolicy {
namespace {

using PolicyMap::ActionType;
using ::testing::HasSubstr;
using Testing::parseError;
using ::testing::StartsWith;

VrfAction action(const L3::VrfName& vrfName, const L3::VrfName& fallback,
                 const L3::VrfName& postDecap, ActionType type) {
  VrfAction made(vrfName, type);
  made.fallbackVrfNameIs(fallback);
  made.postDecapVrfNameIs(postDecap);
  return made;
}

bool areEqual(const VrfAction& a, const VrfAction& b) {
  return VrfAction::isEq(&a, &b);
}

// Whether a record has a writer for a field, or hands out something that can be written through.
template <class Record>
concept VrfNameIsWritable = requires(Record record) {
  record.vrfNameIs(L3::VrfName());
}
|| std::assignable_from<decltype(std::declval<Record&>().vrfName()), L3::VrfName>;
template <class Record>
concept ActionIsWritable = requires(Record record) {
  record.actionIs(ActionType::vrf);
}
|| std::assignable_from<decltype(std::declval<Record&>().action()), ActionType>;
template <class Record>
concept FallbackVrfNameIsWritable = requires(Record record) {
  record.fallbackVrfNameIs(L3::VrfName());
};
template <class Record>
concept PostDecapVrfNameIsWritable = requires(Record record) {
  record.postDecapVrfNameIs(L3::VrfName());
};

static_assert(!VrfNameIsWritable<VrfAction> && !ActionIsWritable<VrfAction>,
              "VRF name and action are fixed once the record is built");
static_assert(FallbackVrfNameIsWritable<VrfAction> && PostDecapVrfNameIsWritable<VrfAction>,
              "the two further names are completed afterwards");
static_assert(!FallbackVrfNameIsWritable<const VrfAction> &&
              !PostDecapVrfNameIsWritable<const VrfAction>);
static_assert(std::is_constructible_v<VrfAction, L3::VrfName, ActionType>);
static_assert(!std::is_constructible_v<VrfAction, L3::VrfName>);
static_assert(std::copyable<VrfAction> && std::default_initializable<VrfAction>);
static_assert(sizeof(ActionType) == 1);
static_assert(std::same_as<decltype(std::declval<const VrfAction&>().hash(0U)), unsigned>);

TEST(VrfAction, DefaultRecordHasThreeEmptyNamesAndNoAction) {
  const VrfAction unset;
  EXPECT_EQ(unset.vrfName(), L3::VrfName());
  EXPECT_EQ(unset.fallbackVrfName(), L3::VrfName());
  EXPECT_EQ(unset.postDecapVrfName(), L3::VrfName());
  EXPECT_EQ(static_cast<unsigned>(unset.action()), 0U);
}

TEST(VrfAction, BuiltFromNameAndActionHasEmptyFallbackAndPostDecapNames) {
  const VrfAction built("red", ActionType::decapVrf);
  EXPECT_EQ(built.vrfName(), L3::VrfName("red"));
  EXPECT_EQ(built.action(), ActionType::decapVrf);
  EXPECT_TRUE(built.fallbackVrfName().empty());
  EXPECT_TRUE(built.postDecapVrfName().empty());
}

TEST(VrfAction, SameNameAndDifferentActionsAreUnequalAndOrderByAction) {
  const VrfAction lower("red", ActionType::vrf);
  const VrfAction higher("red", ActionType::decapVrf);
  EXPECT_FALSE(areEqual(lower, higher));
  EXPECT_FALSE(lower == higher);
  EXPECT_LT(lower, higher);
  EXPECT_FALSE(higher < lower);
}

TEST(VrfAction, ACopyIsEqualAndItsOwn) {
  VrfAction original = action("red", "blue", "green", ActionType::vrf);
  VrfAction copy = original;
  copy.fallbackVrfNameIs("other");
  EXPECT_EQ(original.fallbackVrfName(), L3::VrfName("blue"));
  original = copy;
  EXPECT_TRUE(areEqual(original, copy));
}

TEST(VrfAction, EveryFieldTakesPartInEquality) {
  const VrfAction whole = action("red", "blue", "green", ActionType::vrf);
  EXPECT_TRUE(areEqual(whole, action("red", "blue", "green", ActionType::vrf)));
  EXPECT_FALSE(areEqual(whole, action("Red", "blue", "green", ActionType::vrf)));
  EXPECT_FALSE(areEqual(whole, action("red", "", "green", ActionType::vrf)));
  EXPECT_FALSE(areEqual(whole, action("red", "blue", "gree", ActionType::vrf)));
  EXPECT_FALSE(areEqual(whole, action("red", "blue", "green", ActionType::none)));
}

TEST(VrfAction, DefaultRecordIsNotSet) {
  EXPECT_FALSE(VrfAction());
}

TEST(VrfAction, AnyOneFieldSetsTheRecord) {
  EXPECT_TRUE(action("", "", "green", ActionType::none)) << "a post-decap name alone";
  EXPECT_TRUE(action("", "blue", "", ActionType::none));
  EXPECT_TRUE(action("red", "", "", ActionType::none));
  EXPECT_TRUE(action("", "", "", ActionType::vrf));
}

TEST(VrfAction, DefaultVrfSortsBeforeEveryOtherName) {
  for (const char* other : {"", "a", "Default", "defaul", "default2", "zzz", "\x01"}) {
    const VrfAction first("default", ActionType::discard);
    const VrfAction second(other, ActionType::none);
    EXPECT_LT(first, second) << other;
    EXPECT_FALSE(second < first) << other;
  }
  EXPECT_FALSE(VrfAction("default", ActionType::vrf) < VrfAction("default", ActionType::vrf));
}

TEST(VrfAction, OtherNamesSortEmptyFirstThenByteByByte) {
  const std::vector<L3::VrfName> names{"default", "",   "\x01", "A",    "AB",
                                       "B",       "a~", "b",    "\x7f", "\xff"};
  for (std::size_t a = 0; a < names.size(); ++a) {
    for (std::size_t b = 0; b < names.size(); ++b) {
      EXPECT_EQ(VrfAction(names[a], ActionType::vrf) < VrfAction(names[b], ActionType::vrf), a < b)
          << names[a] << " and " << names[b];
    }
  }
}

TEST(VrfAction, OrdersByTheFieldsAsDeclared) {
  const std::vector<VrfAction> ascending{
      action("default", "z", "z", ActionType::discard),
      action("", "z", "z", ActionType::discard),
      action("red", "default", "z", ActionType::discard),
      action("red", "", "z", ActionType::discard),
      action("red", "blue", "default", ActionType::discard),
      action("red", "blue", "", ActionType::discard),
      action("red", "blue", "green", ActionType::none),
      action("red", "blue", "green", ActionType::vrf),
      action("red", "blue", "green", ActionType::decapVrf),
      action("red", "blue", "green", static_cast<ActionType>(0x7f)),
      action("red", "blue", "green", static_cast<ActionType>(0x80)),
      action("red", "blue", "green", static_cast<ActionType>(0xff)),
      action("rfd", "", "", ActionType::none),
  };
  for (std::size_t a = 0; a < ascending.size(); ++a) {
    for (std::size_t b = 0; b < ascending.size(); ++b) {
      EXPECT_EQ(ascending[a] < ascending[b], a < b) << ascending[a] << "\n" << ascending[b];
    }
  }
}

// The seeds that a mixing function could stumble over, and some between.
std::vector<unsigned> seeds() {
  std::vector<unsigned> all{0, std::numeric_limits<unsigned>::max(), 0xca67d662, 0x7b6bc380};
  for (unsigned bit = 0; bit < 32; ++bit)
    all.push_back(1U << bit);
  for (unsigned i = 1; i < 1000; ++i)
    all.push_back(i * 2654435761U);
  return all;
}

TEST(VrfAction, EqualRecordsHashEquallyForEverySeed) {
  const VrfAction built = action("red", "blue", "", ActionType::decapVrf);
  const auto parsed = Mox::strepToValue<VrfAction>(valueToStrep(built).bytes());
  for (const unsigned seed : seeds())
    EXPECT_EQ(built.hash(seed), parsed.hash(seed)) << seed;
}

TEST(VrfAction, HashDependsOnTheSeed) {
  const VrfAction built("red", ActionType::vrf);
  std::vector<unsigned> hashes;
  for (const unsigned seed : seeds())
    hashes.push_back(built.hash(seed));
  std::sort(hashes.begin(), hashes.end());
  const auto distinct = std::unique(hashes.begin(), hashes.end()) - hashes.begin();
  EXPECT_GT(distinct, static_cast<std::ptrdiff_t>(hashes.size() - 5)) << "chance is far below one";
}

TEST(VrfAction, HashMixesTheHashesOfTheNamesBytesAndTheActionInDeclaredOrder) {
  const std::string longest(100, 'x');
  for (const unsigned seed : seeds()) {
    Mox::Hash expected(seed, 0);
    expected.hashMix(Mox::hashSingleAttr(0, "red"));
    expected.hashMix(Mox::hashSingleAttr(0, ""));
    expected.hashMix(Mox::hashSingleAttr(0, longest));
    expected.hashMix(2);
    EXPECT_EQ(action("red", "", longest, ActionType::decapVrf).hash(seed), expected.result())
        << seed;
  }
}

TEST(VrfAction, HashOfADefaultRecordMixesThreeEmptyNames) {
  for (const unsigned seed : seeds()) {
    Mox::Hash expected(seed, 0);
    for (int name = 0; name < 3; ++name)
      expected.hashMix(Mox::hashSingleAttr(0, ""));
    expected.hashMix(0);
    EXPECT_EQ(VrfAction().hash(seed), expected.result()) << seed;
  }
}

TEST(VrfAction, HashTellsFieldsApart) {
  std::vector<unsigned> hashes{
      VrfAction().hash(0),
      action("red", "", "", ActionType::none).hash(0),
      action("", "red", "", ActionType::none).hash(0),
      action("", "", "red", ActionType::none).hash(0),
      action("", "", "", ActionType::vrf).hash(0),
      action("red", "blue", "", ActionType::none).hash(0),
      action("blue", "red", "", ActionType::none).hash(0),
  };
  std::sort(hashes.begin(), hashes.end());
  EXPECT_EQ(std::unique(hashes.begin(), hashes.end()), hashes.end());
}

TEST(VrfAction, StringFormShowsTheFieldsInDeclaredOrder) {
  EXPECT_EQ(valueToStrep(action("red", "blue", "green", ActionType::decapVrf)).bytes(),
            "Value('ZelVrfSelectionPolicy::VrfAction', ** {'vrfName': 'red', 'fallbackVrfName': "
            "'blue', 'postDecapVrfName': 'green', 'action': actionDecapVrf})");
}

TEST(VrfAction, StringFormOfADefaultRecordShowsEmptyNames) {
  EXPECT_EQ(valueToStrep(VrfAction()).bytes(),
            "Value('ZelVrfSelectionPolicy::VrfAction', ** {'vrfName': '', 'fallbackVrfName': '', "
            "'postDecapVrfName': '', 'action': actionNone})");
}

TEST(VrfAction, StreamedItWritesExactlyTheStringForm) {
  const VrfAction written = action("red", "it's", "", ActionType::vrf);
  std::ostringstream stream;
  stream << written << written;
  EXPECT_EQ(stream.str(), valueToStrep(written).str() + valueToStrep(written).str());
}

TEST(VrfAction, PrintedAndParsedItIsEqual) {
  std::string everyByte(100, '\0');
  for (std::size_t i = 0; i < everyByte.size(); ++i)
    everyByte[i] = static_cast<char>(i);
  std::string everyOtherByte(100, '\0');
  for (std::size_t i = 0; i < everyOtherByte.size(); ++i) {
    everyOtherByte[i] = static_cast<char>(i + 156);
  }
  for (const VrfAction& original :
       {VrfAction(), action("red", "", "", ActionType::none),
        action("default", "'", "\\", ActionType::vrf),
        action("', 'fallbackVrfName': '", "})", "%s", ActionType::discard),
        action(everyByte, everyOtherByte, std::string(100, '\''), ActionType::decapVrf)}) {
    const auto parsed = Mox::strepToValue<VrfAction>(valueToStrep(original).bytes());
    EXPECT_TRUE(areEqual(parsed, original)) << original << "\n" << parsed;
  }
}

TEST(VrfAction, OneTrailingBlankFailsTheParser) {
  const std::string text = valueToStrep(action("red", "blue", "", ActionType::vrf)).str();
  EXPECT_THAT(parseError<VrfAction>(text + " "), HasSubstr("expected the end of the text"));
}

TEST(VrfAction, AnyTrailingTextFailsTheParser) {
  const std::string text = valueToStrep(VrfAction("red", ActionType::vrf)).str();
  for (const std::string& trailing : {std::string("\0", 1), std::string("\n"), text}) {
    EXPECT_THAT(parseError<VrfAction>(text + trailing), HasSubstr("expected the end of the text"));
  }
}

TEST(VrfAction, TheConstructorFromARangeLeavesWhatFollows) {
  const std::string text = valueToStrep(VrfAction("red", ActionType::vrf)).str() + ", next";
  Mox::CharRange range(text);
  EXPECT_EQ(VrfAction(range).vrfName(), L3::VrfName("red"));
  EXPECT_EQ(range.rest(), ", next");
}

class VrfActionLiteral : public ::testing::TestWithParam<std::string> {
 protected:
  static std::string validText() {
    return valueToStrep(action("red", "blue", "green", ActionType::vrf)).str();
  }
  // The valid text with `replacement` in place of the literal.
  static std::string textWith(const std::string& replacement) {
    std::string text = validText();
    return text.replace(text.find(GetParam()), GetParam().size(), replacement);
  }
};

TEST_P(VrfActionLiteral, MissingFailsTheParser) {
  EXPECT_THAT(parseError<VrfAction>(textWith("")), HasSubstr("'" + GetParam() + "'"));
}

TEST_P(VrfActionLiteral, WithAnyByteDifferentFailsTheParser) {
  for (std::size_t at = 0; at < GetParam().size(); ++at) {
    std::string different = GetParam();
    different[at] = different[at] == '#' ? '*' : '#';
    EXPECT_NE(parseError<VrfAction>(textWith(different)), "") << different;
  }
}

TEST_P(VrfActionLiteral, WithAnExtraBlankFailsTheParser) {
  EXPECT_NE(parseError<VrfAction>(textWith(" " + GetParam())), "");
  EXPECT_NE(parseError<VrfAction>(textWith(GetParam() + " ")), "");
}

TEST_P(VrfActionLiteral, TwiceFailsTheParser) {
  EXPECT_NE(parseError<VrfAction>(textWith(GetParam() + GetParam())), "");
}

INSTANTIATE_TEST_SUITE_P(Each, VrfActionLiteral,
                         ::testing::Values("Value('ZelVrfSelectionPolicy::VrfAction', ** {",
                                           "'vrfName': ", ", 'fallbackVrfName': ",
                                           ", 'postDecapVrfName': ", ", 'action': ", "})"));

TEST(VrfAction, EveryProperPrefixFailsTheParser) {
  const std::string text = valueToStrep(action("red", "blue", "green", ActionType::vrf)).str();
  for (std::size_t size = 0; size < text.size(); ++size) {
    EXPECT_NE(parseError<VrfAction>(text.substr(0, size)), "") << size;
  }
}

std::string textOf(const std::string& vrfName, const std::string& fallback,
                   const std::string& postDecap, const std::string& type) {
  return "Value('ZelVrfSelectionPolicy::VrfAction', ** {'vrfName': " + vrfName +
         ", 'fallbackVrfName': " + fallback + ", 'postDecapVrfName': " + postDecap +
         ", 'action': " + type + "})";
}

TEST(VrfAction, ANameOver100BytesIsARangeErrorAtConstruction) {
  EXPECT_NO_THROW(VrfAction(std::string(100, 'x'), ActionType::vrf));
  try {
    VrfAction(std::string(101, 'x'), ActionType::vrf);
    FAIL() << "a name of 101 bytes was taken";
  } catch (const Mox::RangeException& error) {
    EXPECT_STREQ(error.what(), "Mox::String::bytes > maxLength() not allowed");
  }
}

TEST(VrfAction, ANameOver100BytesIsARangeErrorOfItsAttributeInTheParser) {
  const std::string tooLong = "'" + std::string(101, 'x') + "'";
  const std::string refusal = ": Mox::String::bytes > maxLength() not allowed";
  EXPECT_EQ(parseError<VrfAction>(textOf(tooLong, "''", "''", "actionVrf")), "vrfName" + refusal);
  EXPECT_EQ(parseError<VrfAction>(textOf("''", tooLong, "''", "actionVrf")),
            "fallbackVrfName" + refusal);
  EXPECT_EQ(parseError<VrfAction>(textOf("''", "''", tooLong, "actionVrf")),
            "postDecapVrfName" + refusal);
}

TEST(VrfAction, TheLimitCountsBytesNotEscapes) {
  std::string longestForm = "'";
  for (int i = 0; i < 100; ++i)
    longestForm += "\\xff";
  const std::string text = textOf(longestForm + "'", "''", "''", "actionVrf");
  EXPECT_EQ(Mox::strepToValue<VrfAction>(text).vrfName(), L3::VrfName(std::string(100, '\xff')));
}

TEST(VrfAction, AnUnreadableNameIsARangeErrorOfItsAttribute) {
  for (const char* unreadable : {"red", "\"red\"", "'\n'", "'\\q'", "'\\xFF'", "None", ""}) {
    EXPECT_THAT(parseError<VrfAction>(textOf(unreadable, "''", "''", "actionVrf")),
                StartsWith("vrfName: "));
    EXPECT_THAT(parseError<VrfAction>(textOf("''", unreadable, "''", "actionVrf")),
                StartsWith("fallbackVrfName: "));
    EXPECT_THAT(parseError<VrfAction>(textOf("''", "''", unreadable, "actionVrf")),
                StartsWith("postDecapVrfName: "));
  }
}

TEST(VrfAction, AnUnknownActionIsARangeErrorOfItsAttribute) {
  for (const char* unknown :
       {"", "actionUnknown", "actionVr", "actionVrfs", "ActionVrf", "'actionVrf'", "1", "vrf"}) {
    EXPECT_THAT(parseError<VrfAction>(textOf("''", "''", "''", unknown)), StartsWith("action: "))
        << unknown;
  }
}

TEST(VrfAction, FieldsOutOfOrderFailTheParser) {
  EXPECT_NE(parseError<VrfAction>(
                "Value('ZelVrfSelectionPolicy::VrfAction', ** {'fallbackVrfName': '', 'vrfName': "
                "'', 'postDecapVrfName': '', 'action': actionVrf})"),
            "");
}

}  // namespace
}  // namespace ZelVrfSelectionPolicy
