// The reference machine and the VRF statuses: one nested machine per VRF.

#include "Messages.h"
#include "PlainVrfSm.h"

namespace VrfModel {

void PlainVrfSm::instanceIs(const std::shared_ptr<VrfStatus>& status) {
  const auto [entry, isNew] = instances_.try_emplace(status->name);
  Instance& instance = entry->second;
  if (isNew) {
    instance.watched = status;
    expected_.message(Messages::instanceInitialized(status->name, status->id));
  } else if (instance.watched != status) {
    instance.watched = status;
    if (!instance.isZombie) handleId(instance);
  }
  instanceZombieIs(instance, isZombie_);
}

void PlainVrfSm::instanceDel(const Name& name) {
  const auto found = instances_.find(name);
  if (found == instances_.end()) return;
  Instance instance = found->second;
  instances_.erase(found);
  instanceZombieIs(instance, true);
}

void PlainVrfSm::instanceZombieIs(Instance& instance, bool zombie) {
  if (instance.isZombie == zombie) return;
  instance.isActive = !zombie;
  instance.isZombie = zombie;
  expected_.message(Messages::instanceRemoved(instance.watched->name, instance.watched->id));
  handleUpdates(instance.watched->name, false);
}

void PlainVrfSm::idChanged(const VrfStatus& status) {
  for (const auto& [name, instance] : instances_) {
    const bool isNotified = instance.watched.get() == &status && instance.isActive;
    if (isNotified && !instance.isZombie) handleId(instance);
  }
}

void PlainVrfSm::handleId(const Instance& instance) {
  const VrfStatus& status = *instance.watched;
  expected_.message(Messages::instanceId(status.name, status.id));
  if (status.name == defaultVrf) return;
  if (status.id == 0) {
    expected_.message(Messages::instanceIdNotAssigned());
  } else {
    handleUpdates(status.name, false);
  }
}

}  // namespace VrfModel
