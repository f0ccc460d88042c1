#pragma once

#include "Velo/Subscriber.h"
#include "ZelVrfSelectionPolicy/tables/VrfHwConfig.h"
#include "ZelVrfSelectionPolicy/tables/VrfHwStatus.h"
#include "testing/Journal.h"

namespace ZelVrfSelectionPolicy::Testing {

/// Writes every notice of both tables into a journal, while it lives.
///
/// The lines are "vrfRefCount ACTION = COUNT", "hwStatus ACTION = STATUS", or "... gone", with
/// actions and statuses as `shown` has them, and with the state at the moment of the notice: where
/// a subscriber in front changed the entry again, the line shows that. Choose it where it matters
/// when a table changed, or how often; for what is in it, read the table.
///
/// It subscribes at construction, so its place among the subscribers is the caller's choice: made
/// before the state machine, it writes a change above what the machine makes of it. It holds the
/// tables, and changes nothing.
///
///     const TableJournal tables(journal, users, statuses);
///     users->vrfRefCountInc(red, 1);  // "vrfRefCount red = 1", ...
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
