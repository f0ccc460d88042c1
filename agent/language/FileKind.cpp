#include "agent/language/FileKind.h"

#include <sys/stat.h>

namespace ZelAgent {

std::string_view fileKind(mode_t mode) noexcept {
  if (S_ISREG(mode)) return "a regular file";
  if (S_ISDIR(mode)) return "a directory";
  if (S_ISLNK(mode)) return "a symbolic link";
  if (S_ISFIFO(mode)) return "a FIFO";
  if (S_ISSOCK(mode)) return "a socket";
  return "a device";
}

}  // namespace ZelAgent
