#include <gtest/gtest.h>

#include <random>
#include <string>
#include <string_view>
#include <vector>

#include "Mox/QuotedString.h"
#include "Mox/Strep.h"
#include "ParseError.h"
#include "ZelVrfSelectionPolicy/values/HwStatus.h"
#include "ZelVrfSelectionPolicy/values/VrfAction.h"
#include "testing/RandomSeed.h"

namespace ZelVrfSelectionPolicy {
namespace {

constexpr unsigned operationsPerRecord = 50'000;

/// Texts that a parser may be given: noise, valid string forms, and string forms that something
/// has happened to.
template <class Record>
class Texts {
 public:
  explicit Texts(std::uint32_t seed) : random_(seed) {}

  std::string next() {
    if (below(10) == 0) return noise();
    std::string text = valueToStrep(record()).str();
    // A fifth stays valid.
    for (std::size_t mutations = below(5); mutations != 0; --mutations)
      mutate(text);
    return text;
  }

 private:
  std::size_t below(std::size_t end) {
    return std::uniform_int_distribution<std::size_t>(0, end - 1)(random_);
  }
  char byte() { return static_cast<char>(below(256)); }

  std::string noise() {
    std::string text(below(200), '\0');
    for (char& at : text)
      at = byte();
    return text;
  }

  // Short or of any bytes or of about the length limit.
  std::string name() {
    if (below(4) == 0) return {};
    std::string bytes(below(8) == 0 ? 95 + below(6) : below(8), 'v');
    if (below(3) == 0) {
      for (char& at : bytes)
        at = byte();
    }
    return bytes;
  }

  Record record();

  std::string_view token() {
    static const std::vector<std::string_view> tokens{
        "Value('ZelVrfSelectionPolicy::VrfAction', ** {",
        "Value('ZelVrfSelectionPolicy::HwStatus', ** {",
        "'vrfName': ",
        ", 'fallbackVrfName': ",
        ", 'postDecapVrfName': ",
        ", 'action': ",
        "'status': ",
        ", 'failureReason': ",
        ", 'failureDescription': ",
        "})",
        "''",
        "'red'",
        "'default'",
        "actionNone",
        "actionVrf",
        "programmedInHw",
        "programmingFailure",
        "failureNone",
        "failureVrfResourceAlloc",
        "\\",
        "\\x",
        "\\x0a",
        "\\x00",
        "\\xfF",
        "\\n",
        "'",
        " ",
        ",",
        "\n",
        std::string_view("\0", 1),
        "\xc3\xa4"};
    return tokens[below(tokens.size())];
  }

  void mutate(std::string& text) {
    const std::size_t at = below(text.size() + 1);
    const std::size_t size = below(12);
    switch (below(7)) {
      case 0:  // flip a bit
        if (at < text.size()) text[at] = static_cast<char>(text[at] ^ 1 << below(8));
        break;
      case 1:  // cut a piece out
        text.erase(at, size);
        break;
      case 2:  // cut the end off
        text.erase(at);
        break;
      case 3:  // insert a byte
        text.insert(at, 1, byte());
        break;
      case 4:  // write a piece twice
        text.insert(at, text.substr(at, size));
        break;
      case 5:  // insert a token
        text.insert(at, token());
        break;
      default:  // replace by a token
        text.replace(at, size, token());
        break;
    }
  }

  std::mt19937 random_;
};

template <>
VrfAction Texts<VrfAction>::record() {
  VrfAction made(name(), PolicyMap::ActionTypeInstance(static_cast<unsigned>(below(4))));
  made.fallbackVrfNameIs(name());
  made.postDecapVrfNameIs(name());
  return made;
}

template <>
HwStatus Texts<HwStatus>::record() {
  HwStatus made;
  made.statusIs(ProgrammingResultInstance(static_cast<unsigned>(below(2))));
  made.failureReasonIs(FailureCodeInstance(static_cast<unsigned>(below(3))));
  made.failureDescriptionIs(name());
  return made;
}

template <class Record>
class RecordParser : public ::testing::Test {};
using Records = ::testing::Types<VrfAction, HwStatus>;
TYPED_TEST_SUITE(RecordParser, Records);

TYPED_TEST(RecordParser, TakesRandomTextsThatPrintBackUnchangedAndRefusesAllOthers) {
  const Testing::RandomSeed seed;
  SCOPED_TRACE(seed.replay());
  Texts<TypeParam> texts(seed.value());
  unsigned taken = 0;
  for (unsigned operation = 0; operation < operationsPerRecord; ++operation) {
    const std::string text = texts.next();
    if (Testing::parseError<TypeParam>(text).empty()) {
      ++taken;
      ASSERT_EQ(valueToStrep(Mox::strepToValue<TypeParam>(text)).str(), text) << operation;
    }
    ASSERT_FALSE(this->HasFailure()) << operation << ": " << Mox::quoted(text);
  }
  EXPECT_GT(taken, operationsPerRecord / 10) << "hardly a text was valid";
  EXPECT_LT(taken, operationsPerRecord / 2) << "hardly a text was invalid";
}

}  // namespace
}  // namespace ZelVrfSelectionPolicy
