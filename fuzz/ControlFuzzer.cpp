// Fuzzes the control protocol. The first byte of the input is the size of the pieces in which the
// other bytes arrive from a client.
//
// The requests do not depend on the size of the pieces. Each request has one answer in its own
// framing: one JSON line with a status and an output, or text lines of which only the last is ".".
// No command fails by an unexpected exception. After each command `checkAgent` holds.

#include <algorithm>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "Blinklog/Ring.h"
#include "agent/commands/served/ServedAgent.h"
#include "agent/language/Errors.h"
#include "agent/model/events/Event.h"
#include "agent/model/events/EventReader.h"
#include "agent/serve/protocol/ControlService.h"
#include "fuzz/AgentChecks.h"
#include "fuzz/FuzzedBytes.h"
#include "fuzz/Must.h"

namespace {

using Fuzz::must;
using nlohmann::json;
using namespace ZelAgent;  // NOLINT(google-build-using-namespace): all checked names are in it

constexpr std::uint32_t smallChip = 4;
constexpr std::size_t longestReply = std::size_t{1} << 18U;

bool areAlike(const RequestLine& a, const RequestLine& b) {
  return a.kind == b.kind && a.text == b.text;
}

// The requests of a client whose bytes arrive in pieces of `piece` bytes. Each request is taken as
// soon as it is complete.
std::vector<RequestLine> requestsIn(std::string_view bytes, std::size_t piece) {
  RequestLines lines;
  std::vector<RequestLine> requests;
  const auto takeAll = [&] {
    while (lines.hasNext())
      requests.push_back(lines.next());
  };
  while (!bytes.empty()) {
    lines.append(bytes.substr(0, piece));
    bytes.remove_prefix(std::min(piece, bytes.size()));
    takeAll();
  }
  lines.end();
  takeAll();
  return requests;
}

void checkAlike(const std::vector<RequestLine>& one, const std::vector<RequestLine>& other) {
  must(std::equal(one.begin(), one.end(), other.begin(), other.end(), areAlike),
       "requests do not depend on how their bytes were cut");
}

// The request, with a configuration that a fuzzer may read in place of the one that it names.
RequestLine withReadableConfiguration(const RequestLine& line) {
  try {
    const Request request = readRequest(line.text);
    const auto event = readEvent(request.command);
    const auto* const config = event ? std::get_if<ApplyConfig>(&*event) : nullptr;
    if (config == nullptr) return line;
    return {line.kind, toText(ApplyConfig{Fuzz::configurationFor(config->file)})};
  } catch (const RequestError&) {
    return line;
  } catch (const EventError&) {
    return line;
  }
}

void checkOutput(const json& status, const std::string& output) {
  must(status == 0 || !output.empty(), "an error says what is wrong");
  must(!output.starts_with("the command failed: "), "no command fails by an exception");
}

void checkJson(const std::string& bytes) {
  must(std::count(bytes.begin(), bytes.end(), '\n') == 1 && bytes.back() == '\n',
       "an answer in JSON is one line");
  const json answer = json::parse(bytes);
  must(answer.size() == 2 && answer.contains("output"), "it has a status and an output");
  const json& output = answer.at("output");
  checkOutput(answer.at("status"), output.is_string() ? output.get<std::string>() : "other JSON");
}

void checkText(const std::string& bytes) {
  must(bytes == ".\n" || bytes.ends_with("\n.\n"), "an answer ends with a line that is a dot");
  const bool isOnly =
      bytes == ".\n" || (!bytes.starts_with(".\n") && bytes.find("\n.\n") == bytes.size() - 3);
  must(isOnly, "no other line is a dot");
  const bool isError = bytes.starts_with("error: ");
  checkOutput(isError ? 2 : 0, isError ? bytes.substr(7) : "text");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  Fuzz::FuzzedBytes input(data, size);
  const std::size_t piece = input.byte() + std::size_t{1};
  const auto rest = input.rest();
  const std::string_view bytes(reinterpret_cast<const char*>(rest.data()), rest.size());
  const auto requests = requestsIn(bytes, piece);
  checkAlike(requests, requestsIn(bytes, bytes.size()));

  Blinklog::ring().clear();
  ServedAgent served(ZEL_EXAMPLES_DIR "/late-vrf.json", smallChip);
  static_cast<void>(served.start());
  ControlService service(served, longestReply);
  for (const RequestLine& request : requests) {
    const RequestLine line = withReadableConfiguration(request);
    const std::string answer = service.reply(line).bytes;
    must(answer.size() <= longestReply, "no answer is longer than the longest");
    if (framingOf(line.text) == Framing::json) {
      checkJson(answer);
    } else {
      checkText(answer);
    }
    Fuzz::checkAgent(served.agent(), served.agent().chip());
  }
  return 0;
}
