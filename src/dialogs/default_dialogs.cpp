#include <iostream>
#include <mutex>

#include "lxbasic/dialogs.h"

namespace lx {

namespace {

std::mutex defaultMutex;
std::shared_ptr<DialogProvider> defaultProvider;

}  // namespace

void setDefaultDialogProvider(std::shared_ptr<DialogProvider> provider) {
  std::lock_guard lock(defaultMutex);
  defaultProvider = std::move(provider);
}

std::shared_ptr<DialogProvider> defaultDialogProvider() {
  std::lock_guard lock(defaultMutex);
  if (!defaultProvider) {
    if (graphicalDialogsAvailable()) defaultProvider = makeGraphicalDialogs();
    if (!defaultProvider) defaultProvider = makeConsoleDialogs(std::cin, std::cout);
  }
  return defaultProvider;
}

#ifndef LX_WITH_FLTK
// Built without a toolkit: the console is all there is.
std::shared_ptr<DialogProvider> makeGraphicalDialogs() {
  return nullptr;
}
bool graphicalDialogsAvailable() {
  return false;
}
#endif

}  // namespace lx
