#include "builtins/families.h"

namespace lx {

void registerTypeFunctions(LibraryBuilder& /*b*/) {}

}  // namespace lx
