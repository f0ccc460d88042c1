#pragma once

#include <filesystem>
#include <string>

namespace TestFiles {

/// The folder of this test process, for all files that its tests write. Its name is short, so that
/// it can hold sockets, and no other process has it: several builds can run their tests at once.
/// It is removed when the process ends, whether or not tests failed. A process that crashes leaves
/// its folder behind, which no other process uses.
[[nodiscard]] const std::filesystem::path& processFolder();

/// A folder in the folder of the process. It is empty at first, and is removed with this object.
///
///     const TestFiles::TemporaryFolder folder;
///     std::ofstream(folder.path("served.json")) << text;
class TemporaryFolder final {
 public:
  TemporaryFolder();
  TemporaryFolder(const TemporaryFolder&) = delete;
  TemporaryFolder& operator=(const TemporaryFolder&) = delete;
  ~TemporaryFolder();

  [[nodiscard]] const std::filesystem::path& path() const noexcept { return path_; }
  [[nodiscard]] std::string path(const std::string& name) const { return path_ / name; }

 private:
  std::filesystem::path path_;
};

}  // namespace TestFiles
