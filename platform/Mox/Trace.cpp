#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <utility>
#include <vector>

#include "Mox/Exceptions.h"
#include "Mox/PrintableText.h"
#include "Mox/QuotedString.h"
#include "Mox/TraceHandle.h"
#include "Mox/TraceHelper.h"

namespace Mox {
namespace {

constexpr unsigned allLevels = (1U << TraceHandle::levels) - 1;

/// Levels by handle name. "*" stands for all handles.
using LevelsByName = std::vector<std::pair<std::string, unsigned>>;

[[noreturn]] void refuse(std::string_view entry) {
  throw RangeException("trace levels " + quoted(entry) +
                       ": expected NAME=LEVEL,LEVEL... with levels 0 to 9, or * for all");
}

// Removes the part of `text` before the first `separator`, and the separator, and returns that
// part.
std::string_view takeUntil(char separator, std::string_view& text) {
  const std::size_t end = text.find(separator);
  const std::string_view taken = text.substr(0, end);
  text = end == std::string_view::npos ? std::string_view() : text.substr(end + 1);
  return taken;
}

unsigned parseLevels(std::string_view entry, std::string_view levels) {
  unsigned on = 0;
  if (levels.empty() || levels.ends_with(',')) refuse(entry);
  while (!levels.empty()) {
    const std::string_view level = takeUntil(',', levels);
    if (level == "*") {
      on |= allLevels;
    } else if (level.size() == 1 && level[0] >= '0' && level[0] <= '9') {
      on |= 1U << static_cast<unsigned>(level[0] - '0');
    } else {
      refuse(entry);
    }
  }
  return on;
}

LevelsByName parse(std::string_view text) {
  LevelsByName parsed;
  if (text.ends_with(';')) refuse(text);
  while (!text.empty()) {
    const std::string_view entry = takeUntil(';', text);
    std::string_view levels = entry;
    const std::string_view name = takeUntil('=', levels);
    if (name.empty()) refuse(entry);
    parsed.emplace_back(name, parseLevels(entry, levels));
  }
  return parsed;
}

// Replaces each byte that is not part of a printable character, so that a message is one line.
std::string onOneLine(std::string_view text) {
  std::string line;
  while (!text.empty()) {
    const std::size_t length = printableAtFront(text);
    if (length == 0) {
      line += '?';
    } else {
      line += text.substr(0, length);
    }
    text.remove_prefix(std::max<std::size_t>(length, 1));
  }
  return line;
}

// The sink of the trace, and the levels that were set.
struct Trace {
  LevelsByName said;
  TraceSink sink;

  Trace() {
    const char* fromEnvironment = std::getenv("MOX_TRACE");
    if (fromEnvironment == nullptr) return;
    try {
      said = parse(fromEnvironment);
    } catch (const RangeException& error) {
      std::fprintf(stderr, "MOX_TRACE is ignored: %s\n", error.what());
    }
  }

  static void apply(const LevelsByName& levels, TraceHandle& handle) {
    for (const auto& [name, on] : levels) {
      if (name == "*" || name == handle.name()) handle.levelsOnIs(on);
    }
  }

  void write(const std::string& text) const {
    const std::string line = onOneLine(text);
    if (sink) {
      sink(line);
    } else {
      std::fprintf(stderr, "%.*s\n", static_cast<int>(line.size()), line.data());
    }
  }
};

// Constructed while the platform is loaded, so that it outlives the handles of its users.
Trace processTrace;

}  // namespace

TraceHandle* TraceHandle::first_ = nullptr;

TraceHandle::TraceHandle(const char* name, unsigned levelsOn) noexcept
    : name_(name), levelsOn_(levelsOn), next_(std::exchange(first_, this)) {
  Trace::apply(processTrace.said, *this);
}

TraceHandle::~TraceHandle() {
  TraceHandle** link = &first_;
  while (*link != this)
    link = &(*link)->next_;
  *link = next_;
}

void traceLevelsIs(std::string_view text) {
  const LevelsByName levels = parse(text);
  for (TraceHandle* handle = TraceHandle::first_; handle != nullptr; handle = handle->next_)
    Trace::apply(levels, *handle);
  processTrace.said.insert(processTrace.said.end(), levels.begin(), levels.end());
}

TraceSink traceSinkIs(TraceSink sink) {
  processTrace.sink.swap(sink);
  return sink;
}

TraceHelper::TraceHelper(const TraceHandle& handle, unsigned level, const char* path, unsigned line,
                         const char* function)
    : isOn_(handle.isOn(level)) {
  if (isOn_) {
    line_ << handle.name() << ' ' << level << ' ' << path << ':' << line << ' ' << function << ' ';
  }
}

TraceHelper::~TraceHelper() {
  if (!isOn_) return;
  try {
    processTrace.write(line_.str());
  } catch (...) {
    // Tracing must not change what is traced: if a sink throws, its line is lost.
  }
}

}  // namespace Mox
