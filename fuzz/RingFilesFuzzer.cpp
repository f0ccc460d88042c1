// Fuzzes `zel-agent trace`. The input is the choices that make up a file with a ring: its sites,
// slots and messages, and up to three kinds of damage.
//
// An undamaged file of usual size is printed exactly, as text and as JSON, unless its messages
// would take more than seven times its size. Any other file is printed or refused by one printable
// line, both times alike. Whatever is printed is printable and at most ten times the size of the
// file. The messages are in order, and both forms print the same ones.

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <cstdio>
#include <nlohmann/json.hpp>
#include <sstream>
#include <string>

#include "agent/commands/offline/OfflineCommands.h"
#include "agent/language/PrintableText.h"
#include "fuzz/AgentChecks.h"
#include "fuzz/MemoryFile.h"
#include "fuzz/Must.h"
#include "fuzz/RingFileBytes.h"

namespace {

using Fuzz::FuzzedBytes;
using Fuzz::must;
using Fuzz::RingFileBytes;
using Fuzz::RingMessage;
using nlohmann::json;
using ZelAgent::ExitStatus;

// Larger outputs are checked less exactly, since that would take seconds.
constexpr std::size_t someBytes = 65536;

struct Printed {
  ExitStatus status;
  std::string out;
  std::string err;
};

Printed printedAs(const std::string& path, bool asJson) {
  std::ostringstream out;
  std::ostringstream err;
  const ExitStatus status = ZelAgent::showTraceFile({path, asJson}, out, err);
  return {status, out.str(), err.str()};
}

void checkPrintable(const std::string& out) {
  must(out.ends_with('\n'), "the last line has an end");
  must(std::none_of(out.begin(), out.end(),
                    [](char byte) {
                      return byte != '\n' &&
                             (static_cast<unsigned char>(byte) < ' ' || byte == '\x7f');
                    }),
       "no control character is printed");
  if (out.size() > someBytes) return;
  must(ZelAgent::printableLines(out) == out, "every line is printable");
}

void checkRefusal(const Printed& printed, const std::string& path) {
  must(printed.status == ExitStatus::badInput, "a file is printed or refused");
  must(printed.out.empty(), "nothing is printed of a file that is refused");
  must(printed.err.ends_with('\n'), "a refusal is a line");
  Fuzz::checkError(std::string_view(printed.err).substr(0, printed.err.size() - 1),
                   "error: " + path + ": ");
}

// Checks what holds for the output of any file, and that both forms have the same messages.
void checkOutput(const Printed& text, const Printed& asJson, std::size_t fileBytes) {
  for (const Printed* const printed : {&text, &asJson}) {
    must(printed->status == ExitStatus::success && printed->err.empty(), "a file is printed alone");
    must(printed->out.size() <= 10 * fileBytes, "the output is at most ten times the file");
    checkPrintable(printed->out);
  }
  const json document = json::parse(asJson.out);
  std::istringstream lines(text.out);
  std::string line;
  std::getline(lines, line);
  std::uint64_t next = 0;
  for (const json& message : document.at("messages")) {
    const auto sequence = message.at("sequence").get<std::uint64_t>();
    must(sequence >= next, "messages are in order");
    next = sequence + 1;
    must(std::getline(lines, line) &&
             line.starts_with(std::to_string(sequence) + ' ' +
                              message.at("time").get<std::string>() + " level "),
         "both forms print the same messages");
  }
  must(!std::getline(lines, line), "there is one line for each message");
}

// The size of a text when every unusual byte of it is escaped.
std::uint64_t escapedBytes(const std::string& text) {
  std::uint64_t bytes = 0;
  for (const char byte : text)
    bytes += byte == '"' || byte == '\\' ? 2 : byte >= ' ' && byte <= '~' ? 1 : 6;
  return bytes;
}

bool isTooLong(const RingFileBytes& file) {
  std::uint64_t bytes = 0;
  for (const RingMessage& message : file.messages)
    bytes += escapedBytes(message.site.path) + escapedBytes(message.site.function) +
             escapedBytes(message.text);
  return bytes > 7 * file.bytes.size();
}

// As 2026-01-31T23:59:59.
std::string secondText(std::uint64_t secondsSince1970) {
  using namespace std::chrono;  // NOLINT(google-build-using-namespace): only here
  const sys_seconds time{seconds(secondsSince1970)};
  const auto day = floor<days>(time);
  const year_month_day date(day);
  const hh_mm_ss clock(time - day);
  char text[64];
  std::snprintf(text, sizeof text, "%04d-%02u-%02uT%02ld:%02ld:%02ld",
                static_cast<int>(date.year()), static_cast<unsigned>(date.month()),
                static_cast<unsigned>(date.day()), static_cast<long>(clock.hours().count()),
                static_cast<long>(clock.minutes().count()),
                static_cast<long>(clock.seconds().count()));
  return text;
}

// As 2026-01-31T23:59:59.123456Z.
std::string timeText(std::uint64_t nanosecondsSince1970) {
  constexpr std::uint64_t second = 1'000'000'000;
  const std::string digits = std::to_string(second + nanosecondsSince1970 % second);
  return secondText(nanosecondsSince1970 / second) + '.' + digits.substr(1, 6) + 'Z';
}

std::string printable(const std::string& text) {
  return ZelAgent::printable(text, std::string::npos);
}

std::string firstLine(const RingFileBytes& file) {
  return "process " + std::to_string(file.process) + " since " + secondText(file.madeAt) + "Z, " +
         std::to_string(file.messages.size()) + " messages\n";
}

std::string wantedText(const RingFileBytes& file) {
  std::string wanted = firstLine(file);
  for (const RingMessage& message : file.messages)
    wanted += std::to_string(message.sequence) + ' ' + timeText(message.time) + " level " +
              std::to_string(message.site.level) + " line " + std::to_string(message.site.line) +
              ' ' + printable(message.site.function) + ": " + printable(message.text) + '\n';
  return wanted;
}

// The text as JSON holds it: bytes that are not UTF-8 are replaced.
std::string inJson(const std::string& text) {
  return json::parse(json(text).dump(-1, ' ', false, json::error_handler_t::replace));
}

json wantedJson(const RingFileBytes& file) {
  json messages = json::array();
  for (const RingMessage& message : file.messages)
    messages.push_back({{"sequence", message.sequence},
                        {"time", timeText(message.time)},
                        {"level", message.site.level},
                        {"path", inJson(message.site.path)},
                        {"line", message.site.line},
                        {"function", inJson(message.site.function)},
                        {"text", inJson(message.text)}});
  return {
      {"process", file.process}, {"madeAt", secondText(file.madeAt) + "Z"}, {"messages", messages}};
}

void mustBeExact(const RingFileBytes& file, const Printed& text, const Printed& asJson) {
  if (isTooLong(file)) {
    must(text.err.find("more than 7 times its size") != std::string::npos,
         "a file whose messages would take too much is refused for that");
    return;
  }
  must(text.out.starts_with(firstLine(file)), "the first line is exact");
  if (text.out.size() > someBytes) return;
  must(text.out == wantedText(file), "an undamaged file is printed exactly");
  must(json::parse(asJson.out) == wantedJson(file), "and so as JSON");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  FuzzedBytes input(data, size);
  unsigned damages = input.below(4);
  const bool isUndamaged = damages == 0;
  RingFileBytes file = Fuzz::ringFileOf(input);
  for (; damages > 0; --damages)
    Fuzz::damage(file.bytes, input);
  const Fuzz::MemoryFile memory(file.bytes);
  const Printed text = printedAs(memory.path(), false);
  const Printed asJson = printedAs(memory.path(), true);
  if (isUndamaged) mustBeExact(file, text, asJson);
  if (text.status == ExitStatus::success) {
    checkOutput(text, asJson, file.bytes.size());
  } else {
    checkRefusal(text, memory.path());
    must(asJson.status == text.status && asJson.out.empty() && asJson.err == text.err,
         "a file is refused alike in both forms");
  }
  return 0;
}
