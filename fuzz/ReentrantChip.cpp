#include "fuzz/ReentrantChip.h"

#include <utility>

#include "fuzz/Must.h"
#include "tests/vrf/model/Conversions.h"
#include "tests/vrf/model/Outcome.h"

namespace Fuzz {

using VrfModel::plain;
using VrfModel::real;
using ZelVrfSelectionPolicy::HwStatus;
using ZelVrfSelectionPolicy::VrfAction;
using ZelVrfSelectionPolicy::VrfHwStatus;

ReentrantChip::ReentrantChip(Interruption interruption)
    : VrfHelper("reentrant", nullptr, nullptr, nullptr), interruption_(std::move(interruption)) {}

ReentrantChip::~ReentrantChip() = default;

HwStatus ReentrantChip::createVrf(const VrfAction& action) {
  const VrfModel::Action key = plain(action);
  const auto [entry, isNew] = resources_.try_emplace(key);
  must(isNew, "what is created does not exist");
  Resource& resource = entry->second;  // stays valid: no deletion during the creation
  resource.number = ++created_;
  interruption_("createVrf " + shown(key));
  must(resource.stage == Stage::creation, "a creation is not interrupted by a deletion");
  resource.stage = Stage::existence;
  resource.reported = nextOutcome(key);
  return resource.reported;
}

HwStatus ReentrantChip::updateVrf(const VrfAction& action) {
  const VrfModel::Action key = plain(action);
  const auto before = resources_.find(key);
  must(before != resources_.end(), "what is updated exists");
  must(before->second.stage == Stage::existence, "no update during a creation or deletion");
  const unsigned number = before->second.number;
  interruption_("updateVrf " + shown(key));
  const HwStatus outcome = nextOutcome(key);
  const auto after = resources_.find(key);
  const bool isSame = after != resources_.end() && after->second.number == number;
  if (isSame) after->second.reported = outcome;
  return outcome;
}

void ReentrantChip::deleteVrf(const VrfAction& action) {
  const VrfModel::Action key = plain(action);
  const auto entry = resources_.find(key);
  must(entry != resources_.end(), "what is deleted exists");
  must(entry->second.stage == Stage::existence, "it is deleted once, after its creation");
  entry->second.stage = Stage::deletion;
  interruption_("deleteVrf " + shown(key));
  resources_.erase(key);
}

bool ReentrantChip::isUnderWay(const VrfAction& action) const {
  const auto found = resources_.find(plain(action));
  return found != resources_.end() && found->second.stage != Stage::existence;
}

void ReentrantChip::check(const VrfHwStatus& statuses) const {
  must(statuses.hwStatus().count() == resources_.size(), "there is a status for each resource");
  for (const auto& [key, resource] : resources_) {
    const VrfAction action = real(key);
    must(statuses.hwStatusHas(action), "each resource has a status");
    must(statuses.hwStatus(action) == resource.reported, "it is what was reported last");
  }
}

HwStatus ReentrantChip::nextOutcome(const VrfModel::Action& action) {
  return real(VrfModel::outcomeOf(action, calls_[action]++));
}

}  // namespace Fuzz
