#include "tests/agent/AgentProcess.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <spawn.h>
#include <sys/wait.h>

#include <cstdlib>
#include <optional>
#include <sstream>

#include "tests/waiting/ChildProcess.h"

extern char** environ;

namespace ZelAgent {
namespace {

class FileActions final {
 public:
  FileActions() { posix_spawn_file_actions_init(&actions_); }
  FileActions(const FileActions&) = delete;
  FileActions& operator=(const FileActions&) = delete;
  ~FileActions() { posix_spawn_file_actions_destroy(&actions_); }

  void open(int descriptor, const std::string& path, int flags) {
    posix_spawn_file_actions_addopen(&actions_, descriptor, path.c_str(), flags, 0600);
  }
  [[nodiscard]] const posix_spawn_file_actions_t* get() const { return &actions_; }

 private:
  posix_spawn_file_actions_t actions_;
};

// `err` is the file of standard error.
int exitStatusOf(std::vector<std::string>& arguments, const FileActions& actions,
                 const std::string& err) {
  std::vector<char*> pointers;
  for (std::string& argument : arguments)
    pointers.push_back(argument.data());
  pointers.push_back(nullptr);
  pid_t process = 0;
  const int error =
      posix_spawn(&process, pointers[0], actions.get(), nullptr, pointers.data(), environ);
  EXPECT_EQ(error, 0) << "cannot start " << pointers[0];
  if (error != 0) return -1;
  const Waiting::Deadline deadline;
  const std::optional<int> status = Waiting::ChildProcess(process).end(deadline);
  EXPECT_TRUE(status) << deadline.expiry("the agent to end", readFile(err));
  if (!status) return -1;
  EXPECT_TRUE(WIFEXITED(*status)) << "ended by signal " << WTERMSIG(*status);
  return WIFEXITED(*status) ? WEXITSTATUS(*status) : -1;
}

AgentOutcome run(std::vector<std::string> arguments, const std::string& input,
                 const std::string& out) {
  unsetenv("MOX_TRACE");
  arguments.insert(arguments.begin(), agentBinary());
  const std::string err = pathInTestFolder("stderr");
  FileActions actions;
  actions.open(0, input, O_RDONLY);
  actions.open(1, out, O_WRONLY | O_CREAT | O_TRUNC);
  actions.open(2, err, O_WRONLY | O_CREAT | O_TRUNC);
  AgentOutcome outcome;
  outcome.status = exitStatusOf(arguments, actions, err);
  outcome.err = readFile(err);
  return outcome;
}

}  // namespace

std::string agentBinary() {
  const char* const wanted = std::getenv("ZEL_AGENT");
  return wanted != nullptr ? wanted : ZEL_AGENT_BINARY;
}

std::vector<nlohmann::json> AgentOutcome::documents() const {
  std::vector<nlohmann::json> documents;
  std::istringstream lines(out);
  for (std::string line; std::getline(lines, line);) {
    documents.push_back(nlohmann::json::parse(line));
  }
  return documents;
}

AgentOutcome runAgentInto(const std::string& file, std::vector<std::string> arguments) {
  return run(std::move(arguments), "/dev/null", file);
}

AgentOutcome runAgent(std::vector<std::string> arguments) {
  return runAgentReading("/dev/null", std::move(arguments));
}

AgentOutcome runAgentReading(const std::string& input, std::vector<std::string> arguments) {
  const std::string out = pathInTestFolder("stdout");
  AgentOutcome outcome = run(std::move(arguments), input, out);
  outcome.out = readFile(out);
  return outcome;
}

std::string examplePath(const std::string& name) {
  return std::string(ZEL_EXAMPLES_DIR) + '/' + name;
}

}  // namespace ZelAgent
