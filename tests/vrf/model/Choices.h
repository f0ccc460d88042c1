#pragma once

#include <cstdint>

namespace VrfModel {

/// The source of the choices that make up a history: a seed, or the bytes of a fuzzer.
class Choices {
 public:
  Choices() = default;
  Choices(const Choices&) = delete;
  Choices& operator=(const Choices&) = delete;
  virtual ~Choices() = default;

  /// A number from 0 to `limit` - 1. Precondition: `limit` is not 0.
  [[nodiscard]] virtual unsigned below(unsigned limit) = 0;
  /// True with probability 1 / `times`.
  [[nodiscard]] bool once(unsigned times) { return below(times) == 0; }
};

/// The choices of a seed. They are the same with every compiler and standard library.
class RandomChoices final : public Choices {
 public:
  explicit RandomChoices(std::uint64_t seed) noexcept : state_(seed) {}

  [[nodiscard]] unsigned below(unsigned limit) override {
    state_ += 0x9e3779b97f4a7c15ULL;
    std::uint64_t mixed = (state_ ^ state_ >> 30) * 0xbf58476d1ce4e5b9ULL;
    mixed = (mixed ^ mixed >> 27) * 0x94d049bb133111ebULL;
    return static_cast<unsigned>((mixed ^ mixed >> 31) % limit);
  }

 private:
  std::uint64_t state_;
};

}  // namespace VrfModel
