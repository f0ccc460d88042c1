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

// Returns the result of the hook, or `thrown` if it throws.
template <class Result, class Call>
Result watched(const char* hook, const VrfAction& action, HookTimes& times, Result thrown,
               const Call& call) {
  try {
    const Stopwatch stopwatch(times);
    return call();
  } catch (const std::exception& exception) {
    complain(hook, action, exception.what());
  } catch (...) {
    complain(hook, action, "something that is no std::exception");
  }
  return thrown;
}

}  // namespace

WatchedVrfHelper::WatchedVrfHelper(const Mox::Ptr<VrfHelper>& chip)
    : VrfHelper(chip->nameString(), chip->vrfFallbackConfig(), chip->routingHwRouteStatus(),
                chip->routing6HwRouteStatus()),
      chip_(chip) {}

HwStatus WatchedVrfHelper::createVrf(const VrfAction& action) {
  return watched("createVrf", action, creations_, failed(),
                 [&] { return chip_->createVrf(action); });
}

HwStatus WatchedVrfHelper::updateVrf(const VrfAction& action) {
  return watched("updateVrf", action, updates_, failed(), [&] { return chip_->updateVrf(action); });
}

void WatchedVrfHelper::deleteVrf(const VrfAction& action) {
  watched("deleteVrf", action, deletions_, true, [&] {
    chip_->deleteVrf(action);
    return true;
  });
}

}  // namespace ZelVrfSelectionPolicy::Testing::Conformance
