#include "agent/model/packets/UnfinishedFile.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <system_error>
#include <utility>

namespace ZelAgent {
namespace {

[[noreturn]] void fail(int error) {
  throw std::system_error(error, std::generic_category());
}

int create(const std::filesystem::path& path) {
  const int descriptor =
      open(path.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, 0600);
  if (descriptor < 0) fail(errno);
  return descriptor;
}

// Returns the error, or 0.
int writeAll(int descriptor, std::string_view bytes) noexcept {
  while (!bytes.empty()) {
    const ssize_t written = write(descriptor, bytes.data(), bytes.size());
    if (written < 0 && errno == EINTR) continue;
    if (written <= 0) return written < 0 ? errno : ENOSPC;
    bytes.remove_prefix(static_cast<std::size_t>(written));
  }
  return 0;
}

}  // namespace

UnfinishedFile::UnfinishedFile(std::filesystem::path path, std::string_view bytes)
    : path_(std::move(path)) {
  const int descriptor = create(path_);
  int error = writeAll(descriptor, bytes);
  if (close(descriptor) != 0 && error == 0) error = errno;
  if (error == 0) return;
  unlink(path_.c_str());
  fail(error);
}

UnfinishedFile::UnfinishedFile(UnfinishedFile&& other) noexcept
    : path_(std::exchange(other.path_, {})) {}

UnfinishedFile::~UnfinishedFile() {
  if (!path_.empty()) unlink(path_.c_str());
}

void UnfinishedFile::renameTo(const std::filesystem::path& name) {
  std::filesystem::rename(path_, name);
  path_.clear();
}

}  // namespace ZelAgent
