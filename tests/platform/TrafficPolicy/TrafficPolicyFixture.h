#pragma once

#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <utility>
#include <vector>

#include "NamedRules.h"
#include "TrafficPolicy/ZelTrafficPolicySm.h"
#include "Velo/Subscriber.h"
#include "testing/RecordingAclHelper.h"

namespace TrafficPolicy {

using ZelVrfSelectionPolicy::Testing::Journal;
using ZelVrfSelectionPolicy::Testing::RecordingAclHelper;

/// Calls a function with each publication of an object, as long as both live.
class Listener {
 public:
  using Told = std::function<void(short attributeId, const void* key, const void* value)>;

  Listener(Velo::Publisher& publisher, Told told) : publisher_(&publisher), told_(std::move(told)) {
    subscriber_.dispatch = [](Velo::Publisher*, Velo::Subscriber* subscriber, short attributeId,
                              const void* key, const void* value) {
      Velo::MemberSubscriber<Listener>::ownerOf(subscriber).told_(attributeId, key, value);
    };
    publisher_->subscriberIs(subscriber_);
  }
  Listener(const Listener&) = delete;
  Listener& operator=(const Listener&) = delete;
  ~Listener() {
    if (publisher_ != nullptr) publisher_->subscriberDel(subscriber_);
  }
  /// To be called before the publisher goes.
  void leave() {
    publisher_->subscriberDel(subscriber_);
    publisher_ = nullptr;
  }

 private:
  Velo::Publisher* publisher_;
  Told told_;
  Velo::MemberSubscriber<Listener> subscriber_{*this};
};

/// A notice of a status, as a line: "rule INTF POLICY SEQUENCE = programmed" or the reason why not,
/// "policy POLICY = INTFS PROGRAMMED/RULES", or "... gone".
[[nodiscard]] inline std::string statusLine(short attributeId, const void* key, const void* value) {
  if (attributeId == PolicyMap::PolicyMapTypeStatus::policyStatusAttribute) {
    const auto* status = static_cast<const PolicyMap::PolicyStatus*>(value);
    const std::string line = "policy " + static_cast<const Velo::String*>(key)->str();
    if (status == nullptr) return line + " gone";
    return line + " = " + std::to_string(status->intfs) + " " +
           std::to_string(status->rulesProgrammed) + "/" + std::to_string(status->rules);
  }
  const auto& rule = *static_cast<const PolicyMap::RuleKey*>(key);
  const auto* status = static_cast<const PolicyMap::RuleStatus*>(value);
  const std::string line =
      "rule " + rule.intf.str() + " " + rule.policyMap.str() + " " + std::to_string(rule.sequence);
  if (status == nullptr) return line + " gone";
  return line + " = " + (status->programmed ? "programmed" : status->reason.str());
}

/// What a traffic-policy machine works on, and hardware for it. Class map "a" matches IP protocol
/// 0, "b" protocol 1 and so on, once they are configured.
class TrafficPolicyFixture : public ::testing::Test {
 protected:
  using IntfKind = PolicyMap::IntfKind;
  using PolicyRules = PolicyMap::PolicyMapRules;
  using Lines = std::vector<std::string>;
  struct Flags {
    bool allowL2Intf = false;
    bool allowMgmtIntf = false;
    bool compileOnly = false;
  };

  [[nodiscard]] Mox::Ptr<ZelTrafficPolicySm> makeSm(Flags flags) const {
    return ZelTrafficPolicySm::ZelTrafficPolicySmIs(
        intfs_, policies_, classMaps_, nullptr, status_, nullptr, nullptr, nullptr, nullptr,
        nullptr, nullptr, nullptr, nullptr, nullptr, hardware_, flags.allowL2Intf,
        flags.allowMgmtIntf, flags.compileOnly, nullptr, nullptr, nullptr, nullptr, nullptr,
        nullptr, nullptr, nullptr, nullptr, nullptr, false, false, false, nullptr);
  }
  [[nodiscard]] Mox::Ptr<ZelTrafficPolicySm> makeSm() const { return makeSm({}); }

