// The socket of a daemon: how it is created, replaced, refused and removed.
#include "agent/serve/daemon/ListeningSocket.h"

#include <fcntl.h>
#include <gmock/gmock.h>
#include <sys/file.h>
#include <sys/socket.h>

#include <cerrno>
#include <filesystem>
#include <memory>
#include <thread>

#include "agent/language/Errors.h"
#include "agent/serve/protocol/SocketAddress.h"
#include "tests/agent/TestFiles.h"

namespace ZelAgent {
namespace {

using Blinklog::FileHandle;
using std::chrono::milliseconds;
namespace fs = std::filesystem;

class SocketAtAPath : public ::testing::Test {
 protected:
  SocketAtAPath() { fs::remove_all(path_); }

  static std::string refusal(const std::string& path) {
    try {
      const ListeningSocket socket(path, milliseconds(0));
      return "none";
    } catch (const SocketError& error) {
      return error.what();
    }
  }

  // Leaves a socket on which no process listens.
  void makeStaleSocket() const {
    const FileHandle socket(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0));
    const sockaddr_un address = socketAddressOf(path_);
    ASSERT_EQ(bind(socket.get(), reinterpret_cast<const sockaddr*>(&address), sizeof address), 0);
  }

  FileHandle openLockFile() const {
    return FileHandle(open((path_ + ".lock").c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0600));
  }

  // Connects to the path and returns the error number.
  int connectingFails() const {
    const FileHandle socket(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0));
    const sockaddr_un address = socketAddressOf(path_);
    const int result =
        connect(socket.get(), reinterpret_cast<const sockaddr*>(&address), sizeof address);
    return result == 0 ? 0 : errno;
  }

  std::string path_ = pathInTestFolder("s");
};

TEST_F(SocketAtAPath, IsListenedOnAndRemovedAtTheEnd) {
  {
    const ListeningSocket socket(path_);
    EXPECT_EQ(socket.path(), path_);
    EXPECT_EQ(connectingFails(), 0);
  }
  EXPECT_FALSE(fs::exists(path_));
}

TEST_F(SocketAtAPath, IsReadableAndWritableByItsOwnerOnlyWhateverTheMask) {
  for (const mode_t mask : {0U, 0022U, 0777U}) {
    const mode_t before = umask(mask);
    const ListeningSocket socket(path_);
    const mode_t after = umask(before);
    struct stat file {};
    ASSERT_EQ(stat(path_.c_str(), &file), 0);
    EXPECT_EQ(file.st_mode, S_IFSOCK | 0600U);
    EXPECT_EQ(after, mask) << "the mask of the process is changed";
  }
}

TEST_F(SocketAtAPath, HasADescriptorThatDoesNotBlock) {
  ListeningSocket socket(path_);
  const FileHandle listener(socket.release());
  EXPECT_NE(fcntl(listener.get(), F_GETFL) & O_NONBLOCK, 0);
  EXPECT_NE(fcntl(listener.get(), F_GETFD) & FD_CLOEXEC, 0);
}

TEST_F(SocketAtAPath, IsListenedOnForAsLongAsTheReleasedDescriptorAndRemovedByThis) {
  auto socket = std::make_unique<ListeningSocket>(path_);
  const FileHandle listener(socket->release());
  EXPECT_EQ(connectingFails(), 0);
  socket.reset();
  EXPECT_FALSE(fs::exists(path_));
}

TEST_F(SocketAtAPath, OnWhichNoProcessListensIsReplaced) {
  makeStaleSocket();
  EXPECT_EQ(connectingFails(), ECONNREFUSED);
  const ListeningSocket socket(path_);
  EXPECT_EQ(connectingFails(), 0);
}

TEST_F(SocketAtAPath, OnWhichAProcessListensIsRefusedAndKept) {
  const ListeningSocket socket(path_);
  EXPECT_EQ(refusal(path_),
            path_ + ": a daemon listens there already; end it, or give another path");
  EXPECT_EQ(connectingFails(), 0);
}

TEST_F(SocketAtAPath, OnWhichABusyProcessListensIsRefused) {
  const ListeningSocket socket(path_);
  std::vector<FileHandle> clients;  // more than wait to be accepted
  const sockaddr_un address = socketAddressOf(path_);
  int result = 0;
  while (result == 0) {
    clients.emplace_back(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0));
    result =
        connect(clients.back().get(), reinterpret_cast<const sockaddr*>(&address), sizeof address);
  }
  ASSERT_EQ(errno, EAGAIN);
  EXPECT_EQ(refusal(path_),
            path_ + ": a daemon listens there already; end it, or give another path");
}

