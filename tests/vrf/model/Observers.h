#pragma once

#include <map>
#include <vector>

#include "Expected.h"
#include "Velo/Publisher.h"
#include "ZelVrfSelectionPolicy/tables/VrfHelper.h"

namespace VrfModel {

/// The hook calls and notices of the real library.
struct Observed {
  std::vector<HookCall> hooks;
  std::vector<Notice> notices;
};

/// A chip that records its hook calls and returns the outcomes that the model expects. It aborts if
/// one event calls it without end, before memory runs out.
class ChipDouble final : public ZelVrfSelectionPolicy::VrfHelper {
 public:
  /// `observed` must outlive it.
  explicit ChipDouble(Observed& observed)
      : VrfHelper("double", nullptr, nullptr, nullptr), observed_(observed) {}

  ZelVrfSelectionPolicy::HwStatus createVrf(
      const ZelVrfSelectionPolicy::VrfAction& action) override;
  ZelVrfSelectionPolicy::HwStatus updateVrf(
      const ZelVrfSelectionPolicy::VrfAction& action) override;
  void deleteVrf(const ZelVrfSelectionPolicy::VrfAction& action) override;

 private:
  ZelVrfSelectionPolicy::HwStatus program(Hook hook,
                                          const ZelVrfSelectionPolicy::VrfAction& action);

  Observed& observed_;
  std::map<Action, unsigned> calls_;
};

/// Subscribes to a table and records its notices.
class NoticeRecorder {
 public:
  /// Both must outlive it.
  NoticeRecorder(Table table, Velo::Publisher& publisher, Observed& observed);
  NoticeRecorder(const NoticeRecorder&) = delete;
  NoticeRecorder& operator=(const NoticeRecorder&) = delete;
  ~NoticeRecorder() { publisher_.subscriberDel(subscriber_); }

 private:
  using Subscriber = Velo::MemberSubscriber<NoticeRecorder>;

  Table table_;
  Velo::Publisher& publisher_;
  Observed& observed_;
  Subscriber subscriber_;
};

}  // namespace VrfModel
