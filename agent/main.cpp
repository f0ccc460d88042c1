#include <iostream>

#include "agent/CommandLine.h"
#include "agent/language/StandardDescriptors.h"

int main(int argumentCount, char** arguments) {
  using ZelAgent::ExitStatus;
  if (!ZelAgent::openStandardDescriptors()) return static_cast<int>(ExitStatus::failure);
  return static_cast<int>(ZelAgent::runCommandLine(argumentCount, arguments, std::cout, std::cerr));
}
