#pragma once

#include <set>

#include "TrafficPolicy/Status.h"
#include "Velo/Subscriber.h"

namespace ZelAgent {

/// The interfaces that a change has reached: since its begin, the chip got a call for their rules,
/// or the status of one of their rules changed.
///
/// The rules, counters and statuses of every other interface still belong together as before the
/// change.
class ReachedIntfs final {
 public:
  /// No change is in progress. The status must outlive this.
  explicit ReachedIntfs(const TrafficPolicy::Status& status);
  ReachedIntfs(const ReachedIntfs&) = delete;
  ReachedIntfs& operator=(const ReachedIntfs&) = delete;
  ~ReachedIntfs() { end(); }

  void begin();
  void end();
  /// The chip gets a call for the rules of the interface. No effect without a change in progress.
  void add(const Velo::String& intf);
  [[nodiscard]] bool contains(const Velo::String& intf) const { return intfs_.contains(intf); }

 private:
  const TrafficPolicy::Status& status_;
  bool isChanging_ = false;
  std::set<Velo::String> intfs_;
  Velo::String last_;  // the one that was added last; empty for none
  Velo::MemberSubscriber<ReachedIntfs> subscriber_{*this};
};

}  // namespace ZelAgent
