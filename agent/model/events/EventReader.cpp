#include "agent/model/events/EventReader.h"

#include <algorithm>
#include <string>
#include <string_view>
#include <utility>

#include "agent/language/Errors.h"
#include "agent/language/Limits.h"
#include "agent/language/PrintableText.h"
#include "agent/model/events/Event.h"
#include "agent/model/events/EventLine.h"

namespace ZelAgent {
namespace {

AddVrf readAddedVrf(EventLine& line, std::string vrf) {
  const std::optional<Word> word = line.next();
  if (!word) return {std::move(vrf), 0};
  if (word->text != "id") line.fail("add must be followed by id or the end of the line", word);
  return {std::move(vrf), line.needNumber("N")};
}

Event readVrf(EventLine& line) {
  line.formIs("vrf NAME id|remove|add");
  std::string vrf = line.needVrf("NAME");
  const std::string verb = line.needOneOf("NAME must be followed by", {"id", "remove", "add"});
  if (verb == "remove") {
    line.formIs("vrf NAME remove");
    return RemoveVrf{std::move(vrf)};
  }
  if (verb == "add") {
    line.formIs("vrf NAME add [id N]");
    return readAddedVrf(line, std::move(vrf));
  }
  line.formIs("vrf NAME id N");
  return SetVrfId{std::move(vrf), line.needNumber("N")};
}

Event readFallback(EventLine& line) {
  line.formIs("fallback NAME to|remove");
  std::string vrf = line.needVrf("NAME");
  if (line.needOneOf("NAME must be followed by", {"to", "remove"}) == "remove") {
    line.formIs("fallback NAME remove");
    return RemoveFallback{std::move(vrf)};
  }
  line.formIs("fallback NAME to NAME");
  return SetFallback{std::move(vrf), line.needVrf("the second NAME")};
}

bool readFlag(EventLine& line, const std::string& name) {
  line.formIs(name + " on|off");
  return line.needOneOf(name + " must be followed by", {"on", "off"}) == "on";
}

Event readDecapNh(EventLine& line) {
  return SetDecapNh{readFlag(line, "decap-nh")};
}

Event readDecapNhFallback(EventLine& line) {
  return SetDecapNhFallback{readFlag(line, "decap-nh-fallback")};
}

std::set<std::uint8_t> readLengths(EventLine& line, std::optional<Word> word, IpFamily family) {
  std::set<std::uint8_t> lengths;
  do {
    const std::string otherwise = lengths.empty() ? ", or remove" : "";
    lengths.insert(
        static_cast<std::uint8_t>(line.numberOf(word, "LENGTH", addressBits(family), otherwise)));
    word = line.next();
  } while (word);
  return lengths;
}

Event readPrefixLens(EventLine& line) {
  line.formIs("prefix-lens ipv4|ipv6 NAME LENGTH...|remove");
  const std::string ipv4 = toText(IpFamily::v4);
  const std::string ipv6 = toText(IpFamily::v6);
  const IpFamily family = line.needOneOf("prefix-lens must be followed by", {ipv4, ipv6}) == ipv4
                              ? IpFamily::v4
                              : IpFamily::v6;
  const std::string form = "prefix-lens " + toText(family) + " NAME ";
  line.formIs(form + "LENGTH...|remove");
  std::string vrf = line.needVrf("NAME");
  const std::optional<Word> word = line.next();
  if (word && word->text == "remove") {
    line.formIs(form + "remove");
    return RemovePrefixLens{family, std::move(vrf)};
  }
  return SetPrefixLens{family, std::move(vrf), readLengths(line, word, family)};
}

Event readConfig(EventLine& line) {
  line.formIs("config FILE");
  std::optional<Word> file = line.next();
  if (!file || file->text.empty()) line.fail("FILE must be the name of a file", file);
  if (file->text.find('\0') != std::string::npos) {
    line.fail("FILE must be a name without NUL bytes", file);
  }
  return ApplyConfig{std::move(file->text)};
}

Event readChip(EventLine& line) {
  line.formIs("chip capacity|rules|fail");
  const std::string what =
      line.needOneOf("chip must be followed by", {"capacity", "rules", "fail"});
  if (what != "fail") {
    line.formIs("chip " + what + " N");
    const std::uint32_t count = line.needNumber("N");
    return what == "rules" ? Event(SetChipRules{count}) : Event(SetChipCapacity{count});
  }
  line.formIs("chip fail VRF|any COUNT");
  const std::optional<Word> vrf = line.next();
  const bool isAny = vrf && !vrf->isQuoted && vrf->text == anyVrfWord;
  PlanChipFaults faults;
  if (!isAny) faults.vrf = line.vrfOf(vrf, "VRF", ", or any");
  faults.count = line.needNumber("COUNT");
  return faults;
}

Event readRoute(EventLine& line) {
  line.formIs("route VRF PREFIX decap|via|remove");
  std::string vrf = line.needVrf("VRF");
  const std::optional<Word> text = line.next();
  const auto prefix = parseIpPrefix(text ? text->text : "");
  if (!prefix) line.fail("PREFIX must be an IPv4 or IPv6 prefix such as 192.0.2.0/24", text);
  const std::string verb = line.needOneOf("PREFIX must be followed by", {"decap", "via", "remove"});
  line.formIs("route VRF PREFIX " + verb + (verb == "via" ? " INTERFACE" : ""));
  if (verb == "decap") return SetDecapRoute{std::move(vrf), *prefix};
  if (verb == "remove") return RemoveRoute{std::move(vrf), *prefix};
  return SetEgressRoute{std::move(vrf), *prefix, line.needInterface("INTERFACE")};
}

Event readRetry(EventLine& line) {
  line.formIs("retry");
  return Retry{};
}

Event readShow(EventLine& line) {
  line.formIs("show");
  return Show{};
}

struct Kind {
  const char* name;
  Event (*read)(EventLine&);
};

constexpr Kind kinds[] = {{"vrf", readVrf},
                          {"fallback", readFallback},
                          {"decap-nh", readDecapNh},
                          {"decap-nh-fallback", readDecapNhFallback},
                          {"prefix-lens", readPrefixLens},
                          {"config", readConfig},
                          {"chip", readChip},
                          {"route", readRoute},
                          {"retry", readRetry},
                          {"show", readShow}};

void visitLine(std::string_view line, const EventPlace& place, const EventVisitor& visit) {
  try {
    if (const auto event = readEvent(line)) visit(place, *event);
  } catch (const EventError& error) {
    throw EventError(place.text() + ": " + error.what());
  }
}

}  // namespace

std::optional<Event> readEvent(std::string_view text) {
  EventLine line(text);
  const std::optional<Word> name = line.next();
  if (!name) return std::nullopt;
  const auto* const kind = std::find_if(std::begin(kinds), std::end(kinds), [&](const Kind& known) {
    return name->text == known.name;
  });
  if (kind == std::end(kinds)) {
    line.fail(
        "an event must begin with vrf, fallback, decap-nh, decap-nh-fallback, prefix-lens, config, "
        "chip, route, retry or show",
        name);
  }
  Event event = kind->read(line);
  line.needEnd();
  return event;
}

std::string EventPlace::text() const {
  return printable(file, Limits::shownTextBytes) + ':' + std::to_string(line);
}

void forEachEvent(const std::string& text, const std::string& file, const EventVisitor& visit) {
  std::string_view rest = text;
  EventPlace place{file, 0};
  while (!rest.empty()) {
    ++place.line;
    const std::size_t end = rest.find('\n');
    visitLine(rest.substr(0, end), place, visit);
    rest.remove_prefix(end == std::string_view::npos ? rest.size() : end + 1);
  }
}

}  // namespace ZelAgent
