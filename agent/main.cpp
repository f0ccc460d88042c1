#include <iostream>

#include "agent/CommandLine.h"

int main(int argumentCount, char** arguments) {
  return static_cast<int>(ZelAgent::runCommandLine(argumentCount, arguments, std::cout, std::cerr));
}
