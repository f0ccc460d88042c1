#include "FactsHardware.h"

#include "testing/Shown.h"

namespace ZelVrfSelectionPolicy::Testing {
namespace {

std::string lengthsOf(const Mox::Ptr<Routing::Hardware::PrefixLensInExactMatch>& lens) {
  std::string text;
  if (!lens) return text;
  std::size_t left = lens->lengths().count();
  for (unsigned length = 0; left != 0; ++length) {
    if (!lens->lengths()[length]) continue;
    text += "/" + std::to_string(length);
    --left;
  }
  return text;
}

std::string factsOf(const Facts& facts, const L3::VrfName& name) {
  std::string text;
  L3::VrfName each = name;
  for (unsigned depth = 0; depth < 3 && !each.empty(); ++depth) {
    const std::string bytes = each.str();
    const auto vrf = facts.routes->vrfStatus(each);
    text += (depth == 0 ? " " : ">") + bytes + "=" + std::to_string(vrf ? vrf->vrfId() : 0U);
    text += lengthsOf(facts.routes->vrfPrefixLensInExactMatch(bytes)) + ":";
    text += lengthsOf(facts.routes6->vrfPrefixLensInExactMatch(bytes));
    each = facts.fallback->fallbackVrf(each);
  }
  return text;
}

}  // namespace

std::string Facts::programOf(const VrfAction& action) const {
  return factsOf(*this, action.vrfName()) + factsOf(*this, action.fallbackVrfName()) +
         factsOf(*this, action.postDecapVrfName()) + (routes->decapNhEnabled() ? " decap" : "") +
         (routes->decapNhFallbackEnabled() ? " decap-fallback" : "");
}

// Numbers the calls that are not inside another.
class FactsHardware::Call {
 public:
  Call(FactsHardware& hardware, const std::string& line)
      : hardware_(hardware), isOuter_(hardware.depth_++ == 0) {
    hardware_.calls_.push_back(line);
    if (isOuter_) number_ = ++hardware_.outerCalls_;
  }
  Call(const Call&) = delete;
  Call& operator=(const Call&) = delete;
  ~Call() { --hardware_.depth_; }

  void perform(const Work& work) const {
    if (isOuter_ && work) work(number_);
  }

 private:
  FactsHardware& hardware_;
  bool isOuter_;
  unsigned number_ = 0;
};

HwStatus FactsHardware::create(const VrfAction& action) {
  const Call call(*this, "createVrf " + shown(action));
  call.perform(before);
  programs_[shown(action)] = facts_.programOf(action);
  call.perform(after);
  performLifecycleWork();
  return {};
}

HwStatus FactsHardware::update(const VrfAction& action) {
  const Call call(*this, "updateVrf " + shown(action));
  call.perform(before);
  const auto present = programs_.find(shown(action));
  if (present != programs_.end()) present->second = facts_.programOf(action);
  call.perform(after);
  return {};
}

void FactsHardware::remove(const VrfAction& action) {
  const Call call(*this, "deleteVrf " + shown(action));
  call.perform(before);
  programs_.erase(shown(action));
  call.perform(after);
  performLifecycleWork();
}

void FactsHardware::performLifecycleWork() {
  if (const auto work = std::exchange(inNextLifecycleCall, nullptr)) work();
}

}  // namespace ZelVrfSelectionPolicy::Testing
