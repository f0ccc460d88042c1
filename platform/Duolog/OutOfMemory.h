#pragma once

#include <cstddef>

#include "Velo/Export.h"

namespace Duolog {

/// Aborts the process because memory ran out. It writes "out of memory", and the requested size if
/// known, to the ring of the process and to stderr. It does not allocate, and waits for no reader.
///
/// A failed `operator new` calls it, so no code handles a failed allocation. The platform installs
/// it as the new-handler when it is loaded, unless the process has one, and removes it when it is
/// unloaded. Call it where memory has another source:
///
///     void* const memory = std::malloc(size);
///     if (memory == nullptr) Duolog::outOfMemory(size);
///
/// `size` is in bytes; 0 if it is not known.
[[noreturn]] ZEL_EXPORT void outOfMemory(std::size_t size = 0) noexcept;

}  // namespace Duolog
