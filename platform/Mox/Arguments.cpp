#include "Mox/Arguments.h"

namespace Mox {

void Arguments::needCount(std::size_t count) const {
  if (values_.size() == count) return;
  throw ArgumentException(std::string(callee_) + ": expected " + std::to_string(count) +
                          (count == 1 ? " argument" : " arguments") + ", found " +
                          std::to_string(values_.size()));
}

void Arguments::refuse(std::size_t index, const std::string& expected) const {
  throw ArgumentException(std::string(callee_) + ": expected a value of the kind " + expected +
                          " as argument " + std::to_string(index + 1) + ", found " +
                          values_[index].describe());
}

}  // namespace Mox
