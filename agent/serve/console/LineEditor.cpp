#include "agent/serve/console/LineEditor.h"

#include <editline/readline.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <clocale>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <memory>
#include <utility>

#include "agent/language/Limits.h"
#include "agent/language/TextFile.h"
#include "agent/language/Words.h"
#include "agent/serve/console/Terminal.h"

namespace ZelAgent {
namespace {

// The callback of libedit has no argument that names its editor.
Completer& activeCompleter() {
  static Completer completer;
  return completer;
}

Explainer& activeExplainer() {
  static Explainer explainer;
  return explainer;
}

std::string lineBeforeCursor() {
  return {rl_line_buffer, static_cast<std::size_t>(rl_point)};
}

// Types the key as if it followed Ctrl-V. The key that is pushed last is read first.
int typeLiterally(int key) {
  constexpr int quoteKey = 0x16;
  rl_insert(1, key);
  return rl_insert(1, quoteKey);
}

int explain(int /*count*/, int key) {
  const auto text = activeExplainer() ? activeExplainer()(lineBeforeCursor()) : std::nullopt;
  if (!text) return typeLiterally(key);
  std::fputs(("?\n" + *text).c_str(), stdout);
  std::fflush(stdout);
  rl_forced_update_display();
  return 0;
}

bool& lineIsGivenUp() {
  static bool givenUp = false;
  return givenUp;
}

int giveUpLine(int /*count*/, int /*key*/) {
  lineIsGivenUp() = true;
  rl_done = 1;
  return 0;
}

// While a line is edited, Ctrl-C is a key and not a signal. Each line begins with the usual modes
// of the terminal.
int beginLine() {
  rl_parse_and_bind("setty -d -isig");
  InterruptWatch::clear();
  return 0;
}

void bindKeys() {
  rl_pre_input_hook = beginLine;
  rl_add_defun("zel-give-up-line", giveUpLine, '\x03');
  rl_add_defun("zel-explain", explain, '?');
}

std::vector<std::string>& candidates() {
  static std::vector<std::string> words;
  return words;
}

// The candidate after the previous call's; the first for number 0; null after the last. The caller
// frees it.
char* candidate(const char* /*text*/, int number) {
  static std::size_t next = 0;
  if (number == 0) next = 0;
  return next < candidates().size() ? strdup(candidates()[next++].c_str()) : nullptr;
}

char** complete(const char* text, int /*start*/, int end) {
  rl_attempted_completion_over = 1;  // does not complete file names
  candidates() = activeCompleter()(std::string(rl_line_buffer, static_cast<std::size_t>(end)));
  return rl_completion_matches(text, candidate);
}

namespace fs = std::filesystem;

// The history file while it is read or written. A link is not followed, and only a regular file of
// limited size is used: no console waits for a FIFO. libedit opens files by name, so it gets the
// name of the open descriptor.
class HistoryAccess final {
 public:
  HistoryAccess(const std::string& file, int flags)
      : descriptor_(open(file.c_str(), flags | O_NOFOLLOW | O_NONBLOCK | O_NOCTTY | O_CLOEXEC,
                         S_IRUSR | S_IWUSR)) {}
  HistoryAccess(const HistoryAccess&) = delete;
  HistoryAccess& operator=(const HistoryAccess&) = delete;
  ~HistoryAccess() {
    if (descriptor_ >= 0) close(descriptor_);
  }

  [[nodiscard]] bool isAllowed() const {
    struct stat found {};
    return descriptor_ >= 0 && fstat(descriptor_, &found) == 0 && S_ISREG(found.st_mode) &&
           static_cast<std::size_t>(found.st_size) <= Limits::inputFileBytes;
  }
  [[nodiscard]] std::string path() const { return "/proc/self/fd/" + std::to_string(descriptor_); }

 private:
  int descriptor_;
};

// The value of the variable if it is an absolute path; otherwise empty.
fs::path folderIn(const char* variable) {
  const char* const value = std::getenv(variable);
  const fs::path folder = value == nullptr ? "" : value;
  return folder.is_absolute() ? folder : fs::path();
}

}  // namespace

LineEditor::LineEditor(std::string prompt, std::string historyFile, Completer completer,
                       Explainer explainer)
    : prompt_(std::move(prompt)), historyFile_(std::move(historyFile)) {
  std::setlocale(LC_CTYPE, "");
  activeCompleter() = std::move(completer);
  activeExplainer() = std::move(explainer);
  rl_readline_name = "zel-agent";
  rl_attempted_completion_function = complete;
  rl_basic_word_break_characters = " \t";
  using_history();
  bindKeys();
  stifle_history(Limits::consoleLines);
  const HistoryAccess access(historyFile_, O_RDONLY);
  if (access.isAllowed()) read_history(access.path().c_str());
}

LineEditor::~LineEditor() {
  activeCompleter() = {};
  activeExplainer() = {};
}

std::optional<std::string> LineEditor::readLine() {
  lineIsGivenUp() = false;
  const std::unique_ptr<char, void (*)(void*)> line(readline(prompt_.c_str()), std::free);
  if (lineIsGivenUp()) {
    std::puts("^C");
    return "";
  }
  if (!line) {
    std::puts("");  // ends the line of the prompt
    return std::nullopt;
  }
  remember(line.get());
  return std::string(line.get());
}

void LineEditor::remember(const std::string& line) {
  if (isBlankLine(line) || line == last_) return;
  last_ = line;
  add_history(line.c_str());
  const HistoryAccess access(historyFile_, O_WRONLY | O_CREAT);
  if (access.isAllowed()) write_history(access.path().c_str());
}

std::string historyFile() {
  if (const fs::path state = folderIn("XDG_STATE_HOME"); !state.empty()) {
    const fs::path folder = state / "zel-agent";
    std::error_code error;
    fs::create_directories(folder, error);
    return error ? std::string() : (folder / "history").string();
  }
  const fs::path home = folderIn("HOME");
  return home.empty() ? std::string() : (home / ".zel-agent_history").string();
}

}  // namespace ZelAgent
