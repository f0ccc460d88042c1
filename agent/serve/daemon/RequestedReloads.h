#pragma once

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "agent/commands/served/ServedAgent.h"
#include "agent/serve/daemon/Scheduler.h"

namespace ZelAgent {

/// The reloads that SIGHUP requests. However many are requested before one begins, it is one
/// reload. It begins in a round of the loop in which no other change is in progress.
///
/// A request during a reload is for another one after it. So everything else on the loop has its
/// turn between two reloads.
class RequestedReloads final {
 public:
  using Print = std::function<void(const std::vector<std::string>& lines)>;

  /// `print` gets the lines that report each reload, as ReloadReport.h describes them. The
  /// scheduler and the agent must outlive this.
  RequestedReloads(Scheduler& scheduler, ServedAgent& served, Print print);
  RequestedReloads(const RequestedReloads&) = delete;
  RequestedReloads& operator=(const RequestedReloads&) = delete;
  ~RequestedReloads() = default;

  void request();

 private:
  void proceed();

  ServedAgent& served_;
  Print print_;
  bool isRequested_ = false;              // and has not begun
  SlicedChangePtr present_;               // null if none is in progress
  std::unique_ptr<RepeatedCall> rounds_;  // run while there is anything to do
};

}  // namespace ZelAgent
