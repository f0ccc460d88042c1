#pragma once

#include "agent/model/calls/ChipCalls.h"
#include "agent/model/calls/PassingAclHelper.h"

namespace ZelAgent {

/// Passes each change of the rules of classification hardware to an observer.
class ObservedAclHelper final : public PassingAclHelper {
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

 private:
  const ChipObserver& observer_;
};

}  // namespace ZelAgent
