// A configuration file whose reads succeed or fail as a test chooses.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "agent/config/Configuration.h"

namespace ZelAgent {

enum class FileFault : std::uint8_t { missing, empty, directory, fifo, loop, failedRead, tooLarge };
inline constexpr unsigned fileFaults = 7;

// A real file. Each content or fault replaces the one before.
class SimulatedFile final {
 public:
  explicit SimulatedFile(std::string path) : path_(std::move(path)) {}

  // The file has this content, which may be a wrong document.
  void documentIs(const std::string& document);
  void faultIs(FileFault fault);

  [[nodiscard]] const std::string& path() const { return path_; }
  // What a reader must get; none for an error.
  [[nodiscard]] const std::optional<Configuration>& configuration() const { return configuration_; }
  // A part of the error that a reader must get.
  [[nodiscard]] const std::string& error() const { return error_; }

 private:
  void remove() const;
  void contentIs(const std::string& content) const;

  std::string path_;
  std::optional<Configuration> configuration_;
  std::string error_;
};

[[nodiscard]] std::string toText(FileFault fault);

}  // namespace ZelAgent
