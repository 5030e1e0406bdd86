#include "builtins/families.h"

namespace lx {

void registerStringFunctions(LibraryBuilder& /*b*/) {}

}  // namespace lx
