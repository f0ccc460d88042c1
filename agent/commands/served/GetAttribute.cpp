#include "agent/commands/served/ServedCommands.h"

#include <algorithm>
#include <nlohmann/json.hpp>
#include <optional>
#include <sstream>
#include <string>
#include <vector>

#include "Mox/AttributeText.h"
#include "Mox/QuotedString.h"
#include "agent/commands/served/LiveObjects.h"
#include "agent/language/Errors.h"
#include "agent/language/Words.h"

namespace ZelAgent {
namespace {

constexpr const char* form = "get TYPE ATTRIBUTE [KEY]";

struct Query {
  const Mox::Type* type = nullptr;
  std::string attribute;
  std::optional<std::string> key;
};

[[noreturn]] void fail(const std::string& what) {
  throw EventError(std::string(form) + ": " + what);
}

// Whether `name` is "...::end" or all of it.
bool endsWithName(std::string_view name, std::string_view end) {
  if (!name.ends_with(end)) return false;
  return name.size() == end.size() || name.substr(0, name.size() - end.size()).ends_with("::");
}

// A type without attributes is found by its whole name only.
bool isNamed(const Mox::Type& type, std::string_view name) {
  if (type.name == name) return true;
  const bool hasAttributes = type.reflection != nullptr && !type.reflection->attributes.empty();
  return hasAttributes && endsWithName(type.name, name);
}

const Mox::Type& needType(EventLine& arguments) {
  const std::optional<Word> word = arguments.next();
  for (const std::string_view module : Mox::moxModules()) {
    for (const Mox::Type* const type : Mox::moxModuleTypes(module)) {
      if (word && isNamed(*type, word->text)) return *type;
    }
  }
  arguments.fail("TYPE must be a registered type with attributes, which `show types` lists", word);
}

std::string attributesOf(const Mox::Type& type) {
  if (type.reflection == nullptr) return {};
  std::vector<std::string> names;
  for (const Mox::Attribute& attribute : type.reflection->attributes)
    names.emplace_back(attribute.name);
  return joined(names, ", ");
}

// The rest of the line after the first `words` words.
std::string restOf(std::string_view line, std::size_t words) {
  constexpr std::string_view blanks = " \t";
  for (; words > 0; --words) {
    line.remove_prefix(std::min(line.find_first_not_of(blanks), line.size()));
    line.remove_prefix(std::min(line.find_first_of(blanks), line.size()));
  }
  line.remove_prefix(std::min(line.find_first_not_of(blanks), line.size()));
  return std::string(line);
}

// One word; or else the rest of the line, which may be a string form with blanks and quotes.
std::optional<std::string> readKey(const CommandCall& call) {
  try {
    const std::optional<Word> word = call.arguments.next();
    if (!word) return std::nullopt;
    if (!call.arguments.next()) return word->text;
  } catch (const EventError&) {  // NOLINT(bugprone-empty-catch): not a word
  }
  return restOf(call.line, 3);
}

Query readQuery(const CommandCall& call) {
  call.arguments.formIs(form);
  Query query;
  query.type = &needType(call.arguments);
  const std::optional<Word> attribute = call.arguments.next();
  if (!attribute) {
    call.arguments.fail("ATTRIBUTE must be one of: " + attributesOf(*query.type), attribute);
  }
  query.attribute = attribute->text;
  query.key = readKey(call);
  return query;
}

std::string read(const Mox::Object& object, const Query& query,
                 const std::optional<std::string>& key) {
  const Mox::TextAnswer answer = Mox::attributeText(object, query.attribute, key);
  switch (answer.code) {
    case Mox::ReturnCode::success:
      return answer.text;
    case Mox::ReturnCode::notSupported:
      fail(query.attribute + " can be called, but not read");
    case Mox::ReturnCode::unknownAttribute:
      break;
  }
  fail("ATTRIBUTE must be one of: " + attributesOf(*query.type) + ", found " +
       Mox::quoted(query.attribute));
}

// The key is a string form, or else a name without quotes.
std::string readEntry(const Mox::Object& object, const Query& query) {
  try {
    return read(object, query, query.key);
  } catch (const Mox::RangeException&) {
    return read(object, query, Mox::quoted(*query.key));
  }
}

struct Result {
  std::string label;
  std::string text;
};

bool isLabel(const std::string& label, const std::string& key) {
  return label == key || label == Mox::quoted(key);
}

// Of several objects the key selects one. Of a single object it selects an entry.
std::vector<Result> resultsOf(const Query& query, const Mox::PtrInterface& top) {
  const std::vector<LiveObject> objects = liveObjects(top, *query.type);
  if (objects.size() == 1 && objects.front().label.empty()) {
    const Mox::Object object = objects.front().object();
    return {{"", query.key ? readEntry(object, query) : read(object, query, {})}};
  }
  std::vector<Result> results;
  for (const LiveObject& object : objects) {
    if (query.key && !isLabel(object.label, *query.key)) continue;
    results.push_back({object.label, read(object.object(), query, {})});
  }
  if (query.key && results.empty()) {
    fail("KEY must be the key of an object, found " + Mox::quoted(*query.key));
  }
  return results;
}

std::vector<Result> resultsOf(const CommandCall& call) {
  const Query query = readQuery(call);
  try {
    return resultsOf(query, call.served.agent().policySm());
  } catch (const Mox::RangeException& error) {
    fail(std::string("KEY: ") + error.what());
  } catch (const Mox::ArgumentException& error) {
    fail(std::string("KEY: ") + error.what());
  }
}

// Prints each line of the text after the label.
void writeResult(std::ostream& out, const Result& result) {
  const std::string label = result.label.empty() ? "" : result.label + ": ";
  std::istringstream lines(result.text);
  for (std::string line; std::getline(lines, line);)
    out << label << line << '\n';
}

}  // namespace

CommandOutput getAttribute(const CommandCall& call) {
  const std::vector<Result> results = resultsOf(call);
  return outputOf(
      call,
      [&](std::ostream& out) {
        for (const Result& result : results)
          writeResult(out, result);
      },
      [&] {
        OrderedJson json = OrderedJson::array();
        for (const Result& result : results)
          json.push_back({{"object", result.label}, {"value", result.text}});
        return json;
      });
}

}  // namespace ZelAgent
