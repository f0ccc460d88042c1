#include "agent/config/RuleMatchText.h"

#include <algorithm>
#include <vector>

#include "agent/language/TcpFlags.h"
#include "agent/language/Words.h"

namespace ZelAgent {
namespace {

std::string elementText(std::uint8_t number) {
  return std::to_string(number);
}

template <class Element>
std::string elementText(const Element& element) {
  return toText(element);
}

class MatchText final {
 public:
  explicit MatchText(std::string text) : text_(std::move(text)) {}

  template <class Value>
  void field(const char* name, const std::optional<Value>& value) {
    if (value) add(name, textOf(*value));
  }
  void set(const char* name, const std::string& set) {
    if (!set.empty()) add(name, toWord(set));
  }
  template <class Element>
  void list(const char* name, std::vector<Element> elements) {
    if (elements.empty()) return;
    std::sort(elements.begin(), elements.end());
    std::vector<std::string> texts;
    texts.reserve(elements.size());
    for (const Element& element : elements)
      texts.push_back(elementText(element));
    add(name, joined(texts, ","));
  }
  void flag(const char* name, bool isSet) {
    if (isSet) text_ += std::string(" ") + name;
  }

  [[nodiscard]] const std::string& text() const noexcept { return text_; }

 private:
  static std::string textOf(const IpPrefix& prefix) { return toText(prefix); }
  static std::string textOf(unsigned number) { return std::to_string(number); }

  void add(const char* name, const std::string& value) {
    text_ += std::string(" ") + name + ' ' + value;
  }

  std::string text_;
};

}  // namespace

std::string toText(const PolicyMap::NumberRange& range) {
  const std::string first = std::to_string(range.first);
  return range.first == range.last ? first : first + ".." + std::to_string(range.last);
}

std::string toText(const PolicyMap::TcpFlagsMatch& flags) {
  if (flags.mask == 0) return "any";
  std::string text;
  for (unsigned bit = 1; bit <= 128; bit <<= 1) {
    if ((flags.mask & bit) == 0) continue;
    if (!text.empty()) text += '+';
    if ((flags.value & bit) == 0) text += '!';
    text += tcpFlagsText(static_cast<std::uint8_t>(bit), "");
  }
  return text;
}

std::string toText(const RuleMatch& match) {
  MatchText text(match.family ? toText(*match.family) : "any");
  text.field("protocol", match.protocol);
  text.field("dscp", match.dscp);
  text.list("dscp-set", match.dscpSet);
  text.field("source", match.source);
  text.set("source-set", match.sourceSet);
  text.field("destination", match.destination);
  text.set("destination-set", match.destinationSet);
  text.field("hop-limit", match.hopLimit);
  text.field("length", match.length);
  text.list("fragment-offset", match.fragmentOffsets);
  text.list("source-port", match.sourcePorts);
  text.list("destination-port", match.destinationPorts);
  text.list("tcp-flags", match.tcpFlags);
  text.flag("fragment", match.isFragment);
  return text.text();
}

}  // namespace ZelAgent
