#include "testing/conformance/Bench.h"

#include <ostream>
#include <stdexcept>
#include <string_view>

#include "testing/Shown.h"

namespace ZelVrfSelectionPolicy::Testing::Conformance {
namespace {

using namespace std::string_view_literals;

// VRF names may have any bytes, at most 100.
const std::vector<L3::VrfName>& oddNames() {
  static const std::vector<L3::VrfName> names = {"two\nlines",
                                                 "tab\there",
                                                 "\x1b[31mred",
                                                 "\xff\xfe",
                                                 "nul\0byte"sv,
                                                 "\"quoted\" 'name' \\",
                                                 std::string(L3::VrfName::maxLength, '\x01')};
  return names;
}

Mox::Ptr<WatchedVrfHelper> watchedHelper(ChipUnderTest* chip, const ChipFacts& facts) {
  if (chip == nullptr) throw std::invalid_argument("there is no chip under test");
  const Mox::Ptr<VrfHelper> helper = chip->makeHelper(facts);
  if (!helper) throw std::invalid_argument("makeHelper must return a helper, it returned null");
  return Mox::makePtr<WatchedVrfHelper>(helper);
}

}  // namespace

std::ostream& operator<<(std::ostream& stream, const Occupancy& occupancy) {
  return stream << occupancy.count
                << (occupancy.isReported ? " resources in use" : " more actions that fit");
}

std::string result(const HwStatus& status) {
  return isProgrammed(status) ? "programmed" : shown(status);
}

Bench::Bench(std::unique_ptr<ChipUnderTest> chip)
    : chip_(std::move(chip)), helper_(watchedHelper(chip_.get(), facts_)) {
  for (const char* vrf : {"red", "blue", "green", "default"})
    idIs(vrf);
}

VrfAction Bench::plain(const L3::VrfName& vrf) {
  idIs(vrf);
  return {vrf, PolicyMap::ActionType::vrf};
}

VrfAction Bench::numbered(std::size_t number) {
  return plain("vrf-" + std::to_string(number));
}

VrfAction Bench::decapsulating() {
  VrfAction action("red", PolicyMap::ActionType::decapVrf);
  action.fallbackVrfNameIs("blue");
  action.postDecapVrfNameIs("green");
  return action;
}

VrfAction Bench::withoutId(const L3::VrfName& vrf) const {
  facts_.routes->vrfStatusDel(vrf);
  return {vrf, PolicyMap::ActionType::vrf};
}

void Bench::idIs(const L3::VrfName& vrf) {
  const auto status = facts_.routes->vrfStatusIs(vrf);
  if (status->vrfId() == 0) status->vrfIdIs(++lastId_);
}

std::size_t Bench::creationsToFill() const {
  const std::optional<std::size_t> capacity = chip_->capacity();
  return capacity ? *capacity + 1 : chip_->mostCreations();
}

Filling Bench::fill() {
  Filling filling;
  const std::size_t most = creationsToFill();
  for (std::size_t number = 1; number <= most; ++number) {
    const VrfAction action = numbered(number);
    const HwStatus status = create(action);
    if (!isProgrammed(status)) {
      filling.refused = action;
      filling.refusal = status;
      break;
    }
    filling.held.push_back(action);
  }
  return filling;
}

void Bench::empty(const Filling& filling) {
  if (filling.refusal) remove(filling.refused);
  for (const VrfAction& action : filling.held)
    remove(action);
}

Occupancy Bench::occupancy() {
  if (const auto inUse = chip_->resourcesInUse()) return {true, *inUse};
  const Filling filling = fill();
  empty(filling);
  return {false, filling.held.size()};
}

std::vector<Outcome> Bench::failureOutcomes() {
  std::vector<Outcome> outcomes;
  for (const L3::VrfName& name : oddNames())
    createUpdateDelete(withoutId(name), "without a hardware id", outcomes);
  if (chip_->failNextHook())
    createUpdateDelete(plain("red"), "that the hardware refuses", outcomes);
  const Filling filling = fill();
  for (const L3::VrfName& name : oddNames())
    createUpdateDelete(plain(name), "on a full chip", outcomes);
  empty(filling);
  return outcomes;
}

void Bench::createUpdateDelete(const VrfAction& action, const std::string& what,
                               std::vector<Outcome>& outcomes) {
  const std::string of = "Vrf of " + valueToStrep(action).str() + " " + what;
  outcomes.push_back({"create" + of, create(action)});
  outcomes.push_back({"update" + of, update(action)});
  remove(action);
}

}  // namespace ZelVrfSelectionPolicy::Testing::Conformance
