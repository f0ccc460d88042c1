#pragma once

#include "PolicyMap/PolicyMapAclHelper.h"
#include "agent/model/calls/ChipCalls.h"

namespace ZelAgent {

/// Passes every call on to classification hardware, and each change of its rules to an observer.
class ObservedAclHelper final : public PolicyMap::PolicyMapAclHelper {
 public:
  /// The observer must outlive this. It may be empty, and may be replaced at any time.
  ObservedAclHelper(const Velo::String& name, Mox::Ptr<PolicyMapAclHelper> hardware,
                    const ChipObserver& observer);

  [[nodiscard]] PolicyMap::AclResult addRule(const Velo::String& intf, std::size_t place,
                                             const PolicyMap::AclRule& rule) override;
  void removeRule(const Velo::String& intf, std::size_t place) override;
  void moveRule(const Velo::String& intf, std::size_t from, std::size_t to) override;
  [[nodiscard]] PolicyMap::AclResult replaceRule(const Velo::String& intf, std::size_t place,
                                                 const PolicyMap::AclRule& rule) override;
  void intfClosedIs(const Velo::String& intf, bool closed) override;
  [[nodiscard]] bool intfClosed(const Velo::String& intf) const override;
  [[nodiscard]] const Rules& rules(const Velo::String& intf) const override;
  [[nodiscard]] std::vector<Velo::String> intfs() const override;

 private:
  Mox::Ptr<PolicyMapAclHelper> hardware_;
  const ChipObserver& observer_;
};

}  // namespace ZelAgent
