#include <iostream>

#include "agent/commands/CommandLine.h"

int main(int argumentCount, char** arguments) {
  return static_cast<int>(ZelAgent::runCommandLine(argumentCount, arguments, std::cout, std::cerr));
}
