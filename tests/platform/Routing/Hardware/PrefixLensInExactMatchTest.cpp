#include "Routing/Hardware/PrefixLensInExactMatch.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>

#include "Mox/Exceptions.h"
#include "tests/platform/ReactorJournal.h"

namespace Routing::Hardware {
namespace {

using PlatformTests::ReactorJournal;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

class PrefixLens : public ::testing::Test {
 protected:
  Mox::Ptr<PrefixLensInExactMatch> lengths =
      PrefixLensInExactMatch::PrefixLensInExactMatchIs("red");
  Mox::Ptr<ReactorJournal> journal = Mox::makePtr<ReactorJournal>(
      lengths, ReactorJournal::KeyReaders{{PrefixLensInExactMatch::prefixLenAttribute,
                                           PlatformTests::shownKey<unsigned char>}});
};

TEST_F(PrefixLens, BeginEmptyUnderTheNameOfTheirVrf) {
  EXPECT_EQ(lengths->name().bytes(), "red");
  EXPECT_EQ(lengths->prefixLens(), 0u);
  EXPECT_FALSE(lengths->prefixLenHas(0));
  EXPECT_TRUE(lengths->hasNotificationActive());
  EXPECT_EQ(lengths->fwkType()->name, "Routing::Hardware::PrefixLensInExactMatch");
}

TEST_F(PrefixLens, NameMayBeLongerThanThatOfAVrf) {
  const std::string name(101, 'x');
  EXPECT_EQ(PrefixLensInExactMatch::PrefixLensInExactMatchIs(name)->name().str(), name);
}

TEST_F(PrefixLens, NotifyOfEachLengthThatEntersByItsNumber) {
  EXPECT_EQ(PrefixLensInExactMatch::prefixLenAttribute, 258);
  lengths->prefixLenIs(0);
  lengths->prefixLenIs(24);
  lengths->prefixLenIs(128);
  EXPECT_EQ(lengths->prefixLens(), 3u);
  EXPECT_TRUE(lengths->prefixLenHas(24));
  EXPECT_FALSE(lengths->prefixLenHas(25));
  EXPECT_THAT(journal->take(), ElementsAre("258 0", "258 24", "258 128"));
}

TEST_F(PrefixLens, DoNotNotifyOfALengthThatIsThere) {
  lengths->prefixLenIs(24);
  static_cast<void>(journal->take());
  lengths->prefixLenIs(24);
  EXPECT_EQ(lengths->prefixLens(), 1u);
  EXPECT_THAT(journal->take(), IsEmpty());
}

TEST_F(PrefixLens, NotifyOfALengthThatLeavesOnce) {
  lengths->prefixLenIs(24);
  static_cast<void>(journal->take());
  EXPECT_TRUE(lengths->prefixLenDel(24));
  EXPECT_FALSE(lengths->prefixLenHas(24));
  EXPECT_FALSE(lengths->prefixLenDel(24));
  EXPECT_THAT(journal->take(), ElementsAre("258 24"));
}

TEST_F(PrefixLens, NotifyOfEveryLengthThatLeavesTogether) {
  lengths->prefixLenIs(32);
  lengths->prefixLenIs(8);
  lengths->prefixLenIs(128);
  static_cast<void>(journal->take());
  lengths->prefixLenDelAll();
  EXPECT_EQ(lengths->prefixLens(), 0u);
  EXPECT_THAT(journal->take(), ::testing::UnorderedElementsAre("258 8", "258 32", "258 128"));
  lengths->prefixLenDelAll();
  EXPECT_THAT(journal->take(), IsEmpty());
}

TEST_F(PrefixLens, RefuseALengthThatNoFamilyHas) {
  try {
    lengths->prefixLenIs(129);
    FAIL() << "accepted";
  } catch (const Mox::RangeException& error) {
    EXPECT_STREQ(error.what(), "prefix length 129: expected 0 to 128");
  }
  EXPECT_THROW(lengths->prefixLenIs(255), Mox::RangeException);
  EXPECT_FALSE(lengths->prefixLenHas(129));
  EXPECT_FALSE(lengths->prefixLenDel(255));
  EXPECT_EQ(lengths->prefixLens(), 0u);
  EXPECT_THAT(journal->take(), IsEmpty());
}

}  // namespace
}  // namespace Routing::Hardware
