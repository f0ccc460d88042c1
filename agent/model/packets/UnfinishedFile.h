#pragma once

#include <filesystem>
#include <string_view>

namespace ZelAgent {

/// A new file that is removed unless it gets its final name.
///
/// Only the owner can read and write it. Nothing that exists is opened: neither a file of the same
/// name, nor what a link of that name refers to. All functions throw a `std::system_error`.
class UnfinishedFile final {
 public:
  /// Creates the file with these bytes.
  UnfinishedFile(std::filesystem::path path, std::string_view bytes);
  UnfinishedFile(UnfinishedFile&& other) noexcept;
  UnfinishedFile& operator=(UnfinishedFile&&) = delete;
  ~UnfinishedFile();

  /// Gives the file its final name. A file of that name is replaced.
  void renameTo(const std::filesystem::path& name);

 private:
  std::filesystem::path path_;  // empty once the file has its final name
};

}  // namespace ZelAgent
