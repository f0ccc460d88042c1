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
#include "agent/commands/served/ObjectNames.h"
#include "agent/commands/served/TypedKey.h"
#include "agent/language/Errors.h"
#include "agent/language/Words.h"

namespace ZelAgent {
namespace {

constexpr const char* form = "get TYPE ATTRIBUTE [KEY]";

struct Query {
  const Mox::Type* type = nullptr;
  std::string attribute;
  std::optional<TypedKey> key;
};

[[noreturn]] void fail(const std::string& what) {
  throw EventError(std::string(form) + ": " + what);
}

const Mox::Type& needType(EventLine& arguments) {
  const std::optional<Word> word = arguments.next();
  const Mox::Type* const type = word ? typeNamed(word->text) : nullptr;
  if (type == nullptr) {
    arguments.fail("TYPE must be a registered type with attributes, which `show types` lists",
                   word);
  }
  return *type;
}

std::string attributeList(const Mox::Type& type) {
  return joined(attributesOf(type), ", ");
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
    call.arguments.fail("ATTRIBUTE must be one of: " + attributeList(*query.type), attribute);
  }
  query.attribute = attribute->text;
  if (auto key = readKey(call)) query.key.emplace(std::move(*key));
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
  fail("ATTRIBUTE must be one of: " + attributeList(*query.type) + ", found " +
       Mox::quoted(query.attribute));
}

struct Result {
  std::string label;
  std::string text;
};

// What the key must be: the keys as a person types them, some of them if they are many.
[[noreturn]] void failKey(const TypedKey& typed, const std::vector<Mox::AnyValue>& keys) {
  constexpr std::size_t shown = 10;
  std::vector<std::string> texts;
  texts.reserve(keys.size());
  for (const Mox::AnyValue& key : keys)
    texts.push_back(joined(wordsOfKey(key), " "));
  std::sort(texts.begin(), texts.end());
  const std::size_t others = texts.size() > shown ? texts.size() - shown : 0;
  texts.resize(texts.size() - others);
  if (texts.empty()) texts.emplace_back("left out, as there is none");
  const bool haveVrfs = !keys.empty() && vrfOfKey(keys.front());
  fail(std::string("KEY must be ") + (haveVrfs ? "the VRF of an action, or one of: " : "one of: ") +
       joined(texts, ", ") + (others > 0 ? " and " + std::to_string(others) + " more" : "") +
       "; found " + Mox::quoted(typed.text()));
}

// The key is a string form, or else a name without quotes.
std::string readAbsent(const Mox::Object& object, const Query& query) {
  try {
    return read(object, query, query.key->text());
  } catch (const Mox::RangeException&) {
    return read(object, query, Mox::quoted(query.key->text()));
  }
}

// The entries of a collection that the key selects. A whole key selects one, without a label.
std::vector<Result> entriesOf(const Mox::Object& object, const Query& query) {
  const Mox::Attribute* const attribute = attributeNamed(object.type(), query.attribute);
  if (attribute == nullptr || attribute->access.iterate == nullptr) {
    return {{"", readAbsent(object, query)}};
  }
  std::vector<Result> results;
  std::vector<Mox::AnyValue> keys;
  for (const auto entry = Mox::iterate(object, attribute->number); *entry; entry->next()) {
    const Mox::AnyValue key = entry->key();
    const KeyFit fit = query.key->fit(key);
    if (fit == KeyFit::whole) return {{"", read(object, query, key.text().str())}};
    if (fit == KeyFit::vrf) {
      results.push_back({key.text().str(), read(object, query, key.text().str())});
    }
    keys.push_back(key);
  }
  if (!results.empty()) return results;
  try {
    return {{"", readAbsent(object, query)}};
  } catch (const Mox::RangeException&) {
    failKey(*query.key, keys);
  }
}

// Of several objects the key selects some. Of a single object it selects entries.
std::vector<Result> resultsOf(const Query& query, const Mox::PtrInterface& top) {
  const std::vector<LiveObject> objects = liveObjects(top, *query.type);
  if (objects.size() == 1 && objects.front().label.empty()) {
    const Mox::Object object = objects.front().object();
    if (query.key) return entriesOf(object, query);
    return {{"", read(object, query, {})}};
  }
  std::vector<Result> results;
  std::vector<Mox::AnyValue> keys;
  for (const LiveObject& object : objects) {
    if (query.key && query.key->fit(object.key) == KeyFit::none) {
      keys.push_back(object.key);
      continue;
    }
    results.push_back({object.label, read(object.object(), query, {})});
  }
  if (query.key && results.empty()) failKey(*query.key, keys);
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
