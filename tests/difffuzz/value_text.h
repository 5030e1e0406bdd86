// A value as the fuzzer compares it: its kind, and for numbers how the number was made, in
// front of its text, so that "1" the String and 1 the Number never look alike. Arrays and the
// slots in them are spelled out element by element.
#pragma once

#include <string>

#include "lxbasic/value.h"
#include "lxbasic/variant.h"

namespace difffuzz {

std::string renderValue(const lx::Variant& value);
// A slot prints its value, marked when the slot is a constant.
std::string renderSlot(const lx::LxValue& slot);

// Temporaries are numbered from one counter for the whole process, so a message that names
// one ("Variable "____var_17 = 1" not found") differs from run to run; their numbers are
// replaced by "#" before texts are compared.
std::string withoutTemporaryNumbers(std::string text);

}  // namespace difffuzz
