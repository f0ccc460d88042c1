#include "agent/serve/daemon/ListeningSocket.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/socket.h>

#include <cerrno>
#include <chrono>
#include <thread>

#include "agent/language/Limits.h"
#include "agent/language/PrintableText.h"
#include "agent/serve/protocol/SocketAddress.h"

namespace ZelAgent {
namespace {

using Blinklog::FileHandle;
using std::chrono::milliseconds;

constexpr int backlog = 128;
constexpr auto lockPause = milliseconds(10);

// Sets the file mode mask of the process during its lifetime.
class FileModeMask final {
 public:
  explicit FileModeMask(mode_t mask) : before_(umask(mask)) {}
  FileModeMask(const FileModeMask&) = delete;
  FileModeMask& operator=(const FileModeMask&) = delete;
  ~FileModeMask() { umask(before_); }

 private:
  mode_t before_;
};

FileHandle makeSocket(const std::string& path) {
  FileHandle socket(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0));
  if (!socket.isOpen()) throw socketErrorOf(path, "a socket cannot be created", errno);
  return socket;
}

int callWithAddress(int (*call)(int, const sockaddr*, socklen_t), const FileHandle& socket,
                    const std::string& path) {
  const sockaddr_un address = socketAddressOf(path);
  return call(socket.get(), reinterpret_cast<const sockaddr*>(&address), sizeof address);
}

// Two daemons that replace the same stale socket must not replace each other's socket. Each daemon
// holds the lock for a short time at its start. Closing the descriptor releases the lock.
//
// The lock is on a file that only its owner can open: anyone who can open a file or a folder can
// lock it. The file stays. If it were removed, a daemon could wait for the lock of the removed file
// while another locks a new one.
FileHandle lockFor(const std::string& path, milliseconds wait) {
  const FileModeMask ownerOnly(0177);
  FileHandle file(
      open((path + ".lock").c_str(), O_RDWR | O_CREAT | O_NOFOLLOW | O_CLOEXEC | O_NONBLOCK, 0600));
  if (!file.isOpen()) throw socketErrorOf(path, "its lock file cannot be opened", errno);
  for (auto waited = milliseconds(0); waited <= wait; waited += lockPause) {
    if (flock(file.get(), LOCK_EX | LOCK_NB) == 0) return file;
    std::this_thread::sleep_for(lockPause);
  }
  throw SocketError(printable(path, Limits::shownTextBytes) +
                    ": another process locks its lock file; end it, or give another path");
}

// Throws if a process listens on the socket at the path.
void requireStale(const std::string& path) {
  const FileHandle probe = makeSocket(path);
  if (callWithAddress(connect, probe, path) == 0 || errno == EAGAIN) {
    throw SocketError(printable(path, Limits::shownTextBytes) +
                      ": a daemon listens there already; end it, or give another path");
  }
  if (errno != ECONNREFUSED) throw socketErrorOf(path, "the socket there cannot be probed", errno);
}

// Removes the socket at the path if it may be replaced. Throws if it may not.
void clearPath(const std::string& path) {
  struct stat file {};
  if (lstat(path.c_str(), &file) != 0) {
    if (errno == ENOENT) return;
    throw socketErrorOf(path, "cannot be examined", errno);
  }
  if (!S_ISSOCK(file.st_mode)) {
    throw SocketError(printable(path, Limits::shownTextBytes) +
                      ": is a file that is not a socket; give the path of a socket");
  }
  requireStale(path);
  if (unlink(path.c_str()) != 0) {
    throw socketErrorOf(path, "the stale socket cannot be removed", errno);
  }
}

}  // namespace

ListeningSocket::ListeningSocket(std::string path, milliseconds lockWait)
    : path_(std::move(path)), socket_(makeSocket(path_)) {
  claimPath(lockWait);
}

ListeningSocket::~ListeningSocket() {
  struct stat now {};
  if (lstat(path_.c_str(), &now) != 0) return;
  if (now.st_dev == file_.st_dev && now.st_ino == file_.st_ino) unlink(path_.c_str());
}

void ListeningSocket::claimPath(milliseconds lockWait) {
  static_cast<void>(socketAddressOf(path_));
  const FileHandle lock = lockFor(path_, lockWait);
  clearPath(path_);
  bindPath();
  if (lstat(path_.c_str(), &file_) != 0) throw socketErrorOf(path_, "has disappeared", errno);
}

void ListeningSocket::bindPath() {
  const FileModeMask ownerOnly(0177);
  if (callWithAddress(bind, socket_, path_) != 0) {
    throw socketErrorOf(path_, "the socket cannot be created", errno);
  }
  if (listen(socket_.get(), backlog) != 0) {
    const int error = errno;
    unlink(path_.c_str());
    throw socketErrorOf(path_, "the socket cannot be listened on", error);
  }
}

}  // namespace ZelAgent
