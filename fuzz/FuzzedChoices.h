// Takes the choices that make up a history from the bytes of an input, from its front. At the end
// of the input every choice is 0.
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
