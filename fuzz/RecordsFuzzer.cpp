// Fuzzes the text forms of values. The input is a text.
//
// Every registered value type parses the text. A parsed value prints as the same text, and a second
// parse returns an equal value with an equal hash. Any other text is refused by a range exception
// with a reason, not by a type derived from it. The bytes of the input are also used as names and
// descriptions of records: the printed record is parsed as an equal record. The same is checked for
// addresses and prefixes. Attributes are read as text by an arbitrary name and key.

#include <array>
#include <optional>
#include <string>
#include <string_view>
#include <typeinfo>

#include "Mox/AttributeText.h"
#include "Mox/QuotedString.h"
#include "Mox/Reflection.h"
#include "Mox/Strep.h"
#include "Mox/Type.h"
#include "ZelVrfSelectionPolicy/ZelVrfSelectionPolicy.h"
#include "agent/config/IpPrefix.h"
#include "fuzz/Must.h"

namespace {

using Fuzz::fail;
using Fuzz::must;
using ZelVrfSelectionPolicy::HwStatus;
using ZelVrfSelectionPolicy::VrfAction;

// The result of `parse`. Nothing if it refuses.
template <class Parse>
auto unlessRefused(Parse parse) -> std::optional<decltype(parse())> {
  try {
    return parse();
  } catch (const Mox::RangeException& refusal) {
    must(typeid(refusal) == typeid(Mox::RangeException), "a refusal is a range exception itself");
    must(*refusal.what() != '\0', "a refusal says why");
    return std::nullopt;
  }
}

void parseAs(const Mox::Type& type, std::string_view text) {
  const auto value = unlessRefused([&] { return Mox::AnyValue::parsed(type, text); });
  if (!value) return;
  must(value->text().bytes() == text, "a parsed value prints as the same text");
  const Mox::AnyValue again = Mox::AnyValue::parsed(type, text);
  must(again == *value, "the same text is the same value");
  must(again.hash() == value->hash(), "equal values hash equally");
}

void parseAsEveryType(std::string_view text) {
  for (const std::string_view module : Mox::moxModules()) {
    for (const Mox::Type* const type : Mox::moxModuleTypes(module)) {
      if (type->reflection != nullptr && type->reflection->value != nullptr) parseAs(*type, text);
    }
  }
}

template <class Record>
void printAndParse(const Record& record) {
  using Mox::valueToStrep;  // for `Velo::String`
  const std::string text = valueToStrep(record).str();
  must(Mox::strepToValue<Record>(text) == record, "what a record prints is parsed as its equal");
}

// The first four texts that NUL bytes separate.
std::array<std::string_view, 4> piecesOf(std::string_view text) {
  std::array<std::string_view, 4> pieces;
  for (std::string_view& piece : pieces) {
    piece = text.substr(0, text.find('\0'));
    text.remove_prefix(std::min(piece.size() + 1, text.size()));
  }
  return pieces;
}

void printRecordsOf(std::string_view text) {
  const auto pieces = piecesOf(text);
  const auto code = static_cast<unsigned>(text.size());
  printAndParse(Velo::String(std::string(text)));
  HwStatus status;
  status.statusIs(ZelVrfSelectionPolicy::ProgrammingResultInstance(code % 2));
  status.failureReasonIs(ZelVrfSelectionPolicy::FailureCodeInstance(code % 3));
  status.failureDescriptionIs(Velo::String(std::string(text)));
  printAndParse(status);
  const auto action = unlessRefused([&] {
    VrfAction made(pieces[0], PolicyMap::ActionTypeInstance(code % 4));
    made.fallbackVrfNameIs(pieces[1]);
    made.postDecapVrfNameIs(pieces[2]);
    return made;
  });
  if (action) printAndParse(*action);
  const bool isNamed = unlessRefused([&] { return L3::VrfName(text); }).has_value();
  must(isNamed == (text.size() <= L3::VrfName::maxLength), "a name has at most 100 bytes");
}

// Checks that quoting and reading a quoted text are inverse to each other.
void quote(std::string_view text) {
  const std::string form = Mox::quoted(text);
  Mox::CharRange whole(form);
  must(Mox::readQuoted(whole) == text && whole.atEnd(), "what is quoted is read back");
  Mox::CharRange range(text);
  const auto bytes = unlessRefused([&] { return Mox::readQuoted(range); });
  if (!bytes) return;
  const std::string_view taken = text.substr(0, text.size() - range.rest().size());
  must(Mox::quoted(*bytes) == taken, "a byte string has only one quoted form");
}

void parseAddresses(const std::string& text) {
  if (const auto address = ZelAgent::parseIpAddress(text)) {
    must(ZelAgent::parseIpAddress(ZelAgent::toText(*address)) == address,
         "an address is read back");
  }
  if (const auto prefix = ZelAgent::parseIpPrefix(text)) {
    must(ZelAgent::parseIpPrefix(ZelAgent::toText(*prefix)) == prefix, "a prefix is read back");
    must(Ip::firstBits(prefix->address, prefix->length) == prefix->address,
         "a prefix has no bits behind its length");
  }
}

// The first piece is the name of the attribute. The second, if there is one, is the key.
void readAttributes(std::string_view text) {
  const auto pieces = piecesOf(text);
  const auto users = ZelVrfSelectionPolicy::vrfHwConfigFactory();
  const VrfAction action("red", PolicyMap::ActionType::vrf);
  users->vrfRefCountIs(action, 7);
  const Mox::AnyValue record = action;
  const std::optional<std::string_view> key =
      pieces[0].size() < text.size() ? std::optional(pieces[1]) : std::nullopt;
  for (const Mox::Object& object : {Mox::Object(*users), Mox::Object(record)}) {
    const auto answer = unlessRefused([&] {
      try {
        return Mox::attributeText(object, pieces[0], key);
      } catch (const Mox::ArgumentException&) {
        must(key.has_value(), "only a key is an argument");
        return Mox::TextAnswer{Mox::ReturnCode::notSupported};
      }
    });
    must(!answer || answer->code == Mox::ReturnCode::success || answer->text.empty(),
         "without success there is no text");
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string text(data, data + size);
  parseAsEveryType(text);
  printRecordsOf(text);
  quote(text);
  parseAddresses(text);
  readAttributes(text);
  return 0;
}
