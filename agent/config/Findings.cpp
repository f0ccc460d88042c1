#include "agent/config/Findings.h"

#include <iterator>

#include "agent/language/Errors.h"
#include "agent/language/Limits.h"
#include "agent/language/PrintableText.h"
#include "agent/language/Words.h"

namespace ZelAgent {

void FindingLines::add(std::size_t order, std::string line) {
  ++count_;
  lines_.emplace(order, std::move(line));
  if (lines_.size() > kept_) lines_.erase(std::prev(lines_.end()));
}

std::vector<std::string> FindingLines::lines(const std::string& file,
                                             const std::string& what) const {
  std::vector<std::string> lines;
  for (const auto& [order, line] : lines_)
    lines.push_back(line);
  const std::size_t others = count_ - lines_.size();
  if (others == 0) return lines;
  lines.push_back(file + ": ... and " + std::to_string(others) + " more " + what +
                  (others == 1 ? "" : "s"));
  return lines;
}

Findings::Findings(const std::string& file, Leniency leniency)
    : file_(printable(file, Limits::shownTextBytes)),
      leniency_(leniency),
      errors_(Limits::shownErrors),
      warnings_(Limits::shownWarnings) {}

void Findings::error(std::size_t order, const std::string& path, const std::string& what) {
  ++problems_;
  errors_.add(order, file_ + ": " + path + ": " + what);
}

void Findings::warning(std::size_t order, const std::string& path, const std::string& what) {
  warnings_.add(order, file_ + ": " + path + ": " + what);
}

void Findings::unsupported(std::size_t order, const std::string& path, const std::string& what,
                           const std::string& consequence) {
  if (!isLenient()) return error(order, path, what);
  ++problems_;
  warning(order, path, what + "; " + consequence);
}

void Findings::throwErrors() const {
  if (errors_.count() == 0) return;
  throw ConfigError(joined(errors_.lines(file_, "error"), "\n"), warnings());
}

std::vector<std::string> Findings::warnings() const {
  return warnings_.lines(file_, "warning");
}

}  // namespace ZelAgent
