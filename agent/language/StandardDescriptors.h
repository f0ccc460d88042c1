#pragma once

namespace ZelAgent {

/// Opens /dev/null in place of standard input, output and error if they are closed. Otherwise the
/// next file that the process opens would get their number and receive their text.
///
/// All three are opened for reading only. So writing to a closed standard output still fails, and
/// is still reported. Called first in `main`. Returns whether all three are open now.
[[nodiscard]] bool openStandardDescriptors() noexcept;

}  // namespace ZelAgent
