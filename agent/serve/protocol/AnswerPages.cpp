#include "agent/serve/protocol/AnswerPages.h"

#include <utility>

#include "agent/language/Limits.h"
#include "agent/serve/protocol/Answer.h"

namespace ZelAgent {
namespace {

// The text as a part of a JSON string.
std::string insideQuotes(const std::string& text) {
  const std::string quoted = oneLine(OrderedJson(text));
  return quoted.substr(1, quoted.size() - 2);
}

}  // namespace

AnswerPages::AnswerPages(ReportPagesPtr pages, Framing framing, bool asJson)
    : pages_(std::move(pages)), framing_(framing), asJson_(asJson) {}

std::string AnswerPages::next(std::size_t /*room*/) {
  const bool isFirst = !std::exchange(hasBegun_, true);
  std::string part = framed(nextPages());
  if (framing_ == Framing::text) return hasNext() ? part : part + endOfText;
  const std::string quote = asJson_ ? "" : "\"";
  if (isFirst) part = R"({"status":0,"output":)" + quote + part;
  return hasNext() ? part : part + quote + "}\n";
}

// Short pages are sent together, and a page that needs several calls is waited for. Many calls
// would keep other clients from their turns.
std::string AnswerPages::nextPages() {
  constexpr int mostCalls = 16;
  std::string pages;
  for (int call = 0; call < mostCalls && hasNext() && pages.size() < Limits::pageBytes / 2; ++call)
    pages += pages_->next();
  return pages;
}

std::string AnswerPages::framed(const std::string& pages) const {
  if (framing_ == Framing::text) return textLines(pages);
  return asJson_ ? pages : insideQuotes(pages);
}

}  // namespace ZelAgent
