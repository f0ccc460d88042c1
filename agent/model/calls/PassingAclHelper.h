#pragma once

#include "PolicyMap/PolicyMapAclHelper.h"

namespace ZelAgent {

/// Passes every call on to classification hardware. A class that does more at some calls derives
/// from it, and overrides only those.
class PassingAclHelper : public PolicyMap::PolicyMapAclHelper {
 public:
  PassingAclHelper(const Velo::String& name, Mox::Ptr<PolicyMapAclHelper> hardware);

  [[nodiscard]] PolicyMap::AclResult addRule(const Velo::String& intf, std::size_t place,
                                             const PolicyMap::AclRule& rule) override;
  void removeRule(const Velo::String& intf, std::size_t place) override;
  void moveRule(const Velo::String& intf, std::size_t from, std::size_t to) override;
  [[nodiscard]] PolicyMap::AclResult replaceRule(const Velo::String& intf, std::size_t place,
                                                 const PolicyMap::AclRule& rule) override;
  void intfClosedIs(const Velo::String& intf, bool closed) final;
  [[nodiscard]] bool intfClosed(const Velo::String& intf) const final;
  [[nodiscard]] const Rules& rules(const Velo::String& intf) const final;
  [[nodiscard]] std::vector<Velo::String> intfs() const final;

 private:
  Mox::Ptr<PolicyMapAclHelper> hardware_;
};

}  // namespace ZelAgent
