#pragma once

#include <sys/un.h>

#include <chrono>
#include <cstddef>
#include <cstdint>

/// The limits of the agent. The code that keeps a limit uses its constant from here.
///
/// The limits of the platform and of the chip are defined there. `LimitsReport.h` lists all limits,
/// and `zel-agent show limits` prints them. A new limit needs a row there, and a case in the test
/// of the rows.
namespace ZelAgent::Limits {

/// A name of a configuration, an event or the command line has 1 to this many bytes.
inline constexpr std::size_t nameBytes = 100;
/// No configuration, event file or capture is larger.
inline constexpr std::size_t inputFileBytes = std::size_t{64} << 20U;
/// The most levels of arrays and objects in a JSON document.
inline constexpr std::size_t documentLevels = 100;
/// Ranges of a port set, after ports beside each other are joined.
inline constexpr std::size_t portRanges = 256;
/// Errors of a configuration that are printed, and warnings. The number of further ones is printed.
inline constexpr std::size_t shownErrors = 50;
inline constexpr std::size_t shownWarnings = 1000;
/// The longest payload of a packet that is written as text. An IPv4 header fits in front of it.
inline constexpr std::size_t payloadBytes = 65535 - 20;

/// VRF resources of a chip if nothing else is given.
inline constexpr std::uint32_t chipResources = 1024;
/// Rules that the classification hardware can hold, of all interfaces together.
inline constexpr std::uint32_t chipRules = 64 * 1024;
/// Gateways on the way to a next hop. A longer chain counts as a loop.
inline constexpr unsigned gateways = 8;
/// Hook calls by which one step of the agent's recovery repeats refused requests.
inline constexpr std::size_t retriesOfAStep = 64;
/// Steps of the agent's recovery between two requests for a refused action.
inline constexpr std::uint64_t pauseSteps = 32;

/// The longest request line, without its line end.
inline constexpr std::size_t requestBytes = std::size_t{64} << 10U;
/// The longest answer. The daemon sends an error instead of a longer one, and `ctl` refuses it.
inline constexpr std::size_t answerBytes = std::size_t{8} << 20U;
/// Answers that all clients of a daemon together have not read yet. An error replaces a longer one.
inline constexpr std::size_t waitingAnswersBytes = std::size_t{64} << 20U;
/// An answer of at most this size is sent however many others have not been read.
inline constexpr std::size_t shortAnswerBytes = std::size_t{64} << 10U;
/// A page of an answer that is sent page by page. What is sent at a time has at most two pages, and
/// as a text in JSON twice as many bytes. So it is a short answer.
inline constexpr std::size_t pageBytes = shortAnswerBytes / 4;
/// The most levels of JSON in an answer that `ctl` reads. No answer has as many.
inline constexpr int answerLevels = 100;
/// Clients of a daemon at one time.
inline constexpr std::size_t clients = 256;
/// How long a client of a daemon may read nothing of its answer, if nothing else is given.
inline constexpr std::chrono::seconds clientTimeout{30};
/// The time in which a client must read a whole answer, as a multiple of its timeout.
inline constexpr unsigned answerTimeouts = 10;
/// How long `ctl` waits for a daemon that sends nothing, if nothing else is given.
inline constexpr std::chrono::seconds ctlTimeout{300};
/// Lines of the daemon's log about one action, or about the rules of one interface, in `logPause`.
inline constexpr unsigned logLinesOfASubject = 2;
inline constexpr std::chrono::seconds logPause{10};
/// Lines of the daemon's log about programming in a second.
inline constexpr unsigned logLinesInASecond = 20;
/// Actions and interfaces that the daemon's log remembers after a failure.
inline constexpr std::size_t logSubjects = 1024;
/// The longest path of a socket.
inline constexpr std::size_t socketPathBytes = sizeof(sockaddr_un::sun_path) - 1;
/// Completions of a word in an answer.
inline constexpr std::size_t completions = 100;
/// Lines that the console remembers.
inline constexpr int consoleLines = 1000;

/// What a message or a table shows of a text from outside.
inline constexpr std::size_t shownTextBytes = 1000;
/// What a message shows of a value or of a word.
inline constexpr std::size_t shownValueBytes = 100;
/// Ports, offsets or prefixes of a match that a report shows of each list.
inline constexpr std::size_t shownListValues = 64;
/// Interfaces of a policy that a table shows.
inline constexpr std::size_t shownInterfaces = 16;

}  // namespace ZelAgent::Limits
