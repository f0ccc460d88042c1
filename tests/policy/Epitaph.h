#pragma once

#include "Mox/Entity.h"
#include "testing/Journal.h"

namespace ZelVrfSelectionPolicy::Testing {

/// Writes a line when it is destroyed.
class Epitaph final : public Mox::Entity {
 public:
  Epitaph(Journal& journal, const char* line) : Entity("epitaph"), journal_(journal), line_(line) {}
  ~Epitaph() override { journal_.write(line_); }

 private:
  Journal& journal_;
  const char* line_;
};

}  // namespace ZelVrfSelectionPolicy::Testing
