#include "builtins/families.h"

namespace lx {

void registerArrayFunctions(LibraryBuilder& /*b*/) {}

}  // namespace lx
