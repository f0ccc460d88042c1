#include "Zel/ZelBaseHelper.h"

#include <gtest/gtest.h>

namespace Zel {
namespace {

class Helper final : public ZelBaseHelper {
 public:
  explicit Helper(const Velo::String& name) : ZelBaseHelper(name) {}
};

TEST(ZelBaseHelper, IsAnEntityThatIsShownByItsName) {
  const Mox::Ptr<Mox::Entity> helper = Mox::makePtr<Helper>("chip");
  EXPECT_EQ(helper->name().bytes(), "chip");
  EXPECT_EQ(helper->nameString().bytes(), "chip");
  EXPECT_EQ(helper->parent(), nullptr);
}

}  // namespace
}  // namespace Zel
