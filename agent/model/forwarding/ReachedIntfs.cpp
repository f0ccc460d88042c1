#include "agent/model/forwarding/ReachedIntfs.h"

namespace ZelAgent {

using PolicyMap::PolicyMapTypeStatus;
using PolicyMap::RuleKey;

ReachedIntfs::ReachedIntfs(const TrafficPolicy::Status& status) : status_(status) {
  subscriber_.dispatch = [](Velo::Publisher*, Velo::Subscriber* subscriber, short attribute,
                            const void* key, const void*) {
    if (attribute != PolicyMapTypeStatus::ruleStatusAttribute) return;
    Velo::MemberSubscriber<ReachedIntfs>::ownerOf(subscriber)
        .add(static_cast<const RuleKey*>(key)->intf);
  };
}

void ReachedIntfs::begin() {
  if (isChanging_) return;
  isChanging_ = true;
  status_.publisher().subscriberIs(subscriber_);
}

void ReachedIntfs::end() {
  if (!isChanging_) return;
  isChanging_ = false;
  status_.publisher().subscriberDel(subscriber_);
  intfs_.clear();
  last_ = {};
}

// A change makes many calls for one interface.
void ReachedIntfs::add(const Velo::String& intf) {
  if (!isChanging_ || last_ == intf) return;
  intfs_.insert(intf);
  last_ = intf;
}

}  // namespace ZelAgent
