#include "agent/serve/console/ControlSession.h"

#include <unistd.h>

#include <functional>
#include <istream>
#include <ostream>
#include <sstream>
#include <streambuf>

#include "Mox/QuotedString.h"
#include "agent/language/DisplayWidth.h"
#include "agent/language/Errors.h"
#include "agent/language/PrintableText.h"
#include "agent/serve/console/ControlClient.h"
#include "agent/serve/console/OutputFilters.h"
#include "agent/serve/console/Pager.h"
#include "agent/serve/console/Terminal.h"

namespace ZelAgent {
namespace {

// A stream into lines.
class LineBuffer final : public std::streambuf {
 public:
  explicit LineBuffer(std::function<void(std::string_view)> take) : take_(std::move(take)) {}

  // Takes the last line, if it has no end.
  void end() {
    if (!line_.empty()) take_(line_);
    line_.clear();
  }

 protected:
  int_type overflow(int_type byte) override {
    if (traits_type::eq_int_type(byte, traits_type::eof())) return traits_type::not_eof(byte);
    const char one = traits_type::to_char_type(byte);
    xsputn(&one, 1);
    return byte;
  }
  std::streamsize xsputn(const char* bytes, std::streamsize count) override {
    std::string_view rest(bytes, static_cast<std::size_t>(count));
    for (std::size_t end = rest.find('\n'); end != std::string_view::npos; end = rest.find('\n')) {
      line_ += rest.substr(0, end);
      take_(line_);
      line_.clear();
      rest.remove_prefix(end + 1);
    }
    line_ += rest;
    return count;
  }

 private:
  std::function<void(std::string_view)> take_;
  std::string line_;
};

// How long the console waits for the completions of a word.
constexpr std::chrono::seconds helpTimeout{2};

// Filters see whole lines, so tables are not narrowed for them.
std::uint16_t columnsFor(const OutputFilters& filters) {
  if (!filters.areNone() || isatty(STDOUT_FILENO) != 1) return 0;
  return static_cast<std::uint16_t>(screenOf(STDOUT_FILENO).columns);
}

// The elements that are printable texts.
std::vector<std::string> printableTexts(const OrderedJson& list) {
  std::vector<std::string> texts;
  for (const OrderedJson& element : list) {
    if (!element.is_string()) continue;
    const auto& text = element.get_ref<const std::string&>();
    if (printable(text, std::string_view::npos) == text) texts.push_back(text);
  }
  return texts;
}

// The member, printable. Empty if it is no text.
std::string textIn(const OrderedJson& object, const char* member) {
  const auto found = object.is_object() ? object.find(member) : object.end();
  if (found == object.end() || !found->is_string()) return {};
  return printable(found->get<std::string>(), std::string_view::npos);
}

std::vector<HelpLine> helpLinesIn(const OrderedJson& list) {
  std::vector<HelpLine> lines;
  for (const OrderedJson& line : list)
    lines.push_back({textIn(line, "choice"), textIn(line, "help")});
  return lines;
}

}  // namespace

void WaitNotice::show(const std::string& command, std::chrono::seconds waited) {
  erase();
  std::string text = "waiting for the answer of " + printable(path_, Limits::shownValueBytes);
  if (!command.empty()) text += ": " + printable(command, Limits::shownValueBytes);
  text += " (" + std::to_string(waited.count()) + " s)";
  shown_ = displayWidth(text);
  err_ << text << std::flush;
}

void WaitNotice::erase() {
  if (shown_ > 0) err_ << '\r' << std::string(shown_, ' ') << '\r' << std::flush;
  shown_ = 0;
}

void ControlSession::requireDaemon() {
  static_cast<void>(clientFor("").send({"", false}));
}

ControlClient ControlSession::clientFor(const std::string& command) {
  WaitObserver observer;
  observer.givesUp = [this] {
    if (InterruptWatch::isInterrupted()) notice_.erase();
    return InterruptWatch::isInterrupted();
  };
  observer.ends = [this] { notice_.erase(); };
  if (isatty(STDERR_FILENO) == 1) {
    observer.waits = [this, command](std::chrono::seconds waited) {
      notice_.show(command, waited);
    };
  }
  return {options_.socket, options_.timeout, observer};
}

ExitStatus ControlSession::runLine(const std::string& line) {
  try {
    const LineParts parts = partsOf(line);
    OutputFilters filters(parts.filters);
    if (options_.json && !filters.areNone()) {
      throw EventError("| filters lines of text; leave out --json");
    }
    return printFiltered({std::string(parts.command), options_.json, columnsFor(filters)}, filters);
  } catch (const EventError& error) {
    printError(error.what());
    return ExitStatus::badInput;
  }
}

ExitStatus ControlSession::runLineOrReport(const std::string& line) {
  try {
    return runLine(line);
  } catch (const SocketError& error) {
    printError(error.what());
    return ExitStatus::failure;
  }
}

ExitStatus ControlSession::print(const Request& request, std::ostream& out) {
  const Answer answer = clientFor(request.command).print(request, out);
  if (answer.status != ExitStatus::success) {
    printError(printable(answer.output.get<std::string>(), std::string_view::npos));
  }
  out.flush();
  return answer.status;
}

// A daemon gives up a client that reads nothing while it waits for a key. So an answer has arrived
// before its first page is shown.
ExitStatus ControlSession::printFiltered(const Request& request, OutputFilters& filters) {
  if (options_.json || (filters.areNone() && !pages_)) return print(request, out_);
  std::string text;
  const auto keep = [&](std::string_view line) {
    if (pages_) {
      text.append(line) += '\n';
    } else {
      out_ << line << '\n';
    }
  };
  LineBuffer buffer([&](std::string_view line) { filters.line(line, keep); });
  std::ostream lines(&buffer);
  const ExitStatus status = print(request, lines);
  buffer.end();
  if (status == ExitStatus::success) filters.end(keep);
  printPages(text);
  return status;
}

void ControlSession::printPages(const std::string& text) {
  Screen screen = screenOf(STDOUT_FILENO);
  if (rows_) screen.rows = *rows_;
  Pager pager(out_, screen, readKey);
  std::istringstream lines(text);
  for (std::string line; std::getline(lines, line);) {
    if (!pager.line(line) || InterruptWatch::isInterrupted()) break;
  }
  out_.flush();
}

Answer ControlSession::helpFor(const Request& request) const {
  return ControlClient(options_.socket, helpTimeout).send(request);
}

std::vector<std::string> ControlSession::completionsOf(const std::string& line) const {
  try {
    const Answer answer = helpFor({"complete " + Mox::quoted(line), true});
    if (answer.status == ExitStatus::success) return printableTexts(answer.output);
  } catch (const SocketError&) {
    // The next command prints the error.
  }
  return {};
}

DaemonChoices ControlSession::choicesFor(const std::string& line) const {
  try {
    const Answer answer = helpFor({"choices " + Mox::quoted(line), true});
    if (answer.status == ExitStatus::success) return {helpLinesIn(answer.output), ""};
    return {{}, printable(answer.output.get<std::string>(), std::string_view::npos)};
  } catch (const SocketError& error) {
    return {{}, error.what()};
  }
}

void ControlSession::printError(const std::string& what) {
  out_.flush();
  err_ << "error: " << what << std::endl;
}

}  // namespace ZelAgent
