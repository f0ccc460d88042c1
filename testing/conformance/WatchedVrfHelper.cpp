#include "testing/conformance/WatchedVrfHelper.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <exception>
#include <string>

#include "Mox/QuotedString.h"
#include "testing/Shown.h"
#include "testing/conformance/Contract.h"

namespace ZelVrfSelectionPolicy::Testing::Conformance {
namespace {

class Stopwatch {
 public:
  explicit Stopwatch(HookTimes& times) noexcept : times_(times) {}
  Stopwatch(const Stopwatch&) = delete;
  Stopwatch& operator=(const Stopwatch&) = delete;
  ~Stopwatch() {
    const HookTimes::Duration elapsed = std::chrono::steady_clock::now() - begun_;
    ++times_.calls;
    times_.total += elapsed;
    times_.longest = std::max(times_.longest, elapsed);
  }

 private:
  HookTimes& times_;
  std::chrono::steady_clock::time_point begun_ = std::chrono::steady_clock::now();
};

void complain(const char* hook, const VrfAction& action, const std::string& thrown) {
  ADD_FAILURE() << hook << " of " << Mox::quoted(shown(action)) << " threw " << thrown << '\n'
                << contract("a failure is data in the returned record, never an exception");
}

HwStatus failed() {
  HwStatus status;
  status.statusIs(ProgrammingResult::programmingFailure);
  status.failureReasonIs(FailureCode::failureVrfResourceAlloc);
  status.failureDescriptionIs("the hook threw");
  return status;
}

// Calls the hook. If it throws, the running test fails.
template <class Call>
void watch(const char* hook, const VrfAction& action, HookTimes& times, const Call& call) {
  try {
    const Stopwatch stopwatch(times);
    call();
  } catch (const std::exception& exception) {
    complain(hook, action, exception.what());
  } catch (...) {
    complain(hook, action, "something that is no std::exception");
  }
}

}  // namespace

WatchedVrfHelper::WatchedVrfHelper(const Mox::Ptr<VrfHelper>& chip)
    : VrfHelper(chip->nameString(), chip->vrfFallbackConfig(), chip->routingHwRouteStatus(),
                chip->routing6HwRouteStatus()),
      chip_(chip) {}

HwStatus WatchedVrfHelper::createVrf(const VrfAction& action) {
  HwStatus status = failed();
  watch("createVrf", action, creations_, [&] { status = chip_->createVrf(action); });
  return status;
}

HwStatus WatchedVrfHelper::updateVrf(const VrfAction& action) {
  HwStatus status = failed();
  watch("updateVrf", action, updates_, [&] { status = chip_->updateVrf(action); });
  return status;
}

void WatchedVrfHelper::deleteVrf(const VrfAction& action) {
  watch("deleteVrf", action, deletions_, [&] { chip_->deleteVrf(action); });
}

}  // namespace ZelVrfSelectionPolicy::Testing::Conformance
