#include <gtest/gtest.h>

#include "lxbasic/text.h"
#include "lxbasic/variant.h"

TEST(Variant, placeholder) { EXPECT_EQ(lx::toText(lx::Variant()), u"(null)"); }
