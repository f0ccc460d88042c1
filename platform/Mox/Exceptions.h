#pragma once

#include <stdexcept>
#include <string>
#include <string_view>

#include "Velo/Export.h"

namespace Mox {

/// A value is outside of what its type or its string form allows.
class ZEL_EXPORT RangeException : public std::range_error {
 public:
  using std::range_error::range_error;
};

/// A mutator was given null where it needs an object.
class ZEL_EXPORT NullArgumentException : public std::invalid_argument {
 public:
  /// `attribute` is the name of the attribute that the mutator belongs to.
  explicit NullArgumentException(std::string_view attribute)
      : std::invalid_argument("null argument to the mutator of attribute '" +
                              std::string(attribute) + "'") {}
};

/// An operation by name or number was called with wrong arguments.
class ZEL_EXPORT ArgumentException : public std::invalid_argument {
 public:
  using std::invalid_argument::invalid_argument;
};

/// An attempt to write false as a member of a set. Members are deleted instead.
class ZEL_EXPORT FalseMemberException : public ArgumentException {
 public:
  /// `attribute` is the name of the set.
  explicit FalseMemberException(std::string_view attribute)
      : ArgumentException("a member of the set '" + std::string(attribute) +
                          "' cannot be set to false, only deleted") {}
};

}  // namespace Mox
