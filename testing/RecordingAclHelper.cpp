#include "testing/RecordingAclHelper.h"

#include <stdexcept>
#include <utility>

#include "testing/Shown.h"

namespace ZelVrfSelectionPolicy::Testing {
namespace {

std::ptrdiff_t offset(std::size_t place) noexcept {
  return static_cast<std::ptrdiff_t>(place);
}

}  // namespace

// Marks the duration of a call, in which there may be no other call.
class RecordingAclHelper::Call {
 public:
  explicit Call(RecordingAclHelper& helper) noexcept : helper_(helper) { helper_.isInCall_ = true; }
  Call(const Call&) = delete;
  Call& operator=(const Call&) = delete;
  ~Call() { helper_.isInCall_ = false; }

 private:
  RecordingAclHelper& helper_;
};

RecordingAclHelper::AclResult RecordingAclHelper::addRule(const Velo::String& intf,
                                                          std::size_t place, const AclRule& rule) {
  const std::string call = "addRule " + intf.str() + " " + std::to_string(place);
  const std::size_t count = held(intf).size();
  require(!isInCall_, call, "comes from inside another call");
  require(place <= count, call, "is outside a list of " + std::to_string(count));
  journal_.write(call + " " + shown(rule));
  const Call present(*this);
  if (held_ >= capacity) return {false, "no room for more than " + std::to_string(capacity)};
  AclResult result = onAdd ? onAdd(intf, rule) : AclResult();
  if (!result.accepted) return result;
  Rules& list = rules_[intf];
  list.insert(list.begin() + offset(place), rule);
  ++held_;
  return result;
}

void RecordingAclHelper::removeRule(const Velo::String& intf, std::size_t place) {
  const std::string call = "removeRule " + intf.str() + " " + std::to_string(place);
  const std::size_t count = held(intf).size();
  require(!isInCall_, call, "comes from inside another call");
  require(place < count, call, "is outside a list of " + std::to_string(count));
  Rules& list = rules_[intf];
  journal_.write(call + " " + shown(list[place]));
  const Call present(*this);
  if (onRemove) onRemove(intf, list[place]);
  list.erase(list.begin() + offset(place));
  if (list.empty()) rules_.erase(intf);
  --held_;
}

void RecordingAclHelper::moveRule(const Velo::String& intf, std::size_t from, std::size_t to) {
  const std::string call =
      "moveRule " + intf.str() + " " + std::to_string(from) + " " + std::to_string(to);
  const std::size_t count = held(intf).size();
  require(!isInCall_, call, "comes from inside another call");
  require(from < count && to < count, call, "is outside a list of " + std::to_string(count));
  Rules& list = rules_[intf];
  journal_.write(call + " " + shown(list[from]));
  const Call present(*this);
  if (onMove) onMove(intf, list[from]);
  AclRule moved = std::move(list[from]);
  list.erase(list.begin() + offset(from));
  list.insert(list.begin() + offset(to), std::move(moved));
}

RecordingAclHelper::AclResult RecordingAclHelper::replaceRule(const Velo::String& intf,
                                                              std::size_t place,
                                                              const AclRule& rule) {
  const std::string call = "replaceRule " + intf.str() + " " + std::to_string(place);
  const std::size_t count = held(intf).size();
  require(!isInCall_, call, "comes from inside another call");
  require(place < count, call, "is outside a list of " + std::to_string(count));
  require(held(intf)[place].match == rule.match, call, "has another match");
  journal_.write(call + " " + shown(rule));
  const Call present(*this);
  AclResult result = onReplace ? onReplace(intf, rule) : AclResult();
  if (result.accepted) rules_[intf][place] = rule;
  return result;
}

void RecordingAclHelper::intfClosedIs(const Velo::String& intf, bool closed) {
  const std::string call = (closed ? "close " : "open ") + intf.str();
  require(!isInCall_, call, "comes from inside another call");
  journal_.write(call);
  if (closed) {
    closed_.insert(intf);
  } else {
    closed_.erase(intf);
  }
}

bool RecordingAclHelper::intfClosed(const Velo::String& intf) const {
  require(!isInCall_, "intfClosed " + intf.str(), "comes from inside another call");
  return closed_.contains(intf);
}

const RecordingAclHelper::Rules& RecordingAclHelper::rules(const Velo::String& intf) const {
  require(!isInCall_, "rules " + intf.str(), "comes from inside another call");
  return held(intf);
}

std::vector<Velo::String> RecordingAclHelper::intfs() const {
  require(!isInCall_, "intfs", "comes from inside another call");
  std::set<Velo::String> names = closed_;
  for (const auto& [intf, list] : rules_)
    names.insert(intf);
  return {names.begin(), names.end()};
}

const RecordingAclHelper::Rules& RecordingAclHelper::held(const Velo::String& intf) const {
  static const Rules none;
  const auto list = rules_.find(intf);
  return list == rules_.end() ? none : list->second;
}

void RecordingAclHelper::require(bool kept, const std::string& call,
                                 const std::string& broken) const {
  if (kept) return;
  const std::string line = call + " " + broken;
  journal_.write(line);
  throw std::logic_error(line);
}

}  // namespace ZelVrfSelectionPolicy::Testing
