#include "Blinklog/RingFilePlace.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <string_view>

#include "Blinklog/RingFileError.h"
#include "Blinklog/RingFileFormat.h"

namespace Blinklog {
namespace {

constexpr mode_t ownerOnly = 0600;

[[noreturn]] void fail(const std::string& path, const std::string& what, int error) {
  throw RingFileError(path, what + ": " + std::strerror(error) + "; give another file");
}

[[noreturn]] void failAsInUse(const std::string& path) {
  throw RingFileError(path, "another process writes its trace there; end it, or give another file");
}

// Opens the file if it exists.
FileHandle openPresent(const std::string& path) {
  FileHandle file(open(path.c_str(), O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC));
  if (!file.isOpen() && errno == ELOOP) {
    throw RingFileError(path, "is a link; give the name of the file itself");
  }
  if (!file.isOpen() && errno != ENOENT) fail(path, "cannot be opened", errno);
  return file;
}

bool isRegular(const FileHandle& file) {
  struct stat found {};
  return fstat(file.get(), &found) == 0 && S_ISREG(found.st_mode);
}

// The first bytes of the file, by which a file with a ring is recognised.
std::string beginningOf(const FileHandle& file) {
  std::string bytes(RingFileFormat::magic.size(), '\0');
  const ssize_t got = pread(file.get(), bytes.data(), bytes.size(), 0);
  bytes.resize(got < 0 ? 0 : static_cast<std::size_t>(got));
  return bytes;
}

bool beginsAsRing(const FileHandle& file) {
  return beginningOf(file) ==
         std::string_view(RingFileFormat::magic.data(), RingFileFormat::magic.size());
}

void needReplaceable(const std::string& path, const FileHandle& file, bool mayBeEmpty) {
  if (isRegular(file) && (beginsAsRing(file) || (mayBeEmpty && beginningOf(file).empty()))) return;
  throw RingFileError(path,
                      "is a file that holds no trace ring and would be lost; move it away, or give "
                      "another file");
}

// The lock is held until the descriptor is closed, also by the end of the process.
void lock(const FileHandle& file, const std::string& path) {
  if (flock(file.get(), LOCK_EX | LOCK_NB) == 0) return;
  if (errno == EWOULDBLOCK) failAsInUse(path);
  fail(path, "cannot be locked", errno);
}

// Whether the path still refers to the file. Another process may have removed it.
bool isNamed(const FileHandle& file, const std::string& path) {
  struct stat opened {};
  struct stat named {};
  return fstat(file.get(), &opened) == 0 && lstat(path.c_str(), &named) == 0 &&
         opened.st_dev == named.st_dev && opened.st_ino == named.st_ino;
}

// Removes the file of a process that was killed while it created it.
void removeLeftover(const std::string& path) {
  const FileHandle leftover = openPresent(path);
  if (!leftover.isOpen()) return;
  needReplaceable(path, leftover, true);
  lock(leftover, path);
  if (unlink(path.c_str()) != 0) fail(path, "cannot be removed", errno);
}

FileHandle makeNew(const std::string& path) {
  FileHandle file(
      open(path.c_str(), O_RDWR | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, ownerOnly));
  if (!file.isOpen()) fail(path, "cannot be made", errno);
  lock(file, path);
  if (!isNamed(file, path)) failAsInUse(path);
  return file;
}

void needFree(const std::string& path) {
  const FileHandle present = openPresent(path);
  if (!present.isOpen()) return;
  needReplaceable(path, present, false);
  lock(present, path);
}

}  // namespace

RingFilePlace::RingFilePlace(const std::string& path)
    : path_(path), newPath_(path + ".new"), previousPath_(path + ".previous"), file_(-1) {
  needFree(path_);
  needFree(previousPath_);
  removeLeftover(newPath_);
  file_ = makeNew(newPath_);
}

RingFilePlace::~RingFilePlace() {
  if (!isCurrent_ && file_.isOpen() && isNamed(file_, newPath_)) unlink(newPath_.c_str());
}

void RingFilePlace::makeCurrent() {
  // Checked again, since another process may have created FILE before FILE.new was locked.
  needFree(path_);
  if (std::rename(path_.c_str(), previousPath_.c_str()) != 0 && errno != ENOENT) {
    fail(path_, "cannot be renamed to " + previousPath_, errno);
  }
  if (std::rename(newPath_.c_str(), path_.c_str()) != 0) {
    fail(newPath_, "cannot be renamed to " + path_, errno);
  }
  isCurrent_ = true;
}

}  // namespace Blinklog
