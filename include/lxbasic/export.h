// LX_API marks what the engine's shared library exports; everything else stays hidden.
#pragma once
#define LX_API __attribute__((visibility("default")))
