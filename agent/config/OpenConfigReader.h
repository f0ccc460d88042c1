#pragma once

#include <string>
#include <vector>

#include "agent/config/Configuration.h"
#include "agent/config/Findings.h"
#include "agent/language/Progress.h"

namespace ZelAgent {

struct ReadConfiguration {
  Configuration configuration;
  std::vector<std::string> warnings;  // Each is "FILE: PATH: WHAT".
};

/// Reads a configuration in the OpenConfig model "network-instance" with "policy-forwarding", as
/// JSON in the encoding of RFC 7951. PathTable.h has the leaves that are read.
///
/// A configuration is returned only if the whole file is right. Otherwise a `ConfigError` has all
/// that is wrong, one line for each error in the order of the document. A rule never matches more
/// than is written: a match, an action or another member of a rule that is not supported is an
/// error. If `leniency` is `lenient`, such a rule is left out with a warning.
///
/// List entries of other kinds, and members beside rules that are not read, are warnings. So is a
/// reference to a network instance that is not configured.
[[nodiscard]] ReadConfiguration readOpenConfigFile(const std::string& file,
                                                   Leniency leniency = Leniency::strict);
/// The same, with progress: "reading FILE: 120,000 rules".
[[nodiscard]] ReadConfiguration readOpenConfigFile(const std::string& file, Leniency leniency,
                                                   Progress& progress);

/// The same from a text. Messages call it `file`.
[[nodiscard]] ReadConfiguration readOpenConfig(const std::string& text, const std::string& file,
                                               Leniency leniency = Leniency::strict);

}  // namespace ZelAgent
