// The reference for the configurations and the answers of a daemon.
#pragma once

#include <cstdint>
#include <string>

#include "agent/commands/served/ServedAgent.h"
#include "tests/agent/model/fresh/KeptFacts.h"
#include "tests/agent/serve/simulator/ExpectedAnswer.h"
#include "tests/agent/serve/simulator/SimulatedFile.h"
#include "tests/agent/serve/simulator/SimulatedRequest.h"

namespace ZelAgent {

// Follows the requests in the order in which the daemon must answer them. It has no chip: it knows
// what is configured and what is kept, from the files and the requests alone.
class ReferenceAgent final {
 public:
  // The files must outlive this. `served` is what a reload reads, `other` what `config` reads.
  ReferenceAgent(const SimulatedFile& served, const SimulatedFile& other,
                 std::uint32_t chipCapacity);

  void start();
  // Returns whether the file is right.
  bool reload();
  [[nodiscard]] ExpectedAnswer answer(const SimulatedRequest& request);

  [[nodiscard]] const KeptFacts& facts() const { return facts_; }
  // How often the facts may have changed.
  [[nodiscard]] unsigned changes() const { return changes_; }
  // How the record of a daemon differs; empty if it does not.
  [[nodiscard]] std::string differenceOf(const ConfigurationRecord& record) const;
  // What the last line about the last reload begins with.
  [[nodiscard]] std::string printed() const;

 private:
  class Answerer;

  void configurationIs(const SimulatedFile& file, ConfigurationSource source);
  [[nodiscard]] std::string shownConfig() const;

  const SimulatedFile& served_;
  const SimulatedFile& other_;
  KeptFacts facts_;
  unsigned changes_ = 0;
  std::string inForce_;
  ConfigurationSource source_ = ConfigurationSource::start;
  std::uint64_t applied_ = 0;
  std::uint64_t refused_ = 0;
  std::string refusal_;  // a part of why the last reload was refused; empty if it was applied
};

}  // namespace ZelAgent
