// The software chip keeps the contract of VrfHelper.

#include <cstdint>
#include <sstream>

#include "chips/soft/SoftVrfHelper.h"
#include "testing/VrfHelperConformance.h"

namespace ZelVrfSelectionPolicy::Testing {
namespace {

class SoftChipUnderTest final : public ChipUnderTest {
 public:
  explicit SoftChipUnderTest(std::uint32_t capacity) : capacity_(capacity) {}

  Mox::Ptr<VrfHelper> makeHelper(const ChipFacts& facts) override {
    const Chips::ProgramInputs inputs{facts.fallbacks, facts.routes, facts.routes6};
    chip_ = Mox::makePtr<Chips::SoftVrfHelper>("soft chip", inputs, capacity_);
    return chip_;
  }
  std::optional<std::size_t> resourcesInUse() const override { return chip_->resources().size(); }
  std::optional<std::size_t> capacity() const override { return capacity_; }
  std::optional<std::string> programOf(const VrfAction& action) const override {
    const Chips::VrfResource* const resource = chip_->resource(action);
    if (resource == nullptr) return std::nullopt;
    std::ostringstream text;
    text << resource->program;
    return text.str();
  }
  bool failNextHook() override {
    chip_->faultPlan().anyFaultsIs(1);
    return true;
  }

 private:
  std::uint32_t capacity_;
  Mox::Ptr<Chips::SoftVrfHelper> chip_;
};

INSTANTIATE_TEST_SUITE_P(SoftChip, VrfHelperConformance,
                         ::testing::Values(chipUnderTest<SoftChipUnderTest>(3U),
                                           chipUnderTest<SoftChipUnderTest>(1024U)));

}  // namespace
}  // namespace ZelVrfSelectionPolicy::Testing
