#include <gtest/gtest.h>

#include "kvtl.h"

TEST(Startup, VersionText) { EXPECT_STREQ(mdlgetversion(), "4.8.8"); }
