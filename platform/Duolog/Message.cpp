#include "Duolog/Message.h"

#include <algorithm>

#include "Mox/TraceHelper.h"

namespace Duolog {

Message::Message(const Source& source, unsigned level, unsigned line, const char* function,
                 std::initializer_list<const char*> fragments)
    : source_(source),
      level_(level),
      line_(line),
      function_(function),
      fragments_{},
      fragmentCount_(std::min(fragments.size(), maxFragments)),
      site_(Blinklog::siteIs(
          {source.path, line, function, level, {fragments.begin(), fragments.end()}})) {
  std::copy_n(fragments.begin(), fragmentCount_, fragments_.begin());
}

void Message::sendText(std::span<const Argument> arguments) const {
  Mox::TraceHelper helper(handle(), level_, source_.path, line_, function_);
  auto argument = arguments.begin();
  for (const std::string_view fragment : std::span(fragments_).first(fragmentCount_)) {
    if (!Blinklog::isPlaceholder(fragment) || argument == arguments.end()) {
      helper.stream() << fragment;
    } else if (argument->shown().empty() && argument->kept().kind == 'u') {
      helper.stream() << (argument++)->kept().number;
    } else {
      helper.stream() << (argument++)->shown();
    }
  }
}

}  // namespace Duolog
