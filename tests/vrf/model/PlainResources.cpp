// The reference machine and the chip: when resources are created, updated and deleted.

#include "Messages.h"
#include "PlainVrfSm.h"

namespace VrfModel {

Stop PlainVrfSm::stopOf(const Action& action, const unsigned* count) const {
  if (tables_.isCreated(action)) return Stop::none;
  if (count == nullptr || *count == 0) return Stop::uncreatedDeletion;
  return *count == 1 ? Stop::none : Stop::invalidIncrement;
}

void PlainVrfSm::handleCount(const Action& action) {
  const unsigned* count = tables_.count(action);
  if (count == nullptr || *count == 0) {
    remove(action);
  } else if (*count == 1 && !tables_.isCreated(action)) {
    create(action);
  } else {
    expected_.message(Messages::alreadyInUse(action.vrf, *count));
  }
}

void PlainVrfSm::create(const Action& action) {
  const Status status = program(Hook::createVrf, action);
  if (status.result == 1) expected_.message(Messages::createFailed(action.vrf, status.reason));
  tables_.statusIs(action, status);
}

void PlainVrfSm::remove(const Action& action) {
  expected_.hook(Hook::deleteVrf, action);
  expected_.message(Messages::deleting(action.vrf));
  tables_.countDel(action);
  tables_.statusDel(action);
}

void PlainVrfSm::updateOne(const Action& action) {
  expected_.message(Messages::updatingOne(action.vrf));
  tables_.statusIs(action, program(Hook::updateVrf, action));
}

void PlainVrfSm::updateAll(const Name& vrf) {
  expected_.message(Messages::updatingAll(vrf));
  const Expected::AnyOrder anyOrder(expected_);
  for (const auto& [action, status] : tables_.statuses()) {
    if (!action.involves(vrf)) continue;
    expected_.message(Messages::updatingOneOfAll(vrf));
    tables_.statusIs(action, program(Hook::updateVrf, action));
  }
}

void PlainVrfSm::handleDecapNh() {
  expected_.message(Messages::decapNh(routes(v4)->decapNh));
  const Expected::AnyOrder anyOrder(expected_);
  for (const auto& [action, status] : tables_.statuses()) {
    expected_.message(Messages::decapNhAction(action.type));
    updateOne(action);
  }
}

// The message has the flag of `handleDecapNh`, as in the library.
void PlainVrfSm::handleDecapNhFallback() {
  expected_.message(Messages::decapNhFallback(routes(v4)->decapNh));
  const Expected::AnyOrder anyOrder(expected_);
  for (const auto& [action, status] : tables_.statuses())
    updateOne(action);
}

Status PlainVrfSm::program(Hook hook, const Action& action) {
  expected_.hook(hook, action);
  return outcomeOf(action, chipCalls_[action]++);
}

}  // namespace VrfModel
