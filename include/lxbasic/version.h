#pragma once

namespace lx {
inline constexpr const char* kEngineName = "LxBasic";
inline constexpr int kVersionMajor = 1;
inline constexpr int kVersionMinor = 6;
inline constexpr const char* kVersionText = "1.6";
}  // namespace lx
