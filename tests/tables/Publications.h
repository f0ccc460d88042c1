#pragma once

#include <functional>
#include <string>
#include <utility>
#include <vector>

#include "Velo/Publisher.h"
#include "Velo/Subscriber.h"
#include "ZelVrfSelectionPolicy/values/VrfAction.h"
#include "testing/Shown.h"

namespace ZelVrfSelectionPolicy::Testing {

/// A subscriber that writes down what a table publishes, as "ATTRIBUTE KEY", and may be given work
/// to do from inside the call. It must go before the table does, or leave it by `unsubscribe`.
class Publications {
 public:
  using Work = std::function<void(const VrfAction& key)>;

  template <class Table>
  explicit Publications(const Table& table, Work work = nullptr)
      : onPublication(std::move(work)), publisher_(&table.publisher()), subscriber_(*this) {
    subscriber_.dispatch = [](Velo::Publisher*, Velo::Subscriber* subscriber, short attributeId,
                              const void* key, const void*) {
      auto& self = Velo::MemberSubscriber<Publications>::ownerOf(subscriber);
      self.published(attributeId, *static_cast<const VrfAction*>(key));
    };
    publisher_->subscriberIs(subscriber_);
  }
  Publications(const Publications&) = delete;
  Publications& operator=(const Publications&) = delete;
  ~Publications() { unsubscribe(); }

  void unsubscribe() {
    if (publisher_ != nullptr) publisher_->subscriberDel(subscriber_);
    publisher_ = nullptr;
  }

  [[nodiscard]] const std::vector<std::string>& seen() const { return seen_; }
  [[nodiscard]] std::vector<std::string> take() { return std::exchange(seen_, {}); }

  Work onPublication;

 private:
  void published(short attributeId, const VrfAction& key) {
    const std::string before = shown(key);
    seen_.push_back(std::to_string(attributeId) + " " + before);
    if (onPublication) onPublication(key);
    // The key is valid during the whole call, whatever is done to its entry.
    if (shown(key) != before) seen_.push_back("torn " + before);
  }

  Velo::Publisher* publisher_;
  Velo::MemberSubscriber<Publications> subscriber_;
  std::vector<std::string> seen_;
};

}  // namespace ZelVrfSelectionPolicy::Testing
