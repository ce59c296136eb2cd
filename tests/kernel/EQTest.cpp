#include "tessera/kernel/EQ.h"

#include <gtest/gtest.h>

#include <limits>

#include "tessera/kernel/TOLER.h"

namespace {

TEST(EQ, ScaleFollowsTheCode) {
    EXPECT_DOUBLE_EQ(EQ_ask_length_tolerance(), 2.54e-9);
    EXPECT_DOUBLE_EQ(EQ_ask_length_squared_tolerance(), 6.4516e-18);
    EQ_set_MEC(2);
    EXPECT_DOUBLE_EQ(EQ_ask_length_tolerance(), 1e-10);
    EXPECT_DOUBLE_EQ(EQ_ask_length_squared_tolerance(), 1e-20);
    for (int code : {0, 3, -1})
        EQ_set_MEC(code);
    EXPECT_DOUBLE_EQ(EQ_ask_length_tolerance(), 1e-10);
    EQ_set_MEC(1);
    EXPECT_DOUBLE_EQ(EQ_ask_length_tolerance(), 2.54e-9);
}

TEST(TOLER, SettersRefuseWhatIsOutOfRange) {
    const double nan = std::numeric_limits<double>::quiet_NaN();
    EXPECT_EQ(TOLER_ask_distance_tol(), 0.01);
    EXPECT_EQ(TOLER_ask_angular_tol(), 0.5);
    for (double bad : {-1e-300, nan})
        EXPECT_FALSE(TOLER_set_distance_tol(bad));
    for (double bad : {0.0, 180.0, -1.0, nan})
        EXPECT_FALSE(TOLER_set_angular_tol(bad));
    EXPECT_EQ(TOLER_ask_distance_tol(), 0.01);
    EXPECT_EQ(TOLER_ask_angular_tol(), 0.5);
    EXPECT_TRUE(TOLER_set_distance_tol(0.0));
    EXPECT_EQ(TOLER_ask_distance_tol(), 0.0);
    for (double good : {1e-9, 179.999})
        EXPECT_TRUE(TOLER_set_angular_tol(good));
    EXPECT_EQ(TOLER_ask_angular_tol(), 179.999);
    TOLER_set_distance_tol(0.01);
    TOLER_set_angular_tol(0.5);
}

} // namespace
