#include "MessageTape.h"

#include "Blinklog/Ring.h"

namespace VrfModel {
namespace {

constexpr std::string_view sourcePath = "/src/ZelVrfSelectionPolicy/ZelVrfSelectionPolicy";

Message messageOf(const Blinklog::Record& record) {
  const Blinklog::Site& site = *record.site;
  const std::string elsewhere = site.path == sourcePath ? "" : " from " + site.path;
  return {site.level, site.line, site.function, record.text + elsewhere};
}

}  // namespace

MessageTape::MessageTape() : begin_(Blinklog::ring().written()), end_(begin_) {
  Blinklog::ring().clear();
}

void MessageTape::eventIs(std::size_t event, const Steps<Message>& expected) {
  const std::uint64_t end = Blinklog::ring().written();
  if (end != end_ || !expected.items().empty()) entries_.push_back({event, end_, end, expected});
  const bool isMiscounted = end - end_ != expected.items().size();
  end_ = end;
  isDue_ = isMiscounted || end_ - begin_ > Blinklog::ring().slots() / 2;
}

std::optional<Difference> MessageTape::compare() {
  const std::vector<Blinklog::Record> records = Blinklog::ring().dump();
  std::optional<Difference> difference;
  auto record = records.begin();
  for (const Entry& entry : entries_) {
    std::vector<Message> observed;
    for (; record != records.end() && record->sequence < entry.end; ++record) {
      if (record->sequence >= entry.begin) observed.push_back(messageOf(*record));
    }
    const std::string text = entry.expected.differenceFrom(std::move(observed));
    if (text.empty()) continue;
    difference = Difference{entry.event, "messages" + text};
    break;
  }
  entries_.clear();
  Blinklog::ring().clear();
  begin_ = end_;
  isDue_ = false;
  return difference;
}

}  // namespace VrfModel
