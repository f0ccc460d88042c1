// Why: scripts tell outcomes apart by the exit status, so each has one, the same for all commands.
// Always: where several apply the highest holds.
#pragma once

namespace ZelAgent {

enum class ExitStatus : int {
  success = 0,
  // With --strict: an action was not programmed on the chip. Or the output could not be written, a
  // socket not be had, or no daemon be reached.
  failure = 1,
  // A configuration, a file that was to be shown or the command line is wrong; of what is wrong
  // nothing was applied.
  badInput = 2,
};

}  // namespace ZelAgent
