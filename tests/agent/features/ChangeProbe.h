// Sends packets into an agent from inside of everything that it tells while a change is under way:
// calls of the chip, counts of users, and statuses of actions and of rules.
#pragma once

#include <functional>

#include "Velo/Subscriber.h"
#include "agent/model/forwarding/ForwardingAgent.h"

namespace ZelAgent {

class ChangeProbe final {
 public:
  using Probe = std::function<void()>;

  // Follows the agent as long as it lives.
  ChangeProbe(ForwardingAgent& agent, Probe probe) : agent_(agent), probe_(std::move(probe)) {
    subscriber_.dispatch = [](Velo::Publisher*, Velo::Subscriber* subscriber, short, const void*,
                              const void*) { Subscriber::ownerOf(subscriber).take(); };
    agent_.chip().hookObserverIs([this](const Chips::HookCall&) { take(); });
    users().publisher().subscriberIs(subscriber_);
    statuses().publisher().subscriberIs(subscriber_);
    ruleStatuses().publisher().subscriberIs(subscriber_);
  }
  ChangeProbe(const ChangeProbe&) = delete;
  ChangeProbe& operator=(const ChangeProbe&) = delete;
  ~ChangeProbe() {
    ruleStatuses().publisher().subscriberDel(subscriber_);
    statuses().publisher().subscriberDel(subscriber_);
    users().publisher().subscriberDel(subscriber_);
    agent_.chip().hookObserverIs({});
  }

  // How often packets were sent.
  [[nodiscard]] unsigned taken() const { return taken_; }

 private:
  using Subscriber = Velo::MemberSubscriber<ChangeProbe>;

  void take() {
    ++taken_;
    probe_();
  }

  [[nodiscard]] const ZelVrfSelectionPolicy::VrfHwConfig& users() const {
    return *agent_.policySm().vrfSm()->vrfHwConfig();
  }
  [[nodiscard]] const ZelVrfSelectionPolicy::VrfHwStatus& statuses() const {
    return *agent_.policySm().vrfSm()->vrfHwStatus();
  }
  [[nodiscard]] const TrafficPolicy::Status& ruleStatuses() const {
    return *agent_.policySm().policySmMounts()->policyStatus();
  }

  ForwardingAgent& agent_;
  Probe probe_;
  unsigned taken_ = 0;
  Subscriber subscriber_{*this};
};

}  // namespace ZelAgent
