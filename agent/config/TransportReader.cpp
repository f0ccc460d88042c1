#include "agent/config/TransportReader.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <optional>
#include <utility>

#include "agent/config/NumberRanges.h"

namespace ZelAgent {
namespace {

using PolicyMap::NumberRange;
using PolicyMap::TcpFlagsMatch;

constexpr std::uint8_t tcp = 6;
constexpr std::uint8_t udp = 17;

constexpr std::uint8_t syn = 2;
constexpr std::uint8_t rst = 4;
constexpr std::uint8_t ack = 16;

constexpr std::array<std::pair<const char*, std::uint8_t>, 8> flagIdentities{{
    {"TCP_FIN", 1},
    {"TCP_SYN", syn},
    {"TCP_RST", rst},
    {"TCP_PSH", 8},
    {"TCP_ACK", ack},
    {"TCP_URG", 32},
    {"TCP_ECE", 64},
    {"TCP_CWR", 128},
}};

constexpr const char* modeLeaf = "detail-mode";
constexpr const char* matchModeLeaf = "explicit-detail-match-mode";
constexpr const char* flagsLeaf = "explicit-tcp-flags";
constexpr const char* builtinLeaf = "builtin-detail";

std::optional<std::uint8_t> readFlag(const JsonNode& node) {
  const auto identity = node.asIdentity();
  if (!identity) return std::nullopt;
  const auto found = std::find_if(flagIdentities.begin(), flagIdentities.end(),
                                  [&](const auto& known) { return *identity == known.first; });
  if (found != flagIdentities.end()) return found->second;
  return node.refuseExpecting("an identity such as TCP_SYN");
}

// The bits of the flags, each of which stands once.
std::vector<std::uint8_t> readFlags(const JsonNode& node) {
  std::vector<std::uint8_t> flags;
  const auto* const array = node.value().as<JsonValue::Array>();
  if (array != nullptr && array->empty()) node.refuse("must not be empty");
  for (const JsonNode& element : node.elements()) {
    const auto flag = readFlag(element);
    if (!flag) continue;
    if (std::find(flags.begin(), flags.end(), *flag) != flags.end()) {
      element.refuse("is given twice; each value may stand once");
    }
    flags.push_back(*flag);
  }
  return flags;
}

// Reads one of two identities, and returns whether it is the first.
std::optional<bool> readChoice(const JsonNode& node, const std::string& first,
                               const std::string& second) {
  const auto identity = node.asIdentity();
  if (!identity) return std::nullopt;
  if (*identity == first || *identity == second) return *identity == first;
  return node.refuseExpecting(first + " or " + second);
}

std::vector<TcpFlagsMatch> allOf(const std::vector<std::uint8_t>& flags) {
  TcpFlagsMatch all;
  for (const std::uint8_t flag : flags)
    all.mask = static_cast<std::uint8_t>(all.mask | flag);
  all.value = all.mask;
  return {all};
}

std::vector<TcpFlagsMatch> anyOf(const std::vector<std::uint8_t>& flags) {
  std::vector<TcpFlagsMatch> each;
  each.reserve(flags.size());
  for (const std::uint8_t flag : flags)
    each.push_back({flag, flag});
  return each;
}

}  // namespace

void TransportReader::read() {
  match_.sourcePorts = readPorts("source");
  match_.destinationPorts = readPorts("destination");
  readDetails();
}

std::vector<NumberRange> TransportReader::readPorts(const std::string& side) const {
  const JsonNode* const port = config_.find(side + "-port");
  const JsonNode* const set = config_.find(side + "-port-set");
  if (port != nullptr && set != nullptr) {
    config_.node().refuse("has both \"" + side + "-port\" and \"" + side +
                          "-port-set\"; give one of them");
    return {};
  }
  if (set != nullptr) {
    needProtocol(*set, true);
    return sets_.readPortSet(*set);
  }
  if (port == nullptr) return {};
  needProtocol(*port, true);
  const auto range = readRange(*port, mostPort);
  const bool isAnyPort = range == NumberRange{0, mostPort};
  if (!range || isAnyPort) return {};
  return {*range};
}

void TransportReader::readDetails() {
  const JsonNode* const mode = config_.find(modeLeaf);
  const auto isExplicit = mode == nullptr ? std::nullopt : readChoice(*mode, "EXPLICIT", "BUILTIN");
  if (mode != nullptr && !isExplicit) return;
  if (!isExplicit || !*isExplicit) {
    refuseWithoutMode(matchModeLeaf, "EXPLICIT");
    refuseWithoutMode(flagsLeaf, "EXPLICIT");
  }
  if (!isExplicit || *isExplicit) refuseWithoutMode(builtinLeaf, "BUILTIN");
  if (!isExplicit) return;
  if (*isExplicit) {
    readExplicitDetails(*mode);
  } else {
    readBuiltinDetail(*mode);
  }
}

void TransportReader::readExplicitDetails(const JsonNode& mode) {
  const JsonNode* const matchMode = config_.require(matchModeLeaf);
  const JsonNode* const flags = config_.require(flagsLeaf);
  needProtocol(mode, false);
  const auto isAll = matchMode == nullptr ? std::nullopt : readChoice(*matchMode, "ALL", "ANY");
  if (flags == nullptr) return;
  const auto bits = readFlags(*flags);
  if (isAll) match_.tcpFlags = *isAll ? allOf(bits) : anyOf(bits);
}

void TransportReader::readBuiltinDetail(const JsonNode& mode) {
  const JsonNode* const detail = config_.require(builtinLeaf);
  const auto identity = detail == nullptr ? std::nullopt : detail->asIdentity();
  if (!identity) return;
  if (*identity == "TCP_INITIAL") {
    match_.tcpFlags = {{syn | ack, syn}};
  } else if (*identity == "TCP_ESTABLISHED") {
    match_.tcpFlags = {{ack, ack}, {rst, rst}};
  } else if (*identity == "FRAGMENT") {
    leaveOutFirstFragment(*detail);
    needFamily(mode);
    return;
  } else {
    detail->refuseExpecting("TCP_INITIAL, TCP_ESTABLISHED or FRAGMENT");
    return;
  }
  needProtocol(mode, false);
}

// The detail FRAGMENT is an offset other than 0.
void TransportReader::leaveOutFirstFragment(const JsonNode& detail) {
  if (match_.fragmentOffsets.empty()) match_.fragmentOffsets = {{0, mostFragmentOffset}};
  match_.fragmentOffsets = without(std::move(match_.fragmentOffsets), {{0, 0}});
  if (match_.fragmentOffsets.empty())
    detail.refuse("must not stand beside \"fragment-offsets\" of 0 only");
}

void TransportReader::refuseWithoutMode(const char* leaf, const char* mode) const {
  const JsonNode* const node = config_.find(leaf);
  if (node != nullptr)
    node->refuse("must stand beside \"detail-mode\": \"" + std::string(mode) + '"');
}

void TransportReader::needProtocol(const JsonNode& node, bool allowsUdp) const {
  const bool isRight = match_.protocol == tcp || (allowsUdp && match_.protocol == udp);
  if (isRight || !isHeaderRight_) return;
  node.refuse(std::string("needs the protocol IP_TCP ") + (allowsUdp ? "or IP_UDP " : "") +
              "in the ipv4 or ipv6 of the rule, not " +
              (match_.protocol ? std::to_string(*match_.protocol) : "any"));
}

void TransportReader::needFamily(const JsonNode& node) const {
  if (!match_.family && isHeaderRight_) node.refuse("needs ipv4 or ipv6 in the rule");
}

}  // namespace ZelAgent
