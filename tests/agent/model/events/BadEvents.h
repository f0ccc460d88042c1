// Every way in which a line of an event file can be wrong, with the whole message. Read by the
// tests of the reader and by those of the agent.
#pragma once

#include <ostream>
#include <string>
#include <vector>

namespace ZelAgent {

struct BadEvent {
  const char* name;
  std::string line;
  std::string message;

  friend std::ostream& operator<<(std::ostream& stream, const BadEvent& event) {
    return stream << event.name;
  }
};

inline std::vector<BadEvent> badEvents() {
  const std::string hundredAndOne(101, 'n');
  const std::string hundred(100, 'n');
  return {
      {"UnknownEvent", "paint red",
       "an event must begin with vrf, fallback, decap-nh, decap-nh-fallback, prefix-lens, config, "
       "chip, route, retry or show, found 'paint'"},
      {"UnknownEventInUpperCase", "SHOW",
       "an event must begin with vrf, fallback, decap-nh, decap-nh-fallback, prefix-lens, config, "
       "chip, route, retry or show, found 'SHOW'"},
      {"QuoteInWord", "vrf it's remove",
       "vrf NAME id|remove|add: expected the word in quotes, as 'it\\'s' at byte 4, found "
       "'it\\'s remove'"},
      {"BackslashInWord", "vrf a\\b remove",
       "vrf NAME id|remove|add: expected the word in quotes, as 'a\\\\b' at byte 4, found "
       "'a\\\\b remove'"},
      {"ControlCharacterInWord", "vrf a\x01 remove",
       "vrf NAME id|remove|add: expected the word in quotes, as 'a\\x01' at byte 4, found "
       "'a\\x01 remove'"},
      {"ByteThatIsNotUtf8", "vrf \xff remove",
       "vrf NAME id|remove|add: expected the word in quotes, as '\\xff' at byte 4, found "
       "'\\xff remove'"},
      {"QuoteThatIsNotClosed", "vrf 'red id 7",
       "vrf NAME id|remove|add: expected a closing quote at byte 13, found the end of the text"},
      {"UnknownEscape", "vrf 'r\\ed' id 7",
       "vrf NAME id|remove|add: expected one of \\ ' n r t x at byte 7, found 'ed\\' id 7'"},
      {"WordRightAfterAQuote", "vrf 'red'id 7",
       "vrf NAME id|remove|add: expected a blank after the closing quote at byte 9, found 'id 7'"},

      {"VrfAlone", "vrf",
       "vrf NAME id|remove|add: NAME must be a VRF name of 1 to 100 bytes, found the end of the "
       "line"},
      {"VrfAndAComment", "vrf # red",
       "vrf NAME id|remove|add: NAME must be a VRF name of 1 to 100 bytes, found the end of the "
       "line"},
      {"VrfWithAnEmptyName", "vrf '' remove",
       "vrf NAME id|remove|add: NAME must be a VRF name of 1 to 100 bytes, found ''"},
      {"VrfWithALongName", "vrf " + hundredAndOne + " remove",
       "vrf NAME id|remove|add: NAME must be a VRF name of 1 to 100 bytes, found '" + hundred +
           "'..."},
      {"VrfWithoutAVerb", "vrf red",
       "vrf NAME id|remove|add: NAME must be followed by id, remove or add, found the end of the "
       "line"},
      {"VrfWithAnUnknownVerb", "vrf red up",
       "vrf NAME id|remove|add: NAME must be followed by id, remove or add, found 'up'"},
      {"VrfIdWithoutANumber", "vrf red id",
       "vrf NAME id N: N must be a number from 0 to 4294967295, found the end of the line"},
      {"VrfIdIsNoNumber", "vrf red id x",
       "vrf NAME id N: N must be a number from 0 to 4294967295, found 'x'"},
      {"VrfIdIsNegative", "vrf red id -1",
       "vrf NAME id N: N must be a number from 0 to 4294967295, found '-1'"},
      {"VrfIdHasASign", "vrf red id +1",
       "vrf NAME id N: N must be a number from 0 to 4294967295, found '+1'"},
      {"VrfIdIsTooLarge", "vrf red id 4294967296",
       "vrf NAME id N: N must be a number from 0 to 4294967295, found '4294967296'"},
      {"VrfIdIsFollowedByMore", "vrf red id 1 2",
       "vrf NAME id N: the line must end here, found '2'"},
      {"VrfRemoveIsFollowedByMore", "vrf red remove blue",
       "vrf NAME remove: the line must end here, found 'blue'"},
      {"VrfAddIsFollowedByANumber", "vrf red add 7",
       "vrf NAME add [id N]: add must be followed by id or the end of the line, found '7'"},
      {"VrfAddIdWithoutANumber", "vrf red add id",
       "vrf NAME add [id N]: N must be a number from 0 to 4294967295, found the end of the line"},
      {"VrfAddIdIsNoNumber", "vrf red add id 1e3",
       "vrf NAME add [id N]: N must be a number from 0 to 4294967295, found '1e3'"},
      {"VrfAddIsFollowedByMore", "vrf red add id 7 8",
       "vrf NAME add [id N]: the line must end here, found '8'"},

      {"FallbackAlone", "fallback",
       "fallback NAME to|remove: NAME must be a VRF name of 1 to 100 bytes, found the end of the "
       "line"},
      {"FallbackWithoutAVerb", "fallback red",
       "fallback NAME to|remove: NAME must be followed by to or remove, found the end of the line"},
      {"FallbackWithAnArrow", "fallback red -> blue",
       "fallback NAME to|remove: NAME must be followed by to or remove, found '->'"},
      {"FallbackToNobody", "fallback red to",
       "fallback NAME to NAME: the second NAME must be a VRF name of 1 to 100 bytes, found the end "
       "of the line"},
      {"FallbackToTwo", "fallback red to blue green",
       "fallback NAME to NAME: the line must end here, found 'green'"},
      {"FallbackRemoveIsFollowedByMore", "fallback red remove now",
       "fallback NAME remove: the line must end here, found 'now'"},

      {"DecapNhAlone", "decap-nh",
       "decap-nh on|off: decap-nh must be followed by on or off, found the end of the line"},
      {"DecapNhIsNeitherOnNorOff", "decap-nh true",
       "decap-nh on|off: decap-nh must be followed by on or off, found 'true'"},
      {"DecapNhIsFollowedByMore", "decap-nh on off",
       "decap-nh on|off: the line must end here, found 'off'"},
      {"DecapNhFallbackAlone", "decap-nh-fallback",
       "decap-nh-fallback on|off: decap-nh-fallback must be followed by on or off, found the end "
       "of the line"},
      {"DecapNhFallbackIsNeitherOnNorOff", "decap-nh-fallback 1",
       "decap-nh-fallback on|off: decap-nh-fallback must be followed by on or off, found '1'"},
      {"DecapNhFallbackIsFollowedByMore", "decap-nh-fallback off now",
       "decap-nh-fallback on|off: the line must end here, found 'now'"},

      {"PrefixLensAlone", "prefix-lens",
       "prefix-lens ipv4|ipv6 NAME LENGTH...|remove: prefix-lens must be followed by ipv4 or ipv6, "
       "found the end of the line"},
      {"PrefixLensOfAnUnknownFamily", "prefix-lens red 24",
       "prefix-lens ipv4|ipv6 NAME LENGTH...|remove: prefix-lens must be followed by ipv4 or ipv6, "
       "found 'red'"},
      {"PrefixLensWithoutAName", "prefix-lens ipv4",
       "prefix-lens ipv4 NAME LENGTH...|remove: NAME must be a VRF name of 1 to 100 bytes, found "
       "the end of the line"},
      {"PrefixLensWithoutALength", "prefix-lens ipv4 red",
       "prefix-lens ipv4 NAME LENGTH...|remove: LENGTH must be a number from 0 to 32, or remove, "
       "found the end of the line"},
      {"PrefixLenIsNoNumber", "prefix-lens ipv6 red /64",
       "prefix-lens ipv6 NAME LENGTH...|remove: LENGTH must be a number from 0 to 128, or remove, "
       "found '/64'"},
      {"PrefixLenIsTooLongForIpv4", "prefix-lens ipv4 red 32 33",
       "prefix-lens ipv4 NAME LENGTH...|remove: LENGTH must be a number from 0 to 32, found '33'"},
      {"PrefixLenIsTooLongForIpv6", "prefix-lens ipv6 red 129",
       "prefix-lens ipv6 NAME LENGTH...|remove: LENGTH must be a number from 0 to 128, or remove, "
       "found '129'"},
      {"PrefixLensRemoveIsFollowedByMore", "prefix-lens ipv6 red remove 64",
       "prefix-lens ipv6 NAME remove: the line must end here, found '64'"},

      {"ConfigAlone", "config",
       "config FILE: FILE must be the name of a file, found the end of the "
       "line"},
      {"ConfigWithAnEmptyName", "config ''",
       "config FILE: FILE must be the name of a file, found ''"},
      {"ConfigWithANulByte", R"(config 'a.json\x00b')",
       R"(config FILE: FILE must be a name without NUL bytes, found 'a.json\x00b')"},
      {"ConfigWithTwoFiles", "config a.json b.json",
       "config FILE: the line must end here, found 'b.json'"},

      {"ChipAlone", "chip",
       "chip capacity|rules|fail: chip must be followed by capacity, rules or fail, found the end "
       "of "
       "the line"},
      {"ChipWithAnUnknownVerb", "chip break",
       "chip capacity|rules|fail: chip must be followed by capacity, rules or fail, found 'break'"},
      {"ChipCapacityWithoutANumber", "chip capacity",
       "chip capacity N: N must be a number from 0 to 4294967295, found the end of the line"},
      {"ChipCapacityIsNoNumber", "chip capacity many",
       "chip capacity N: N must be a number from 0 to 4294967295, found 'many'"},
      {"ChipCapacityIsFollowedByMore", "chip capacity 1 2",
       "chip capacity N: the line must end here, found '2'"},
      {"ChipFailAlone", "chip fail",
       "chip fail VRF|any COUNT: VRF must be a VRF name of 1 to 100 bytes, or any, found the end "
       "of the line"},
      {"ChipFailWithoutACount", "chip fail any",
       "chip fail VRF|any COUNT: COUNT must be a number from 0 to 4294967295, found the end of the "
       "line"},
      {"ChipFailCountIsNoNumber", "chip fail red once",
       "chip fail VRF|any COUNT: COUNT must be a number from 0 to 4294967295, found 'once'"},
      {"ChipFailIsFollowedByMore", "chip fail red 1 2",
       "chip fail VRF|any COUNT: the line must end here, found '2'"},

      {"RouteAlone", "route",
       "route VRF PREFIX decap|via|remove: VRF must be a VRF name of 1 to 100 bytes, found the end "
       "of the line"},
      {"RouteWithoutAPrefix", "route red",
       "route VRF PREFIX decap|via|remove: PREFIX must be an IPv4 or IPv6 prefix such as "
       "192.0.2.0/24, found the end of the line"},
      {"RouteToAnAddress", "route red 192.0.2.1 decap",
       "route VRF PREFIX decap|via|remove: PREFIX must be an IPv4 or IPv6 prefix such as "
       "192.0.2.0/24, found '192.0.2.1'"},
      {"RouteWithALongPrefix", "route red 192.0.2.0/33 decap",
       "route VRF PREFIX decap|via|remove: PREFIX must be an IPv4 or IPv6 prefix such as "
       "192.0.2.0/24, found '192.0.2.0/33'"},
      {"RouteWithoutAVerb", "route red 192.0.2.0/24",
       "route VRF PREFIX decap|via|remove: PREFIX must be followed by decap, via or remove, found "
       "the end of the line"},
      {"RouteWithAnUnknownVerb", "route red 192.0.2.0/24 drop",
       "route VRF PREFIX decap|via|remove: PREFIX must be followed by decap, via or remove, found "
       "'drop'"},
      {"RouteViaNothing", "route red 192.0.2.0/24 via",
       "route VRF PREFIX via INTERFACE: INTERFACE must be an interface name of 1 to 100 bytes, "
       "found the end of the line"},
      {"RouteViaAnEmptyName", "route red 192.0.2.0/24 via ''",
       "route VRF PREFIX via INTERFACE: INTERFACE must be an interface name of 1 to 100 bytes, "
       "found ''"},
      {"RouteViaANameThatIsTooLong", "route red 192.0.2.0/24 via " + std::string(101, 'e'),
       "route VRF PREFIX via INTERFACE: INTERFACE must be an interface name of 1 to 100 bytes, "
       "found '" +
           std::string(100, 'e') + "'..."},
      {"RouteViaTwo", "route red 192.0.2.0/24 via e1 e2",
       "route VRF PREFIX via INTERFACE: the line must end here, found 'e2'"},
      {"RouteDecapIsFollowedByMore", "route red 192.0.2.0/24 decap e1",
       "route VRF PREFIX decap: the line must end here, found 'e1'"},
      {"RouteRemoveIsFollowedByMore", "route red 192.0.2.0/24 remove now",
       "route VRF PREFIX remove: the line must end here, found 'now'"},

      {"RetryIsFollowedByMore", "retry red", "retry: the line must end here, found 'red'"},
      {"ShowIsFollowedByMore", "show all", "show: the line must end here, found 'all'"},
  };
}

}  // namespace ZelAgent
