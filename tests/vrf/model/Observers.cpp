#include "Observers.h"

#include <cstdio>
#include <cstdlib>

#include "Conversions.h"

namespace VrfModel {

using ZelVrfSelectionPolicy::HwStatus;
using ZelVrfSelectionPolicy::VrfAction;

namespace {

// Far more than any event causes.
constexpr std::size_t mostCallsOfAnEvent = 100000;

}  // namespace

HwStatus ChipDouble::createVrf(const VrfAction& action) {
  return program(Hook::createVrf, action);
}

HwStatus ChipDouble::updateVrf(const VrfAction& action) {
  return program(Hook::updateVrf, action);
}

void ChipDouble::deleteVrf(const VrfAction& action) {
  observed_.hooks.push_back({Hook::deleteVrf, plain(action)});
}

HwStatus ChipDouble::program(Hook hook, const VrfAction& action) {
  if (observed_.hooks.size() == mostCallsOfAnEvent) {
    std::fputs("the chip is called without end\n", stderr);
    std::abort();
  }
  const Action asked = plain(action);
  observed_.hooks.push_back({hook, asked});
  return real(outcomeOf(asked, calls_[asked]++));
}

NoticeRecorder::NoticeRecorder(Table table, Velo::Publisher& publisher, Observed& observed)
    : table_(table), publisher_(publisher), observed_(observed), subscriber_(*this) {
  subscriber_.dispatch = [](Velo::Publisher*, Velo::Subscriber* subscriber, short attribute,
                            const void* key, const void*) {
    const NoticeRecorder& recorder = Subscriber::ownerOf(subscriber);
    const Action action = plain(*static_cast<const VrfAction*>(key));
    recorder.observed_.notices.push_back({recorder.table_, attribute, action});
  };
  publisher_.subscriberIs(subscriber_);
}

}  // namespace VrfModel
