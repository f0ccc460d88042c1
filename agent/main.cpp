#include <unistd.h>

#include <iostream>

#include "agent/CommandLine.h"
#include "agent/language/LogLine.h"
#include "agent/language/StandardDescriptors.h"
#include "agent/serve/daemon/LineStream.h"

int main(int argumentCount, char** arguments) {
  using ZelAgent::ExitStatus;
  if (!ZelAgent::openStandardDescriptors()) return static_cast<int>(ExitStatus::failure);
  ZelAgent::LineStream daemonOut(STDOUT_FILENO);
  ZelAgent::LineStream daemonErr(STDERR_FILENO, ZelAgent::warningStart(STDERR_FILENO));
  return static_cast<int>(ZelAgent::runCommandLine(argumentCount, arguments, {std::cout, std::cerr},
                                                   {daemonOut, daemonErr}));
}
