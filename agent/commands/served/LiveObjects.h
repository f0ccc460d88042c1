#pragma once

#include <string>
#include <vector>

#include "Mox/ReflectiveAccess.h"

namespace ZelAgent {

/// An object of the library: an entity, or a record in a collection of an entity.
struct LiveObject {
  std::string label;    // the string form of its key, empty for none
  Mox::AnyValue value;  // the record, or a pointer to the entity
  Mox::AnyValue key;    // no value for none

  /// The object as reflection reads it.
  [[nodiscard]] Mox::Object object() const;
};

/// The objects of the type that can be reached from `top` by reading attributes, in the order in
/// which they are found.
///
/// Each entity occurs once. Records with the same label occur once. The label of an object in a
/// collection is its key. The label of a record that is a key is the record.
[[nodiscard]] std::vector<LiveObject> liveObjects(const Mox::PtrInterface& top,
                                                  const Mox::Type& type);

}  // namespace ZelAgent
