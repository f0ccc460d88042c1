#include "Mox/Strep.h"

#include <gtest/gtest.h>

#include <stdexcept>
#include <string>

#include "L3/VrfName.h"
#include "tests/platform/Refusal.h"

namespace StrepTest {

/// A record that is read by its constructor.
struct Pair {
  explicit Pair(Mox::CharRange& range) {
    range.needString("(");
    first = Mox::deserializeAttr<Velo::String>(range, "first");
    range.needString(", ");
    second = Mox::deserializeAttr<L3::VrfName>(range, "second");
    range.needString(")");
  }
  Velo::String first;
  L3::VrfName second;
};

/// A value whose reading fails with something that is no range error.
struct Broken {
  explicit Broken(Mox::CharRange& /*range*/) { throw std::logic_error("broken"); }
};

}  // namespace StrepTest

namespace Mox {
namespace {

using Testing::refusal;

TEST(Strep, OfAStringIsQuotedAndReadBack) {
  EXPECT_EQ(valueToStrep(Velo::String("it's")).bytes(), R"('it\'s')");
  EXPECT_EQ(strepToValue<Velo::String>(R"('it\'s')"), Velo::String("it's"));
  EXPECT_EQ(strepToValue<Velo::String>("''"), Velo::String());
}

TEST(Strep, IsReadByTheConstructorOfATypeThatHasOne) {
  const auto pair = strepToValue<StrepTest::Pair>("('one', 'two')");
  EXPECT_EQ(pair.first.bytes(), "one");
  EXPECT_EQ(pair.second.bytes(), "two");
}

TEST(Strep, MustBeUsedUp) {
  EXPECT_THROW(static_cast<void>(strepToValue<Velo::String>("'red' ")), RangeException);
  EXPECT_THROW(static_cast<void>(strepToValue<StrepTest::Pair>("('one', 'two') ")), RangeException);
}

TEST(Strep, AnErrorInAnAttributeBearsItsName) {
  EXPECT_EQ(refusal<RangeException>(
                [] { static_cast<void>(strepToValue<StrepTest::Pair>("('one', two)")); }),
            "second: expected ''' at byte 8, found 'two)'");
}

TEST(Strep, AnErrorBetweenAttributesBearsNone) {
  EXPECT_EQ(refusal<RangeException>(
                [] { static_cast<void>(strepToValue<StrepTest::Pair>("('one'; 'two')")); }),
            "expected ', ' at byte 6, found '; \\'two\\')'");
}

TEST(Strep, ATooLongNameInAnAttributeIsTheRangeErrorOfNamesUnderTheAttribute) {
  const std::string text = "('one', '" + std::string(101, 'x') + "')";
  EXPECT_EQ(
      refusal<RangeException>([&] { static_cast<void>(strepToValue<StrepTest::Pair>(text)); }),
      "second: Mox::String::bytes > maxLength() not allowed");
}

TEST(Strep, OtherExceptionsPassThroughUnchanged) {
  CharRange range("");
  EXPECT_EQ(refusal<std::logic_error>(
                [&] { static_cast<void>(deserializeAttr<StrepTest::Broken>(range, "attribute")); }),
            "broken");
}

TEST(Strep, RethrowingPrefixesTheAttribute) {
  EXPECT_EQ(refusal<RangeException>(
                [] { rethrowFromDeserializeAttr(RangeException("no such value"), "action"); }),
            "action: no such value");
}

}  // namespace
}  // namespace Mox
