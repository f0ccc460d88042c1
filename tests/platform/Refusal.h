#pragma once

#include <string>

namespace Mox::Testing {

/// What the `Exception` says that `call` throws; empty when it throws none.
template <class Exception, class Call>
std::string refusal(Call call) {
  try {
    static_cast<void>(call());
    return {};
  } catch (const Exception& error) {
    return error.what();
  }
}

}  // namespace Mox::Testing
