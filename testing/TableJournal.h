#pragma once

#include "Velo/Subscriber.h"
#include "ZelVrfSelectionPolicy/tables/VrfHwConfig.h"
#include "ZelVrfSelectionPolicy/tables/VrfHwStatus.h"
#include "testing/Journal.h"

namespace ZelVrfSelectionPolicy::Testing {

/// Writes every notice of both tables into a journal, with the state at that moment:
/// "vrfRefCount ACTION = COUNT", "hwStatus ACTION = STATUS", or "... gone". It subscribes at
/// construction, so its place among the subscribers is the caller's choice.
class TableJournal {
 public:
  /// Either table may be null. `journal` must outlive this.
  TableJournal(Journal& journal, const Mox::Ptr<VrfHwConfig>& users,
               const Mox::Ptr<VrfHwStatus>& statuses);
  TableJournal(const TableJournal&) = delete;
  TableJournal& operator=(const TableJournal&) = delete;
  ~TableJournal();

 private:
  using Subscriber = Velo::MemberSubscriber<TableJournal>;

  void usersChanged(const VrfAction& action);
  void statusChanged(const VrfAction& action);

  Journal& journal_;
  Mox::Ptr<VrfHwConfig> users_;
  Mox::Ptr<VrfHwStatus> statuses_;
  Subscriber usersSubscriber_;
  Subscriber statusesSubscriber_;
};

}  // namespace ZelVrfSelectionPolicy::Testing
