#include "tests/files/TemporaryFolder.h"

#include <gtest/gtest.h>
#include <stdlib.h>
#include <unistd.h>

#include <cerrno>
#include <system_error>

namespace TestFiles {
namespace {

std::filesystem::path newFolder(const std::filesystem::path& parent, const std::string& prefix) {
  std::string name = parent / (prefix + "XXXXXX");
  if (mkdtemp(name.data()) == nullptr)
    throw std::system_error(errno, std::generic_category(), name);
  return name;
}

void removeAll(const std::filesystem::path& folder) {
  std::error_code ignored;
  std::filesystem::remove_all(folder, ignored);
}

// A process that the test process forks may run destructors too, and must not remove the folder.
class FolderOfProcess final {
 public:
  FolderOfProcess() : path_(newFolder(::testing::TempDir(), "zel-")), owner_(getpid()) {}
  FolderOfProcess(const FolderOfProcess&) = delete;
  FolderOfProcess& operator=(const FolderOfProcess&) = delete;
  ~FolderOfProcess() {
    if (getpid() == owner_) removeAll(path_);
  }

  [[nodiscard]] const std::filesystem::path& path() const noexcept { return path_; }

 private:
  std::filesystem::path path_;
  pid_t owner_;
};

}  // namespace

const std::filesystem::path& processFolder() {
  static const FolderOfProcess folder;
  return folder.path();
}

TemporaryFolder::TemporaryFolder() : path_(newFolder(processFolder(), "")) {}

TemporaryFolder::~TemporaryFolder() {
  removeAll(path_);
}

}  // namespace TestFiles
