#include "agent/commands/offline/YangModels.h"

#include <algorithm>
#include <nlohmann/json.hpp>
#include <set>
#include <sstream>
#include <string_view>
#include <system_error>

#include "agent/config/Findings.h"
#include "agent/language/ChildProcess.h"
#include "agent/language/Errors.h"
#include "agent/language/Limits.h"
#include "agent/language/PrintableText.h"

namespace ZelAgent {
namespace {

constexpr const char* program = "yanglint";
constexpr const char* mainModule = "openconfig-network-instance";
constexpr const char* interfaceTypes = "iana-if-type";
constexpr std::size_t keptOutputBytes = Limits::shownErrors * Limits::shownTextBytes;
constexpr std::string_view libraryError = "libyang err : ";
constexpr std::string_view programError = "YANGLINT[E]: ";

[[noreturn]] void fail(const std::string& place, const std::string& what) {
  throw ConfigError(printable(place, Limits::shownTextBytes) + ": " + what);
}

// "name@2023-01-01.yang" is a revision of the module "name".
std::string moduleOf(const std::filesystem::path& file) {
  const std::string stem = file.stem();
  return stem.substr(0, stem.find('@'));
}

bool hasState(const nlohmann::json& value) {
  if (!value.is_structured()) return false;
  if (value.is_object() && value.contains("state")) return true;
  return std::any_of(value.begin(), value.end(), hasState);
}

// Adds the modules whose names are before the names of members.
void addModulesOf(const nlohmann::json& value, std::set<std::string>& modules) {
  if (value.is_array()) {
    for (const nlohmann::json& element : value)
      addModulesOf(element, modules);
  }
  if (!value.is_object()) return;
  for (const auto& [member, content] : value.items()) {
    modules.insert(member.substr(0, member.find(':')));
    addModulesOf(content, modules);
  }
}

std::string withoutPrefix(const std::string& line, std::string_view prefix) {
  return line.compare(0, prefix.size(), prefix) == 0 ? line.substr(prefix.size()) : line;
}

// What the program says, each as one printable line. Its summary of errors is left out.
std::vector<std::string> messagesIn(const std::string& output) {
  std::vector<std::string> messages;
  std::vector<std::string> summaries;
  std::istringstream stream(output);
  for (std::string line; std::getline(stream, line);) {
    if (line.empty()) continue;
    const bool isSummary = line.compare(0, programError.size(), programError) == 0;
    (isSummary ? summaries : messages)
        .push_back(printable(withoutPrefix(withoutPrefix(line, libraryError), programError),
                             Limits::shownTextBytes));
  }
  return messages.empty() ? summaries : messages;
}

}  // namespace

YangModels::YangModels(const std::string& folder) : folder_(folder) {
  std::error_code error;
  std::filesystem::recursive_directory_iterator files(folder, error);
  while (!error && files != std::filesystem::recursive_directory_iterator()) {
    const std::filesystem::path& file = files->path();
    if (file.extension() == ".yang") {
      auto& newest = modules_[moduleOf(file)];
      newest = std::max(newest, file);
    }
    files.increment(error);
  }
  if (error) fail(folder, "cannot be read: " + error.message() + "; give a folder of YANG modules");
  if (!modules_.contains(mainModule)) {
    fail(folder, "must have the module " + std::string(mainModule) +
                     ".yang, in the folder or below it; the models are published as the "
                     "repository openconfig/public");
  }
}

std::vector<std::string> YangModels::argumentsFor(const std::string& file,
                                                  const nlohmann::json& document) const {
  std::set<std::string> names{mainModule, interfaceTypes};
  addModulesOf(document, names);
  std::vector<std::string> arguments{"-Q", "-i", "-i", "-D", "-p", folder_, "-t"};
  arguments.emplace_back(hasState(document) ? "data" : "config");
  for (const std::string& name : names) {
    const auto module = modules_.find(name);
    if (module != modules_.end()) arguments.push_back(std::filesystem::absolute(module->second));
  }
  arguments.push_back(std::filesystem::absolute(file));
  return arguments;
}

std::vector<std::string> YangModels::findingsIn(const std::string& file,
                                                const nlohmann::json& document) const {
  const auto outcome = runProgram(program, argumentsFor(file, document), keptOutputBytes);
  if (!outcome) {
    fail("--yang",
         std::string(program) + " is required to validate configurations; install libyang2-tools");
  }
  if (outcome->status == 0) return {};
  const std::vector<std::string> messages = messagesIn(outcome->output);
  if (messages.empty()) {
    fail("--yang", std::string(program) + " ended with status " + std::to_string(outcome->status) +
                       " and without a message");
  }
  if (outcome->output.find(std::string(programError) + "Parsing schema module") !=
      std::string::npos) {
    fail(folder_, std::string(program) + " cannot load the models: " + messages.front());
  }
  FindingLines findings(Limits::shownErrors);
  for (std::size_t number = 0; number < messages.size(); ++number) {
    findings.add(number, printable(file, Limits::shownTextBytes) + ": " + messages[number]);
  }
  return findings.lines(printable(file, Limits::shownTextBytes), "yanglint message");
}

}  // namespace ZelAgent
