// Why: an operator names a type and an attribute, and means the objects of that type that the agent
// has: entities, and the records in their collections.
// Always: every object that can be reached from the library's top object through attributes that
// are read, each entity and each record of one label once. An object is labelled by the key under
// which it was found, where it was found in a collection; a record that is itself a key is its own
// label.
#pragma once

#include <string>
#include <vector>

#include "Mox/ReflectiveAccess.h"

namespace ZelAgent {

struct LiveObject {
  std::string label;    // the string form of its key; empty where there is none
  Mox::AnyValue value;  // the record, or a pointer to the entity

  // As reflection takes it, to be read.
  [[nodiscard]] Mox::Object object() const;
};

// The objects of the type, in the order in which they were found.
[[nodiscard]] std::vector<LiveObject> liveObjects(const Mox::PtrInterface& top,
                                                  const Mox::Type& type);

}  // namespace ZelAgent
