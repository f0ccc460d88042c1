#pragma once

#include <sys/types.h>

#include <cstddef>
#include <ostream>
#include <sstream>
#include <string>
#include <string_view>
#include <utility>

#include "Blinklog/FileHandle.h"
#include "agent/language/LogLine.h"

namespace ZelAgent {

/// Writes lines to a descriptor that perhaps nobody reads, and never waits.
///
/// The lines are written when the buffer is flushed and at its end. A line that cannot be written
/// at once is dropped. The number of dropped lines is written, as a line, before the next line that
/// can be written. Of a line whose beginning was written, the rest is written before any other
/// line. An error other than a full pipe is an error of the stream.
///
/// Other processes may use the same pipe or terminal. It is therefore opened again without
/// blocking. Where that is not possible, at most PIPE_BUF bytes are written at a time, and only
/// while the system accepts bytes. Writes to a file wait for the file system only.
class LineBuffer final : public std::stringbuf {
 public:
  /// The descriptor must stay open. `start` begins the line with the number of dropped lines.
  LineBuffer(int descriptor, LineStart start);
  LineBuffer(const LineBuffer&) = delete;
  LineBuffer& operator=(const LineBuffer&) = delete;
  ~LineBuffer() override;

 private:
  int sync() override;

  // The line with the number of dropped lines. Empty if there are none.
  [[nodiscard]] std::string droppedLine() const;
  // Returns false for an error. A dropped line is none.
  bool print(const std::string& line);
  // Writes what is accepted at once, and returns how many bytes.
  std::size_t write(std::string_view bytes);
  [[nodiscard]] ssize_t writeOnce(std::string_view bytes) const;

  int descriptor_;
  LineStart start_;
  Blinklog::FileHandle own_;  // the same pipe or terminal, without blocking; may be closed
  std::string unfinished_;    // the rest of a line
  std::size_t dropped_ = 0;   // lines since the last one that was written
  int error_ = 0;             // of the last write
};

/// A stream of lines that never waits. Flush it after each line.
class LineStream final : public std::ostream {
 public:
  explicit LineStream(int descriptor, LineStart start = {})
      : std::ostream(nullptr), buffer_(descriptor, std::move(start)) {
    rdbuf(&buffer_);
  }

 private:
  LineBuffer buffer_;
};

}  // namespace ZelAgent
