#pragma once

#include <functional>

#include "ZelVrfSelectionPolicy/tables/VrfHelper.h"
#include "testing/Journal.h"

namespace ZelVrfSelectionPolicy::Testing {

/// A chip that only records its hook calls, for tests of an agent or of the library.
///
/// The lines are "createVrf ACTION", "updateVrf ACTION", "deleteVrf ACTION", with actions in the
/// form of `shown`. Each hook reports success by default. A test can set a function that runs
/// during the call: to fail, to change a table, to release the calling machine. Use it to check the
/// hook calls. To classify packets use the software chip.
///
/// The line of a hook call is written before the function runs. An exception of the function is
/// passed to the caller. The chip has no resources and is never exhausted.
///
///     const auto chip = Mox::makePtr<RecordingVrfHelper>(journal);
///     chip->onCreate = [](const VrfAction&) {
///       HwStatus status;
///       status.statusIs(ProgrammingResult::programmingFailure);
///       status.failureReasonIs(FailureCode::failureVrfResourceExhausted);
///       return status;
///     };
class RecordingVrfHelper final : public VrfHelper {
 public:
  using Outcome = std::function<HwStatus(const VrfAction&)>;
  using Work = std::function<void(const VrfAction&)>;

  /// Every reference may be null. `journal` must outlive this.
  explicit RecordingVrfHelper(
      Journal& journal,
      const Mox::Ptr<VrfSelectionPolicy::VrfSelectionFallbackVrf const>& fallback = nullptr,
      const Mox::Ptr<Routing::Hardware::RouteStatus const>& routes = nullptr,
      const Mox::Ptr<Routing6::Hardware::RouteStatus const>& routes6 = nullptr)
      : VrfHelper("recorder", fallback, routes, routes6), journal_(journal) {}

  HwStatus createVrf(const VrfAction& action) override;
  HwStatus updateVrf(const VrfAction& action) override;
  void deleteVrf(const VrfAction& action) override;

  /// Called by the hooks after the line is written. May be empty; the outcome is then success.
  Outcome onCreate;
  Outcome onUpdate;
  Work onDelete;

 private:
  Journal& journal_;
};

}  // namespace ZelVrfSelectionPolicy::Testing
