// The string form of an action, printed and parsed. The peer is the shortest handwritten code for
// three strings and a byte, without escapes.

#include <charconv>
#include <cstring>
#include <stdexcept>

#include "Mox/Strep.h"
#include "benchmarks/Families.h"
#include "benchmarks/World.h"

namespace Benchmarks {
namespace {

using ZelVrfSelectionPolicy::VrfAction;

struct TextAction {
  std::string vrfName;
  std::string fallbackVrfName;
  std::string postDecapVrfName;
  unsigned char action;
};

constexpr const char* actionNames[] = {"actionNone", "actionVrf", "actionDecapVrf",
                                       "actionDiscard"};

std::string print(const TextAction& action) {
  std::string text = "Value('ZelVrfSelectionPolicy::VrfAction', ** {'vrfName': '";
  text += action.vrfName;
  text += "', 'fallbackVrfName': '";
  text += action.fallbackVrfName;
  text += "', 'postDecapVrfName': '";
  text += action.postDecapVrfName;
  text += "', 'action': ";
  text += actionNames[action.action];
  text += "})";
  return text;
}

/// Scans in the manner of `std::from_chars`: each step returns the start of the next one.
const char* scan(const char* from, const char* end, std::string_view literal) {
  const auto left = static_cast<std::size_t>(end - from);
  if (left < literal.size() || std::memcmp(from, literal.data(), literal.size()) != 0) {
    throw std::invalid_argument("not an action");
  }
  return from + literal.size();
}

const char* scanQuoted(const char* from, const char* end, std::string& value) {
  from = scan(from, end, "'");
  const auto* quote =
      static_cast<const char*>(std::memchr(from, '\'', static_cast<std::size_t>(end - from)));
  if (quote == nullptr) throw std::invalid_argument("not an action");
  value.assign(from, quote);
  return quote + 1;
}

const char* scanAction(const char* from, const char* end, unsigned char& action) {
  for (action = 0; action < std::size(actionNames); ++action) {
    const std::string_view name = actionNames[action];
    if (std::string_view(from, end).starts_with(name)) return from + name.size();
  }
  throw std::invalid_argument("not an action");
}

TextAction parse(std::string_view text) {
  TextAction action;
  const char* end = text.data() + text.size();
  const char* next =
      scan(text.data(), end, "Value('ZelVrfSelectionPolicy::VrfAction', ** {'vrfName': ");
  next = scanQuoted(next, end, action.vrfName);
  next = scanQuoted(scan(next, end, ", 'fallbackVrfName': "), end, action.fallbackVrfName);
  next = scanQuoted(scan(next, end, ", 'postDecapVrfName': "), end, action.postDecapVrfName);
  next = scanAction(scan(next, end, ", 'action': "), end, action.action);
  if (scan(next, end, "})") != end) throw std::invalid_argument("not an action");
  return action;
}

constexpr unsigned drawn = 256;

}  // namespace

void records(Report& report) {
  const std::vector<VrfAction> all = actions(drawn, 8);
  std::vector<TextAction> textual;
  std::vector<std::string> texts;
  for (const VrfAction& action : all) {
    texts.push_back(valueToStrep(action).str());
    textual.push_back(parse(texts.back()));
  }
  Comparison("print of an action")
      .ours([&, i = 0U](benchmark::State& state) mutable {
        for (auto _ : state)
          benchmark::DoNotOptimize(valueToStrep(all[i++ % drawn]));
      })
      .beside("std::string append by hand", ratioAtMost(2.0),
              [&, i = 0U](benchmark::State& state) mutable {
                for (auto _ : state)
                  benchmark::DoNotOptimize(print(textual[i++ % drawn]));
              })
      .measure(report);
  Comparison("parse of an action")
      .ours([&, i = 0U](benchmark::State& state) mutable {
        for (auto _ : state)
          benchmark::DoNotOptimize(Mox::strepToValue<VrfAction>(texts[i++ % drawn]));
      })
      .beside("scan by hand", ratioAtMost(2.0),
              [&, i = 0U](benchmark::State& state) mutable {
                for (auto _ : state)
                  benchmark::DoNotOptimize(parse(texts[i++ % drawn]));
              })
      .measure(report);
}

}  // namespace Benchmarks
