#pragma once

#include <string>
#include <vector>

#include "Mox/ReflectiveAccess.h"

namespace ZelAgent {

/// An object that the library has now: an entity, or a record in a collection of one.
struct LiveObject {
  std::string label;    // the string form of its key, empty for none
  Mox::AnyValue value;  // the record, or a pointer to the entity

  /// The object as reflection reads it.
  [[nodiscard]] Mox::Object object() const;
};

/// The objects of the type that can be reached from `top` through attributes that are read, in the
/// order in which they are found.
///
/// Each entity occurs once, and each record of one label once. The label of an object from a
/// collection is its key. A record that is itself a key is its own label.
[[nodiscard]] std::vector<LiveObject> liveObjects(const Mox::PtrInterface& top,
                                                  const Mox::Type& type);

}  // namespace ZelAgent
