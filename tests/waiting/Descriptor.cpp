#include "tests/waiting/Descriptor.h"

#include <poll.h>
#include <unistd.h>

#include <array>
#include <cerrno>

namespace Waiting {

short waitForEvents(int descriptor, short events, const Deadline& deadline) {
  pollfd poll{descriptor, events, 0};
  int ready = 0;
  do {
    ready = ::poll(&poll, 1, deadline.millisecondsLeft());
  } while (ready < 0 && errno == EINTR);
  return ready == 1 ? poll.revents : short{0};
}

bool readToEnd(int descriptor, std::string& text, const Deadline& deadline) {
  std::array<char, 4096> block{};
  while (!deadline.hasPassed() && waitForEvents(descriptor, POLLIN, deadline) != 0) {
    const ssize_t size = read(descriptor, block.data(), block.size());
    if (size < 0 && errno == EINTR) continue;
    if (size <= 0) return true;
    text.append(block.data(), static_cast<std::size_t>(size));
  }
  return false;
}

}  // namespace Waiting
