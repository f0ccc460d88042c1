#include "chips/programs/AskedPrograms.h"

namespace Chips {
namespace {

std::set<L3::VrfName> vrfsOf(const VrfProgram& program) {
  std::set<L3::VrfName> vrfs;
  for (const VrfWalk* const walk : {&program.lookUp, &program.fallback, &program.postDecap}) {
    for (const VrfFacts& facts : *walk)
      vrfs.insert(facts.name);
  }
  return vrfs;
}

}  // namespace

void AskedPrograms::programIs(const VrfAction& action, const VrfProgram& program) {
  VrfProgram& asked = programs_[action];
  if (asked == program) return;
  const std::set<L3::VrfName> before = vrfsOf(asked);
  const std::set<L3::VrfName> now = vrfsOf(program);
  asked = program;
  for (const L3::VrfName& vrf : now)
    byVrf_[vrf].insert(action);
  for (const L3::VrfName& vrf : before) {
    if (!now.contains(vrf)) unlink(action, vrf);
  }
}

void AskedPrograms::programDel(const VrfAction& action) {
  const auto found = programs_.find(action);
  if (found == programs_.end()) return;
  for (const L3::VrfName& vrf : vrfsOf(found->second))
    unlink(action, vrf);
  programs_.erase(found);
}

const VrfProgram* AskedPrograms::program(const VrfAction& action) const {
  const auto found = programs_.find(action);
  return found == programs_.end() ? nullptr : &found->second;
}

const std::set<AskedPrograms::VrfAction>& AskedPrograms::actionsWith(const L3::VrfName& vrf) const {
  static const std::set<VrfAction> none;
  const auto found = byVrf_.find(vrf);
  return found == byVrf_.end() ? none : found->second;
}

void AskedPrograms::unlink(const VrfAction& action, const L3::VrfName& vrf) {
  const auto found = byVrf_.find(vrf);
  if (found->second.erase(action) != 0 && found->second.empty()) byVrf_.erase(found);
}

}  // namespace Chips
