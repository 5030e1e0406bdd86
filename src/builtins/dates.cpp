#include "builtins/families.h"

namespace lx {

void registerDateFunctions(LibraryBuilder& /*b*/) {}

}  // namespace lx
