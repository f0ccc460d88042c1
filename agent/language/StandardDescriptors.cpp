#include "agent/language/StandardDescriptors.h"

#include <fcntl.h>
#include <unistd.h>

#include <initializer_list>

namespace ZelAgent {

bool openStandardDescriptors() noexcept {
  // The lowest free number is used, so each one is open before the next is examined.
  for (const int descriptor : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
    const bool isOpen = fcntl(descriptor, F_GETFD) != -1;
    if (!isOpen && open("/dev/null", O_RDONLY) != descriptor) return false;
  }
  return true;
}

}  // namespace ZelAgent
