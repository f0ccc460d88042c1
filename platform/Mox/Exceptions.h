#pragma once

#include <stdexcept>
#include <string>
#include <string_view>

namespace Mox {

/// A value lies outside what its type or its textual form allows.
class [[gnu::visibility("default")]] RangeException : public std::range_error {
 public:
  using std::range_error::range_error;
};

/// A mutator was given null where it needs an object.
class [[gnu::visibility("default")]] NullArgumentException : public std::invalid_argument{
  public :
      /// `attribute` is the name of the attribute that the mutator belongs to.
      explicit NullArgumentException(std::string_view attribute) : std::invalid_argument(
          "null argument to the mutator of attribute '" + std::string(attribute) + "'"){}
};

}  // namespace Mox
