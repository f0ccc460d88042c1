#pragma once

#include <cstddef>

#include "Velo/Export.h"

namespace Duolog {

/// Ends the process for want of memory: the last message in the ring of the process, and then on
/// stderr, is "out of memory", with the size that was asked for where that is known. Then it
/// aborts. None of this allocates.
///
/// A failed `operator new` ends here, so nobody has to handle it and no change is left half done:
/// the platform makes this the new-handler when it is loaded, unless the process has one by then,
/// and takes it away when it is unloaded. Call it where memory comes from anywhere else:
///
///     void* const memory = std::malloc(size);
///     if (memory == nullptr) Duolog::outOfMemory(size);
///
/// `size` is in bytes; 0 stands for one that is not known.
[[noreturn]] ZEL_EXPORT void outOfMemory(std::size_t size = 0) noexcept;

}  // namespace Duolog
