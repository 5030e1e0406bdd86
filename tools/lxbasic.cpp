#include <cstdio>

#include "lxbasic/version.h"

int main() {
  std::printf("%s %s\n", lx::kEngineName, lx::kVersionText);
  return 0;
}
