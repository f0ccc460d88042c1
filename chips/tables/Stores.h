#pragma once

#include <atomic>
#include <functional>
#include <type_traits>
#include <utility>

namespace ChipTables {

/// The stores of a writer into memory that packets read at the same time.
///
/// A packet meets the value before a store or the value after it, and with the latter everything
/// that was stored earlier. There is one writer.
class Stores final {
 public:
  Stores() = default;
  /// `observer` is called after each store. A test looks there as a packet would.
  explicit Stores(std::function<void()> observer) : observer_(std::move(observer)) {}

  template <class Word>
  void store(Word& word, std::type_identity_t<Word> value) const {
    std::atomic_ref<Word>(word).store(value, std::memory_order_release);
    if (observer_) observer_();
  }
  /// The same, unless the word has the value.
  template <class Word>
  void storeChange(Word& word, std::type_identity_t<Word> value) const {
    if (word != value) store(word, value);
  }

 private:
  std::function<void()> observer_;
};

}  // namespace ChipTables
