// The measures the input window's layout is built from, taken with FLTK on the display the
// tests use. Apart from the test source because Xlib's macros clash with GoogleTest's names.
#pragma once

struct Measured {
  int W = 0;  // width of 51 letters "W" in the label font
  int H = 0;  // height of "Wj" in that font
};

Measured labelMetrics();
