#include "World.h"

#include <gtest/gtest.h>

#include <stdexcept>

#include "Mox/TraceHandle.h"
#include "testing/RecordingAclHelper.h"

namespace ZelVrfSelectionPolicy::Testing {
namespace {

void silence() {
  Mox::traceLevelsIs("ZelVrfSelection=0");  // that of no message
}

}  // namespace

World::World()
    : fallback(VrfSelectionPolicy::VrfSelectionFallbackVrf::VrfSelectionFallbackVrfIs()),
      routes(Routing::Hardware::RouteStatus::RouteStatusIs()),
      routes6(Routing6::Hardware::RouteStatus::RouteStatusIs()),
      policyHelper(Mox::makePtr<RecordingAclHelper>(journal)),
      chip(Mox::makePtr<RecordingVrfHelper>(journal, fallback, routes, routes6)),
      top(zelVrfSelectionPolicySmFactory(policyHelper, mounts, chip, fallback, routes, routes6)) {
  silence();
  fallback->fallbackVrfIs("red", "blue");
  routes->vrfStatusIs("red")->vrfIdIs(7);
  routes->vrfPrefixLensInExactMatchIs("red");
  routes6->vrfPrefixLensInExactMatchIs("red");
  vrfSm = top->vrfSmIs(users, statuses, chip, fallback, routes, routes6);
  users->vrfRefCountIs(inRed, 1);
  instance = *vrfSm->moxVrfInstance().find("red");
  dependents = vrfSm->dependentVrfInfo("blue");
  static_cast<void>(journal.take());
}

World::~World() {
  silence();
}

Mox::Object World::object(std::string_view typeName) {
  if (typeName == "VrfAction") return action;
  if (typeName == "HwStatus") return status;
  if (typeName == "VrfHwConfig") return *users;
  if (typeName == "VrfHwStatus") return *statuses;
  if (typeName == "DependentVrfInfo") return *dependents;
  if (typeName == "PolicySmMounts") return *mounts;
  if (typeName == "VrfHelper") return *chip;
  if (typeName == "ZelVrfSelectionPolicySm") return *top;
  if (typeName == "VrfSm") return *vrfSm;
  if (typeName == "VrfSm::VrfInstanceSm") return *instance;
  throw std::invalid_argument("no object of type " + std::string(typeName));
}

const Mox::Type& typeNamed(std::string_view name) {
  const std::string whole = "ZelVrfSelectionPolicy::" + std::string(name);
  const Mox::Type* type = Mox::moxType(whole);
  if (type == nullptr) throw std::invalid_argument("no type is registered as " + whole);
  return *type;
}

}  // namespace ZelVrfSelectionPolicy::Testing
