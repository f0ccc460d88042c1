#pragma once

#include "Expected.h"

namespace VrfModel::Messages {

// Every message of the VRF state machine that a history can cause without stopping the process.

[[nodiscard]] Message initialize();

[[nodiscard]] Message createFailed(const Name& vrf, unsigned reason);
[[nodiscard]] Message alreadyInUse(const Name& vrf, unsigned count);
[[nodiscard]] Message deleting(const Name& vrf);

[[nodiscard]] Message updatingOne(const Name& vrf);
[[nodiscard]] Message updatingAll(const Name& changed);
[[nodiscard]] Message updatingOneOfAll(const Name& changed);
[[nodiscard]] Message updatingDependent(const Name& dependent, const Name& changed);

[[nodiscard]] Message fallbackChange(const Name& vrf);
[[nodiscard]] Message fallbackAlreadyHandled();

[[nodiscard]] Message decapNh(bool flag);
[[nodiscard]] Message decapNhAction(unsigned type);
[[nodiscard]] Message decapNhFallback(bool flag);

[[nodiscard]] Message instanceInitialized(const Name& vrf, unsigned id);
[[nodiscard]] Message instanceId(const Name& vrf, unsigned id);
[[nodiscard]] Message instanceIdNotAssigned();
[[nodiscard]] Message instanceRemoved(const Name& vrf, unsigned id);

[[nodiscard]] Message lensInitialized(unsigned family, const Name& vrf);
[[nodiscard]] Message lensChanged(unsigned family, const Name& vrf);

}  // namespace VrfModel::Messages
