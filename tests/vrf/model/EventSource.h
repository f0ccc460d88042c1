#pragma once

#include <vector>

#include "Event.h"

namespace VrfModel {

/// Generates events from choices. Most events change the inputs that the machine follows at that
/// point of the history. Periods with an inactive machine or with none are short.
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
  bool isInactive_ = false;
  bool isZombie_ = false;
  Inputs inputs_;
};

/// A history of `length` events. The first event builds a machine.
[[nodiscard]] std::vector<Event> historyOf(const Cast& cast, Choices& choices, std::size_t length);

}  // namespace VrfModel
