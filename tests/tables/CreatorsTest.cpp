// A table has notifications on from the start, which its creators see to. So nothing else makes
// one.

#include <gtest/gtest.h>

#include <type_traits>

#include "ZelVrfSelectionPolicy/tables/VrfHwConfig.h"
#include "ZelVrfSelectionPolicy/tables/VrfHwStatus.h"

namespace ZelVrfSelectionPolicy {
namespace {

// What `Mox::makePtr` does.
template <class Entity>
concept MadeByNew = requires {
  new Entity();
};

static_assert(!std::is_default_constructible_v<VrfHwConfig>);
static_assert(!std::is_default_constructible_v<VrfHwStatus>);
static_assert(!std::is_copy_constructible_v<VrfHwConfig>);
static_assert(!std::is_copy_constructible_v<VrfHwStatus>);
static_assert(!std::is_move_constructible_v<VrfHwConfig>);
static_assert(!std::is_move_constructible_v<VrfHwStatus>);
static_assert(!MadeByNew<VrfHwConfig>);
static_assert(!MadeByNew<VrfHwStatus>);
// The concept holds of what anybody may make.
struct Anything {};
static_assert(MadeByNew<Anything>);

template <class Table>
void expectMade(const Mox::Ptr<Table>& table) {
  ASSERT_NE(table, nullptr);
  EXPECT_TRUE(table->hasNotificationActive());
  EXPECT_FALSE(table->isZombie());
  EXPECT_EQ(table->references(), 1U);
}

TEST(TableCreators, MakeEmptyTablesWithNotificationsOn) {
  expectMade(vrfHwConfigFactory());
  expectMade(VrfHwConfig::VrfHwConfigIs());
  expectMade(vrfHwStatusFactory());
  expectMade(VrfHwStatus::VrfHwStatusIs());
  EXPECT_EQ(vrfHwConfigFactory()->vrfRefCount().count(), 0U);
  EXPECT_EQ(vrfHwStatusFactory()->hwStatus().count(), 0U);
}

TEST(TableCreators, MakeATableOfItsOwnEachTime) {
  const auto users = vrfHwConfigFactory();
  const auto statuses = vrfHwStatusFactory();
  EXPECT_NE(users, vrfHwConfigFactory());
  EXPECT_NE(statuses, vrfHwStatusFactory());
}

}  // namespace
}  // namespace ZelVrfSelectionPolicy
