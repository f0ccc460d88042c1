// Why: the model makes up its histories out of choices, and the bytes of an input can be these.
// Always: used from the front on; when they are used up, every choice is the first one.
#pragma once

#include "fuzz/FuzzedBytes.h"
#include "tests/vrf/model/Choices.h"

namespace Fuzz {

class FuzzedChoices final : public VrfModel::Choices {
 public:
  FuzzedChoices(const std::uint8_t* data, std::size_t size) noexcept : bytes_(data, size) {}

  [[nodiscard]] unsigned below(unsigned limit) override { return bytes_.below(limit); }
  [[nodiscard]] bool areUsedUp() const noexcept { return bytes_.empty(); }

 private:
  FuzzedBytes bytes_;
};

}  // namespace Fuzz
