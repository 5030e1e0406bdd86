#include "builtins/families.h"

namespace lx {

void registerFormatFunctions(LibraryBuilder& /*b*/) {}

}  // namespace lx
