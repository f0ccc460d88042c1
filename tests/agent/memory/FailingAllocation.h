// Every allocation of this program, whichever library makes it, comes through here, and one can be
// made to fail: `malloc` and its kin return null, as they do when the system has no memory.
#pragma once

#include <cstddef>

namespace ZelAgent {

// After `passing` more allocations one fails, and all others succeed.
void allocationFailsAfter(std::size_t passing) noexcept;

// No allocation fails from now on. Returns whether one did.
[[nodiscard]] bool allocationsSucceed() noexcept;

}  // namespace ZelAgent
