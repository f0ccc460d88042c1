#pragma once

#include <functional>

#include "ZelVrfSelectionPolicy/tables/VrfHelper.h"
#include "testing/Journal.h"

namespace ZelVrfSelectionPolicy::Testing {

/// A chip that does nothing but write down what it is asked, for tests of an agent or of the
/// library.
///
/// The lines are "createVrf ACTION", "updateVrf ACTION", "deleteVrf ACTION", with actions as
/// `shown` has them. Each hook reports success unless told otherwise, and may be given work to do
/// from inside the call: fail, change a table, drop the machine that called. Choose it to see what
/// is asked of a chip; to see what becomes of packets choose the software chip.
///
/// A hook's line is written before its work is done, so what the work causes stands below it. What
/// the work throws passes through to the caller. It holds no resources and is never exhausted.
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

  /// What the hooks do and return after they have been written down; empty for nothing, success.
  Outcome onCreate;
  Outcome onUpdate;
  Work onDelete;

 private:
  Journal& journal_;
};

}  // namespace ZelVrfSelectionPolicy::Testing
