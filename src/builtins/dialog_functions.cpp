#include "builtins/families.h"

namespace lx {

void registerDialogFunctions(LibraryBuilder& /*b*/) {}

}  // namespace lx
