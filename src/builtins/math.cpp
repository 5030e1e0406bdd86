#include "builtins/families.h"

namespace lx {

void registerMathFunctions(LibraryBuilder& /*b*/) {}

}  // namespace lx
