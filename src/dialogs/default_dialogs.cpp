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
    // The core knows no toolkit; a GUI host installs windows with useGraphicalDialogs().
    defaultProvider = makeConsoleDialogs(std::cin, std::cout);
  }
  return defaultProvider;
}

}  // namespace lx
