#pragma once

#include "Velo/Subscriber.h"
#include "ZelVrfSelectionPolicy/tables/VrfHwConfig.h"
#include "ZelVrfSelectionPolicy/tables/VrfHwStatus.h"
#include "testing/Journal.h"

namespace ZelVrfSelectionPolicy::Testing {

/// Writes every notification of both tables into a journal.
///
/// The lines are "vrfRefCount ACTION = COUNT", "hwStatus ACTION = STATUS", or "... gone", with
/// actions and statuses in the form of `shown`. They show the state at the time of the
/// notification, also if an earlier subscriber has changed the entry again. Use it to check when or
/// how often a table changed. To check the contents, read the table.
///
/// The constructor subscribes. If the object is created before the state machine, a change is
/// written before the lines that the machine causes. It holds references to the tables, and changes
/// nothing.
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
