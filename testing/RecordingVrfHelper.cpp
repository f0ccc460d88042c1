#include "testing/RecordingVrfHelper.h"

#include "testing/Shown.h"

namespace ZelVrfSelectionPolicy::Testing {

HwStatus RecordingVrfHelper::createVrf(const VrfAction& action) {
  journal_.write("createVrf " + shown(action));
  return onCreate ? onCreate(action) : HwStatus();
}

HwStatus RecordingVrfHelper::updateVrf(const VrfAction& action) {
  journal_.write("updateVrf " + shown(action));
  return onUpdate ? onUpdate(action) : HwStatus();
}

void RecordingVrfHelper::deleteVrf(const VrfAction& action) {
  journal_.write("deleteVrf " + shown(action));
  if (onDelete) onDelete(action);
}

}  // namespace ZelVrfSelectionPolicy::Testing
