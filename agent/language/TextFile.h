#pragma once

#include <cstdio>
#include <memory>
#include <stdexcept>
#include <string>

namespace ZelAgent {

/// An input file cannot be used. `what()` says why, and does not name the file: "is a FIFO".
class InputFileError final : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

/// A file that is open for reading. It is closed at the end.
using InputFile = std::unique_ptr<std::FILE, int (*)(std::FILE*)>;

/// Opens a configuration, an event file or a capture. It must be a regular file of at most
/// `Limits::inputFileBytes`. So neither opening nor reading it waits for another process.
///
/// Throws an `InputFileError`. The file may grow later, so the reader counts too.
[[nodiscard]] InputFile openInputFile(const std::string& file);

/// The error that a file has more than `Limits::inputFileBytes`.
[[nodiscard]] InputFileError inputTooLarge();

/// Returns the rest of the file. Throws an `InputFileError`.
[[nodiscard]] std::string readAll(const InputFile& file);

/// Returns all bytes of the file.
///
/// Throws a `ConfigError` if it cannot be read. Its message asks for `wanted`, for example
/// "a readable JSON file", instead.
[[nodiscard]] std::string readTextFile(const std::string& file, const std::string& wanted);

}  // namespace ZelAgent
