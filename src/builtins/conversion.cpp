#include "builtins/families.h"

namespace lx {

void registerConversionFunctions(LibraryBuilder& /*b*/) {}

}  // namespace lx
