// The reference machine and the prefix lengths: one nested machine per VRF and family.

#include "Messages.h"
#include "PlainVrfSm.h"

namespace VrfModel {

void PlainVrfSm::lensSmIs(unsigned family, const std::shared_ptr<PrefixLens>& lens) {
  const auto [entry, isNew] = lensSms_.at(family).try_emplace(lens->name);
  LensSm& machine = entry->second;
  if (!isNew && machine.watched == lens) return;
  machine.watched = lens;
  if (isNew) {
    expected_.message(Messages::lensInitialized(family, lens->name));
    handleUpdates(lens->name, false);
  }
  lensSmZombieIs(family, machine, isZombie_);
}

void PlainVrfSm::lensSmDel(unsigned family, const Name& name) {
  LensSms& machines = lensSms_.at(family);
  const auto found = machines.find(name);
  if (found == machines.end()) return;
  LensSm machine = found->second;
  machines.erase(found);
  lensSmZombieIs(family, machine, true);
}

void PlainVrfSm::lensSmZombieIs(unsigned family, LensSm& machine, bool zombie) {
  if (machine.isZombie == zombie) return;
  machine.isActive = !zombie;
  machine.isZombie = zombie;
  handleLengths(family, machine);
}

void PlainVrfSm::lengthsChanged(const PrefixLens& lens) {
  for (const unsigned family : {v4, v6}) {
    for (const auto& [name, machine] : lensSms_.at(family)) {
      const bool isNotified = machine.watched.get() == &lens && machine.isActive;
      if (isNotified && !machine.isZombie) handleLengths(family, machine);
    }
  }
}

void PlainVrfSm::handleLengths(unsigned family, const LensSm& machine) {
  expected_.message(Messages::lensChanged(family, machine.watched->name));
  handleUpdates(machine.watched->name, false);
}

}  // namespace VrfModel
