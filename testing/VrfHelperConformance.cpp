#include "testing/VrfHelperConformance.h"

#include <cstdint>
#include <iomanip>
#include <iostream>
#include <sstream>

#include "testing/conformance/Bench.h"
#include "testing/conformance/TestFiles.h"

namespace ZelVrfSelectionPolicy::Testing {
namespace {

using Conformance::HookTimes;

double microseconds(HookTimes::Duration duration) {
  return std::chrono::duration<double, std::micro>(duration).count();
}

std::string text(double number) {
  std::ostringstream stream;
  stream << std::fixed << std::setprecision(1) << number;
  return stream.str();
}

void report(const std::string& hook, const HookTimes& times) {
  if (times.calls == 0) return;
  const std::string mean = text(microseconds(times.total) / static_cast<double>(times.calls));
  const std::string longest = text(microseconds(times.longest));
  ::testing::Test::RecordProperty(hook + "Calls", std::to_string(times.calls));
  ::testing::Test::RecordProperty(hook + "MeanMicroseconds", mean);
  ::testing::Test::RecordProperty(hook + "LongestMicroseconds", longest);
  std::cout << hook << ": " << times.calls << " calls, mean " << mean << " us, longest " << longest
            << " us\n";
}

}  // namespace

VrfHelperConformance::VrfHelperConformance() = default;
VrfHelperConformance::~VrfHelperConformance() = default;

void VrfHelperConformance::SetUp() {
  bench_ = std::make_unique<Conformance::Bench>(GetParam().make());
}

void VrfHelperConformance::TearDown() {
  if (!bench_) return;
  report("createVrf", bench_->watched().creations());
  report("updateVrf", bench_->watched().updates());
  report("deleteVrf", bench_->watched().deletions());
}

namespace Conformance {

void linkTestFiles() {
  linkOutcomeTests();
  linkExhaustionTests();
  linkFailureTests();
  linkUpdateTests();
  linkDeletionTests();
  linkLibraryTests();
}

}  // namespace Conformance
}  // namespace ZelVrfSelectionPolicy::Testing
