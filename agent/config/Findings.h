#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <string>
#include <utility>
#include <vector>

namespace ZelAgent {

/// Lines about one document, in the order of the document. The first ones are kept; the others are
/// counted.
class FindingLines final {
 public:
  explicit FindingLines(std::size_t kept) : kept_(kept) {}

  /// `order` is the place of the line in the document. Lines of one place keep their order.
  void add(std::size_t order, std::string line);
  [[nodiscard]] std::size_t count() const noexcept { return count_; }
  /// The kept lines. One more line, "FILE: ... and N more WHAT", says how many others there are.
  [[nodiscard]] std::vector<std::string> lines(const std::string& file,
                                               const std::string& what) const;

 private:
  std::size_t kept_;
  std::size_t count_ = 0;
  std::multimap<std::size_t, std::string> lines_;
};

/// Whether a rule with something that the agent does not support is left out, or is an error.
enum class Leniency : std::uint8_t { strict, lenient };

/// What a reader finds wrong in one document. Each finding is one line "FILE: PATH: WHAT".
class Findings final {
 public:
  Findings(const std::string& file, Leniency leniency);

  [[nodiscard]] bool isLenient() const noexcept { return leniency_ == Leniency::lenient; }
  void error(std::size_t order, const std::string& path, const std::string& what);
  void warning(std::size_t order, const std::string& path, const std::string& what);
  /// Something that is not supported: an error, or a warning if the reader is lenient. The warning
  /// says `consequence` too.
  void unsupported(std::size_t order, const std::string& path, const std::string& what,
                   const std::string& consequence);
  /// The number of errors, and of things that are not supported. Whoever reads something compares
  /// the number before with the one after, to know whether all of it was right.
  [[nodiscard]] std::size_t problems() const noexcept { return problems_; }

  /// Throws a `ConfigError` with all errors, and with the warnings, if there is an error.
  void throwErrors() const;
  [[nodiscard]] std::vector<std::string> warnings() const;

 private:
  std::string file_;  // printable
  Leniency leniency_;
  std::size_t problems_ = 0;
  FindingLines errors_;
  FindingLines warnings_;
};

}  // namespace ZelAgent