  [[nodiscard]] static PolicyMap::ClassMatch protocol(unsigned number) {
    PolicyMap::ClassMatch match;
    match.family = Ip::Family::v4;
    match.protocol = static_cast<std::uint8_t>(number);
    return match;
  }
  /// Configures the class map of each letter.
  void classMapsAre(std::string_view letters) {
    for (const char letter : letters)
      classMaps_->classMapIs(std::string(1, letter), protocol(static_cast<unsigned>(letter - 'a')));
  }
  /// A rule for each letter: the class map of that name, into the VRF of that name, from sequence
  /// 10 on, ten apart.
  [[nodiscard]] static PolicyRules rulesOn(std::string_view letters) {
    PolicyRules rules;
    for (const char letter : letters) {
      const std::string name(1, letter);
      const auto sequence = static_cast<std::uint32_t>(10 * (rules.size() + 1));
      rules.push_back({sequence, name, {PolicyMap::ActionType::vrf, L3::VrfName(name), {}, {}}});
    }
    return rules;
  }
  void policyIs(const char* policyMap, std::string_view letters) {
    policies_->policyMapIs(policyMap, rulesOn(letters));
  }
  void intfIs(const char* intf, const char* policyMap, IntfKind kind = IntfKind::routed) {
    intfs_->intfIs(intf, {kind, policyMap});
  }
  /// The letters of the rules that the hardware holds, in their order.
  [[nodiscard]] std::string held(const char* intf) const { return namesOf(hardware_->held(intf)); }
  /// How journals show the rule of a letter.
  [[nodiscard]] static std::string shownRule(char letter) {
    return "v4,protocol=" + std::to_string(letter - 'a') + "->" + letter;
  }
  /// Refuses the rules of these letters from now on.
  void refuse(const std::string& letters) {
    hardware_->onAdd = [letters](const Velo::String&, const PolicyMap::AclRule& rule) {
      const bool refused = letters.find(rule.action.vrfName.str()) != std::string::npos;
      return PolicyMap::AclResult{!refused, refused ? "refused" : ""};
    };
  }
  [[nodiscard]] PolicyMap::RuleStatus ruleStatus(const char* intf, const char* policyMap,
                                                 std::uint32_t sequence) const {
    const PolicyMap::RuleStatus* status = status_->ruleStatus({intf, policyMap, sequence});
    return status == nullptr ? PolicyMap::RuleStatus{false, "no status"} : *status;
  }
  void forgetJournal() { static_cast<void>(journal_.take()); }

  const PolicyMap::RuleStatus programmed_{true, ""};
  Journal journal_;
  Mox::Ptr<RecordingAclHelper> hardware_ = Mox::makePtr<RecordingAclHelper>(journal_);
  Mox::Ptr<PolicyMap::IntfConfig> intfs_ = PolicyMap::IntfConfig::IntfConfigIs("intfs");
  Mox::Ptr<PolicyMap::PolicyMapTypeConfig> policies_ =
      PolicyMap::PolicyMapTypeConfig::PolicyMapTypeConfigIs("policies");
  Mox::Ptr<PolicyMap::ClassMapTypeConfig> classMaps_ =
      PolicyMap::ClassMapTypeConfig::ClassMapTypeConfigIs("classMaps");
  Mox::Ptr<PolicyMap::PolicyMapTypeStatus> status_ =
      PolicyMap::PolicyMapTypeStatus::PolicyMapTypeStatusIs("status");
};

/// The same with a policy map P of rules a, b and c, which is applied to eth1.
class PolicyOnEth1 : public TrafficPolicyFixture {
 protected:
  PolicyOnEth1() {
    classMapsAre("abc");
    policyIs("P", "abc");
    intfIs("eth1", "P");
  }
};

}  // namespace TrafficPolicy
