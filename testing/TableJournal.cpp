#include "testing/TableJournal.h"

#include "testing/Shown.h"

namespace ZelVrfSelectionPolicy::Testing {

TableJournal::TableJournal(Journal& journal, const Mox::Ptr<VrfHwConfig>& users,
                           const Mox::Ptr<VrfHwStatus>& statuses)
    : journal_(journal),
      users_(users),
      statuses_(statuses),
      usersSubscriber_(*this),
      statusesSubscriber_(*this) {
  usersSubscriber_.dispatch = [](Velo::Publisher*, Velo::Subscriber* subscriber, short,
                                 const void* key, const void*) {
    Subscriber::ownerOf(subscriber).usersChanged(*static_cast<const VrfAction*>(key));
  };
  statusesSubscriber_.dispatch = [](Velo::Publisher*, Velo::Subscriber* subscriber, short,
                                    const void* key, const void*) {
    Subscriber::ownerOf(subscriber).statusChanged(*static_cast<const VrfAction*>(key));
  };
  if (users_) users_->publisher().subscriberIs(usersSubscriber_);
  if (statuses_) statuses_->publisher().subscriberIs(statusesSubscriber_);
}

TableJournal::~TableJournal() {
  if (users_) users_->publisher().subscriberDel(usersSubscriber_);
  if (statuses_) statuses_->publisher().subscriberDel(statusesSubscriber_);
}

void TableJournal::usersChanged(const VrfAction& action) {
  const unsigned* count = users_->vrfRefCount().find(action);
  journal_.write("vrfRefCount " + shown(action) +
                 (count == nullptr ? " gone" : " = " + std::to_string(*count)));
}

void TableJournal::statusChanged(const VrfAction& action) {
  const HwStatus* status = statuses_->hwStatus().find(action);
  journal_.write("hwStatus " + shown(action) +
                 (status == nullptr ? " gone" : " = " + shown(*status)));
}

}  // namespace ZelVrfSelectionPolicy::Testing
