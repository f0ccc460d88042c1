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

struct Question {
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

// Of types that end alike, those that have attributes are meant.
bool isMeant(const Mox::Type& type, std::string_view name) {
  if (type.name == name) return true;
  const bool hasAttributes = type.reflection != nullptr && !type.reflection->attributes.empty();
  return hasAttributes && endsWithName(type.name, name);
}

const Mox::Type& needType(EventLine& arguments) {
  const std::optional<Word> word = arguments.next();
  for (const std::string_view module : Mox::moxModules()) {
    for (const Mox::Type* const type : Mox::moxModuleTypes(module)) {
      if (word && isMeant(*type, word->text)) return *type;
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

// Behind that many words.
std::string restOf(std::string_view line, std::size_t words) {
  constexpr std::string_view blanks = " \t";
  for (; words > 0; --words) {
    line.remove_prefix(std::min(line.find_first_not_of(blanks), line.size()));
    line.remove_prefix(std::min(line.find_first_of(blanks), line.size()));
  }
  line.remove_prefix(std::min(line.find_first_not_of(blanks), line.size()));
  return std::string(line);
}

// One word, or a string form with blanks and quotes in it as it stands.
std::optional<std::string> readKey(const CommandCall& call) {
  try {
    const std::optional<Word> word = call.arguments.next();
    if (!word) return std::nullopt;
    if (!call.arguments.next()) return word->text;
  } catch (const EventError&) {  // NOLINT(bugprone-empty-catch): it is no word
  }
  return restOf(call.line, 3);
}

Question readQuestion(const CommandCall& call) {
  call.arguments.formIs(form);
  Question question;
  question.type = &needType(call.arguments);
  const std::optional<Word> attribute = call.arguments.next();
  if (!attribute) {
    call.arguments.fail("ATTRIBUTE must be one of: " + attributesOf(*question.type), attribute);
  }
  question.attribute = attribute->text;
  question.key = readKey(call);
  return question;
}

std::string read(const Mox::Object& object, const Question& question,
                 const std::optional<std::string>& key) {
  const Mox::TextAnswer answer = Mox::attributeText(object, question.attribute, key);
  switch (answer.code) {
    case Mox::ReturnCode::success:
      return answer.text;
    case Mox::ReturnCode::notSupported:
      fail(question.attribute + " can be called, but not read");
    case Mox::ReturnCode::unknownAttribute:
      break;
  }
  fail("ATTRIBUTE must be one of: " + attributesOf(*question.type) + ", found " +
       Mox::quoted(question.attribute));
}

// The key may be a bare name, too.
std::string readEntry(const Mox::Object& object, const Question& question) {
  try {
    return read(object, question, question.key);
  } catch (const Mox::RangeException&) {
    return read(object, question, Mox::quoted(*question.key));
  }
}

struct Found {
  std::string label;
  std::string text;
};

bool isLabel(const std::string& label, const std::string& key) {
  return label == key || label == Mox::quoted(key);
}

// With several objects the key picks one of them; with one it is passed on.
std::vector<Found> answersTo(const Question& question, const Mox::PtrInterface& top) {
  const std::vector<LiveObject> objects = liveObjects(top, *question.type);
  if (objects.size() == 1 && objects.front().label.empty()) {
    const Mox::Object object = objects.front().object();
    return {{"", question.key ? readEntry(object, question) : read(object, question, {})}};
  }
  std::vector<Found> answers;
  for (const LiveObject& object : objects) {
    if (question.key && !isLabel(object.label, *question.key)) continue;
    answers.push_back({object.label, read(object.object(), question, {})});
  }
  if (question.key && answers.empty()) {
    fail("KEY must be the key of an object, found " + Mox::quoted(*question.key));
  }
  return answers;
}

std::vector<Found> answersTo(const CommandCall& call) {
  const Question question = readQuestion(call);
  try {
    return answersTo(question, call.served.agent().policySm());
  } catch (const Mox::RangeException& error) {
    fail(std::string("KEY: ") + error.what());
  } catch (const Mox::ArgumentException& error) {
    fail(std::string("KEY: ") + error.what());
  }
}

// Each line of the text behind the label.
void writeAnswer(std::ostream& out, const Found& found) {
  const std::string label = found.label.empty() ? "" : found.label + ": ";
  std::istringstream lines(found.text);
  for (std::string line; std::getline(lines, line);)
    out << label << line << '\n';
}

}  // namespace

CommandOutput getAttribute(const CommandCall& call) {
  const std::vector<Found> answers = answersTo(call);
  return outputOf(
      call,
      [&](std::ostream& out) {
        for (const Found& found : answers)
          writeAnswer(out, found);
      },
      [&] {
        OrderedJson json = OrderedJson::array();
        for (const Found& found : answers)
          json.push_back({{"object", found.label}, {"value", found.text}});
        return json;
      });
}

}  // namespace ZelAgent