TEST_F(SocketAtAPath, ThatIsAFileOfAnotherKindIsRefusedAndKept) {
  const std::string file = writeFile("precious", "keep me");
  EXPECT_EQ(refusal(file), file + ": is a file that is not a socket; give the path of a socket");
  EXPECT_EQ(readFile(file), "keep me");
}

TEST_F(SocketAtAPath, ThatIsALinkIsRefusedAndKept) {
  makeStaleSocket();
  const std::string link = pathInTestFolder("link");
  fs::remove(link);
  fs::create_symlink(path_, link);
  EXPECT_EQ(refusal(link), link + ": is a file that is not a socket; give the path of a socket");
  EXPECT_TRUE(fs::is_symlink(link));
  EXPECT_TRUE(fs::is_socket(path_));
}

TEST_F(SocketAtAPath, InAMissingFolderIsRefused) {
  EXPECT_EQ(
      refusal(pathInTestFolder("none/s")),
      pathInTestFolder("none/s") + ": its lock file cannot be opened: No such file or directory");
}

TEST_F(SocketAtAPath, WhosePathIsTooLongIsRefused) {
  EXPECT_THAT(refusal(std::string(108, 'x')),
              ::testing::HasSubstr("the path of a socket must have 1 to 107 bytes, found"));
}

TEST_F(SocketAtAPath, WhoseLockFileIsLockedIsRefused) {
  const FileHandle file = openLockFile();
  for (const int lock : {LOCK_EX, LOCK_SH}) {
    ASSERT_EQ(flock(file.get(), lock), 0);
    EXPECT_EQ(refusal(path_),
              path_ + ": another process locks its lock file; end it, or give another path");
    EXPECT_FALSE(fs::exists(path_));
  }
}

TEST_F(SocketAtAPath, WhoseLockFileIsLockedWaitsForTheLock) {
  FileHandle file = openLockFile();
  ASSERT_EQ(flock(file.get(), LOCK_EX), 0);
  std::thread owner([&file] {
    std::this_thread::sleep_for(milliseconds(15));
    file = FileHandle(-1);
  });
  const ListeningSocket socket(path_, std::chrono::minutes(2));
  owner.join();
  EXPECT_EQ(connectingFails(), 0);
}

TEST_F(SocketAtAPath, LeavesItsLockFileUnlocked) {
  const ListeningSocket socket(path_);
  const FileHandle file = openLockFile();
  EXPECT_EQ(flock(file.get(), LOCK_EX | LOCK_NB), 0);
}

// Every user who can read the folder can lock it.
TEST_F(SocketAtAPath, InALockedFolderIsListenedOn) {
  const FileHandle folder(open(pathInTestFolder("").c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
  ASSERT_EQ(flock(folder.get(), LOCK_EX), 0);
  const ListeningSocket socket(path_, milliseconds(0));
  EXPECT_EQ(connectingFails(), 0);
}

TEST_F(SocketAtAPath, HasALockFileThatOnlyItsOwnerCanOpen) {
  for (const mode_t mask : {0U, 0777U}) {
    fs::remove(path_ + ".lock");
    const mode_t before = umask(mask);
    { const ListeningSocket socket(path_); }
    umask(before);
    struct stat file {};
    ASSERT_EQ(stat((path_ + ".lock").c_str(), &file), 0);
    EXPECT_EQ(file.st_mode, S_IFREG | 0600U);
  }
}

TEST_F(SocketAtAPath, WhoseLockFileIsALinkIsRefused) {
  const std::string other = pathInTestFolder("other");
  fs::remove(other);
  fs::remove(path_ + ".lock");
  fs::create_symlink(other, path_ + ".lock");
  EXPECT_EQ(refusal(path_),
            path_ + ": its lock file cannot be opened: Too many levels of symbolic links");
  EXPECT_FALSE(fs::exists(other));
  fs::remove(path_ + ".lock");
}

TEST_F(SocketAtAPath, ThatAnotherProcessHasCreatedIsNotRemoved) {
  auto first = std::make_unique<ListeningSocket>(path_);
  ASSERT_TRUE(fs::remove(path_));
  const ListeningSocket second(path_);
  first.reset();
  EXPECT_TRUE(fs::is_socket(path_));
  EXPECT_EQ(connectingFails(), 0);
}

TEST_F(SocketAtAPath, ThatHasBeenRemovedAlreadyIsNoError) {
  auto socket = std::make_unique<ListeningSocket>(path_);
  ASSERT_TRUE(fs::remove(path_));
  socket.reset();
  EXPECT_FALSE(fs::exists(path_));
}

}  // namespace
}  // namespace ZelAgent
