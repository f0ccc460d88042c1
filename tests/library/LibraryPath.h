#pragma once

#include <cstdlib>

namespace LoadedLibrary {

/// The library of the build, or the one that the environment variable `ZEL_LIBRARY` names.
inline const char* libraryPath() {
  const char* const wanted = std::getenv("ZEL_LIBRARY");
  return wanted != nullptr ? wanted : LIBRARY;
}

}  // namespace LoadedLibrary
