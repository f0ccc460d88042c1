#include "Routing/Hardware/VrfStatus.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/platform/ReactorJournal.h"

namespace Routing::Hardware {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

class VrfStatusTest : public ::testing::Test {
 protected:
  Mox::Ptr<VrfStatus> status = VrfStatus::VrfStatusIs("red");
  Mox::Ptr<PlatformTests::ReactorJournal> journal = Mox::makePtr<PlatformTests::ReactorJournal>(
      status, PlatformTests::ReactorJournal::KeyReaders{
                  {VrfStatus::vrfIdAttribute, PlatformTests::shownKey<PlatformTests::NoKey>}});
};

TEST_F(VrfStatusTest, BeginsWithItsNameAndNoId) {
  EXPECT_EQ(status->name(), L3::VrfName("red"));
  EXPECT_EQ(status->vrfId(), 0u);
  EXPECT_TRUE(status->hasNotificationActive());
  EXPECT_EQ(status->fwkType()->name, "Routing::Hardware::VrfStatus");
}

TEST_F(VrfStatusTest, NotifiesOfItsIdByItsNumber) {
  EXPECT_EQ(VrfStatus::vrfIdAttribute, 259);
  status->vrfIdIs(7);
  EXPECT_EQ(status->vrfId(), 7u);
  EXPECT_THAT(journal->take(), ElementsAre("259 "));
  status->vrfIdIs(0);
  EXPECT_EQ(status->vrfId(), 0u);
  EXPECT_THAT(journal->take(), ElementsAre("259 "));
  status->vrfIdIs(0xffffffff);
  EXPECT_EQ(status->vrfId(), 0xffffffffu);
}

TEST_F(VrfStatusTest, DoesNotNotifyOfAnIdThatItHas) {
  status->vrfIdIs(0);
  EXPECT_THAT(journal->take(), IsEmpty());
  status->vrfIdIs(7);
  static_cast<void>(journal->take());
  status->vrfIdIs(7);
  EXPECT_THAT(journal->take(), IsEmpty());
}

}  // namespace
}  // namespace Routing::Hardware
