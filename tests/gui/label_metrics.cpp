#include "gui/label_metrics.h"

#include <FL/Fl.H>
#include <FL/fl_draw.H>

#include <string>

Measured labelMetrics() {
  Fl::lock();
  Fl::w();  // opens the display
  fl_font(FL_HELVETICA, FL_NORMAL_SIZE);
  Measured m;
  m.W = static_cast<int>(fl_width(std::string(51, 'W').c_str()));
  int w = 0;
  fl_measure("Wj", w, m.H, 0);
  Fl::unlock();
  return m;
}
