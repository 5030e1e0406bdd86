// Where the tests find the runner: beside the tests directory of the build tree, or where
// LXBASIC_RUNNER says.
#pragma once

#include <cstdlib>
#include <filesystem>

inline std::filesystem::path runnerPath() {
  if (const char* given = std::getenv("LXBASIC_RUNNER")) return given;
  return std::filesystem::canonical("/proc/self/exe").parent_path().parent_path() / "lxbasic";
}
