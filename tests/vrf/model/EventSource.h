#pragma once

#include <vector>

#include "Event.h"

namespace VrfModel {

/// Makes up events out of choices. Most of them befall what the machine follows at that point of
/// the history; times of silence and without a machine are short.
class EventSource {
 public:
  /// Both must outlive it.
  EventSource(const Cast& cast, Choices& choices) : cast_(cast), choices_(choices) {}

  [[nodiscard]] Event next();

 private:
  [[nodiscard]] Kind kind();
  [[nodiscard]] Inputs inputs();
  [[nodiscard]] std::uint32_t number(Kind kind);
  [[nodiscard]] std::uint8_t followed(const Event& event) const;
  void remember(const Event& event);

  const Cast& cast_;
  Choices& choices_;
  bool isThere_ = false;
  bool isSilent_ = false;
  bool isZombie_ = false;
  Inputs inputs_;
};

/// A history of `length` events, which begins with the building of a machine.
[[nodiscard]] std::vector<Event> historyOf(const Cast& cast, Choices& choices, std::size_t length);

}  // namespace VrfModel
