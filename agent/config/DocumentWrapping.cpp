#include "agent/config/DocumentWrapping.h"

#include <algorithm>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "agent/config/JsonNode.h"
#include "agent/language/Limits.h"
#include "agent/language/PrintableText.h"

namespace ZelAgent {
namespace {

using Object = JsonValue::Object;

constexpr const char* instancesMember = "network-instances";
constexpr const char* instanceList = "network-instance";

JsonMember* findMember(JsonValue& value, std::string_view name) {
  auto* const members = value.as<Object>();
  if (members == nullptr) return nullptr;
  const auto found = std::find_if(members->begin(), members->end(), [name](const auto& member) {
    return withoutModulePrefix(member.name) == name;
  });
  return found == members->end() ? nullptr : &*found;
}

JsonValue inObject(const std::string& name, JsonValue value) {
  const std::size_t order = value.order();
  Object members;
  members.push_back({name, std::move(value)});
  return {std::move(members), order};
}

// A step of a path: a member, and the keys of an entry if the member is a list.
struct Step {
  std::string name;
  std::vector<std::pair<std::string, std::string>> keys;
  std::string_view pathUpToIt;  // with the step
};

// Takes the text in front of the first `end`, and `end`, from `rest`. A backslash stands in front
// of a byte that is a part of the text. Nothing if there is no `end`.
std::optional<std::string> takeUntil(char end, std::string_view& rest) {
  std::string text;
  for (std::size_t at = 0; at < rest.size(); ++at) {
    if (rest[at] == end) {
      rest.remove_prefix(at + 1);
      return text;
    }
    if (rest[at] == '\\') ++at;
    if (at < rest.size()) text += rest[at];
  }
  return std::nullopt;
}

// "[a=x][b=y]"; nothing for another text.
bool readKeys(std::string_view text, Step& step) {
  while (!text.empty()) {
    if (!text.starts_with('[')) return false;
    text.remove_prefix(1);
    auto name = takeUntil('=', text);
    auto value = takeUntil(']', text);
    if (!name || !value) return false;
    step.keys.emplace_back(*std::move(name), *std::move(value));
  }
  return true;
}

// The end of the first step: a slash that is not inside a key.
std::size_t endOfStep(std::string_view path) {
  bool isInKey = false;
  for (std::size_t at = 0; at < path.size(); ++at) {
    if (path[at] == '\\') {
      ++at;
      continue;
    }
    if (path[at] == '[') isInKey = true;
    if (path[at] == ']') isInKey = false;
    if (path[at] == '/' && !isInKey) return at;
  }
  return path.size();
}

// The steps of "/a/b[key=x]/c". Nothing for another text.
std::optional<std::vector<Step>> readSteps(std::string_view path) {
  std::vector<Step> steps;
  std::string_view rest = path;
  while (!rest.empty()) {
    if (rest.front() == '/') rest.remove_prefix(1);
    const std::size_t end = endOfStep(rest);
    const std::string_view text = rest.substr(0, end);
    rest.remove_prefix(end);
    const std::size_t bracket = std::min(text.find('['), text.size());
    Step step{std::string(withoutModulePrefix(text.substr(0, bracket))),
              {},
              path.substr(0, path.size() - rest.size())};
    if (!readKeys(text.substr(bracket), step)) return std::nullopt;
    if (!step.name.empty()) steps.push_back(std::move(step));
  }
  return steps;
}

// The step at which the rule is that the path leads into. Null if it leads into none.
const Step* ruleLedInto(const std::vector<Step>& steps) {
  const PathNode* node = &pathTree();
  const Step* previous = nullptr;
  for (const Step& step : steps) {
    if (node->unknown == UnknownMembers::spoilTheRule) return previous;
    const auto member = node->members.find(step.name);
    if (member == node->members.end()) return nullptr;
    node = &member->second;
    previous = &step;
  }
  return nullptr;
}

// A key of a path as the value that a list entry has. Every key but `sequence-id` is a text.
JsonValue keyValue(const std::string& key, const std::string& text, std::size_t order) {
  const bool isNumber = key == "sequence-id" && !text.empty() && text.size() < 19 &&
                        text.find_first_not_of("0123456789") == std::string::npos;
  if (isNumber) return {std::uint64_t{std::stoull(text)}, order};
  return {text, order};
}

// Whether the value is the key of the path, whatever its module prefix.
bool isKey(const JsonValue& value, const std::string& text) {
  if (const auto* const number = value.as<std::uint64_t>()) return std::to_string(*number) == text;
  const auto* const given = value.as<std::string>();
  return given == nullptr || withoutModulePrefix(*given) == withoutModulePrefix(text);
}

// The value in the place of the step in its parent.
JsonValue placed(const Step& step, JsonValue value, Findings& findings) {
  if (step.keys.empty()) return inObject(step.name, std::move(value));
  const std::size_t order = value.order();
  for (const auto& [key, text] : step.keys) {
    auto* const members = value.as<Object>();
    if (members == nullptr) continue;
    const JsonMember* const given = findMember(value, key);
    if (given == nullptr) {
      members->push_back({key, keyValue(key, text, order)});
    } else if (!isKey(given->value, text)) {
      findings.error(given->value.order(), "/val/" + printable(given->name),
                     "must repeat the key " + inQuotes(text) + " of the path, not differ from it");
    }
  }
  JsonValue::Array entries;
  entries.push_back(std::move(value));
  return inObject(step.name, {std::move(entries), order});
}

JsonValue placedAt(const JsonValue& path, JsonValue value, Findings& findings) {
  const auto* const text = path.as<std::string>();
  const auto steps = text == nullptr ? std::nullopt : readSteps(*text);
  if (!steps) {
    findings.error(path.order(), "/path",
                   "must be a path such as \"/network-instances\" or "
                   "\"/network-instances/network-instance[name=red]\"");
    return value;
  }
  if (steps->size() > Limits::documentLevels) {
    findings.error(path.order(), "/path",
                   "must have at most " + std::to_string(Limits::documentLevels) + " steps, not " +
                       std::to_string(steps->size()));
    return value;
  }
  if (const Step* const rule = ruleLedInto(*steps)) {
    findings.error(path.order(), "/path",
                   "must end at the rule \"" + printable(rule->pathUpToIt, Limits::shownTextBytes) +
                       "\" or above it; a rule is read as a whole");
    return value;
  }
  for (auto step = steps->rbegin(); step != steps->rend(); ++step)
    value = placed(*step, std::move(value), findings);
  return value;
}

void refuseOtherMembers(const JsonValue& wrapper, const JsonMember& path, const JsonMember& value,
                        Findings& findings) {
  for (const JsonMember& member : *wrapper.as<Object>()) {
    if (&member == &path || &member == &value) continue;
    findings.error(member.value.order(), '/' + printable(member.name),
                   R"(must not stand beside "path" and "val", which are a whole document)");
  }
}

bool isWhole(JsonValue& value) {
  return findMember(value, instancesMember) != nullptr;
}

}  // namespace

JsonValue unwrapped(JsonValue document, Findings& findings) {
  JsonMember* const path = findMember(document, "path");
  JsonMember* const value = findMember(document, "val");
  if (path != nullptr && value != nullptr) {
    refuseOtherMembers(document, *path, *value, findings);
    JsonValue content = std::move(value->value);
    if (isWhole(content)) return content;
    if (findMember(content, instanceList) == nullptr) {
      return placedAt(path->value, std::move(content), findings);
    }
    document = std::move(content);
  }
  const bool hasInstancesAtTheTop =
      !isWhole(document) && findMember(document, instanceList) != nullptr;
  return hasInstancesAtTheTop ? inObject(instancesMember, std::move(document))
                              : std::move(document);
}

}  // namespace ZelAgent
