#include "tessera/kernel/EQ.h"

#include "tessera/kernel/TOLER.h"
#include "tests/support/Test.h"

namespace {

TEST(EQ, ScaleFollowsTheCode) {
    for (const auto& [code, tolerance] :
         {std::pair{3, 2.54e-9}, {2, 1e-10}, {0, 1e-10}, {3, 1e-10}, {-1, 1e-10}, {1, 2.54e-9}}) {
        EQ_set_MEC(code); // other codes change nothing
        EXPECT_DOUBLE_EQ(EQ_ask_length_tolerance(), tolerance) << code;
        EXPECT_DOUBLE_EQ(EQ_ask_length_squared_tolerance(), tolerance * tolerance) << code;
    }
}

TEST(TOLER, SettersRefuseWhatIsOutOfRange) {
    for (const double bad : {-1e-300, std::nan("")})
        EXPECT_FALSE(TOLER_set_distance_tol(bad));
    for (const double bad : {0.0, 180.0, -1.0, std::nan("")})
        EXPECT_FALSE(TOLER_set_angular_tol(bad));
    EXPECT_TRUE(TOLER_ask_distance_tol() == 0.01 && TOLER_ask_angular_tol() == 0.5);
    EXPECT_TRUE(TOLER_set_distance_tol(0.0) && TOLER_ask_distance_tol() == 0.0);
    for (const double good : {1e-9, 179.999})
        EXPECT_TRUE(TOLER_set_angular_tol(good) && TOLER_ask_angular_tol() == good);
    TOLER_set_distance_tol(0.01);
    TOLER_set_angular_tol(0.5);
}

} // namespace
