// tsrt: lists and calls the library's classes from the command line (see `tsrt --help`).
#include <iostream>
#include <string>
#include <vector>

#include "commands.h"

int main(int argc, char** argv) {
  const std::vector<std::string> words(argv + 1, argv + argc);
  return tsrt::Run(words, std::cout, std::cerr);
}
