#include "agent/serve/daemon/LineStream.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <climits>

namespace ZelAgent {
namespace {

using Blinklog::FileHandle;

// A descriptor that is open for reading only stands for one that was closed.
bool isWritable(int descriptor) {
  const int flags = fcntl(descriptor, F_GETFL);
  return flags >= 0 && (flags & O_ACCMODE) != O_RDONLY;
}

bool isPipeOrTerminal(int descriptor) {
  struct stat file {};
  return fstat(descriptor, &file) == 0 && (S_ISFIFO(file.st_mode) || S_ISCHR(file.st_mode));
}

FileHandle openAgain(int descriptor) {
  if (!isWritable(descriptor) || !isPipeOrTerminal(descriptor)) return FileHandle(-1);
  const std::string path = "/proc/self/fd/" + std::to_string(descriptor);
  return FileHandle(open(path.c_str(), O_WRONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC));
}

}  // namespace

LineBuffer::LineBuffer(int descriptor, LineStart start)
    : descriptor_(descriptor), start_(std::move(start)), own_(openAgain(descriptor)) {}

LineBuffer::~LineBuffer() {
  LineBuffer::sync();
  write(unfinished_);
}

int LineBuffer::sync() {
  std::istringstream lines(str());
  str({});
  bool isGood = true;
  for (std::string line; std::getline(lines, line);)
    isGood = print(line + '\n') && isGood;
  return isGood ? 0 : -1;
}

std::string LineBuffer::droppedLine() const {
  if (dropped_ == 0) return {};
  return (start_ ? start_() : "") +
         "warning: lines dropped before this one: " + std::to_string(dropped_) + '\n';
}

bool LineBuffer::print(const std::string& line) {
  const std::string bytes = droppedLine() + line;
  unfinished_.erase(0, write(unfinished_));
  const std::size_t written = unfinished_.empty() ? write(bytes) : 0;
  if (written == 0) {
    ++dropped_;
    return error_ == EAGAIN;
  }
  dropped_ = 0;
  unfinished_ = bytes.substr(written);
  return true;
}

std::size_t LineBuffer::write(std::string_view bytes) {
  std::size_t written = 0;
  while (written < bytes.size()) {
    const ssize_t result = writeOnce(bytes.substr(written));
    error_ = result < 0 ? errno : 0;
    if (error_ == EINTR) continue;
    if (result <= 0) break;
    written += static_cast<std::size_t>(result);
  }
  return written;
}

ssize_t LineBuffer::writeOnce(std::string_view bytes) const {
  if (own_.isOpen()) return ::write(own_.get(), bytes.data(), bytes.size());
  pollfd wanted{descriptor_, POLLOUT, 0};
  if (poll(&wanted, 1, 0) == 0) {
    errno = EAGAIN;
    return -1;
  }
  return ::write(descriptor_, bytes.data(), std::min<std::size_t>(bytes.size(), PIPE_BUF));
}

}  // namespace ZelAgent
