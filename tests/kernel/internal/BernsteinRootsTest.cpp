#include "tessera/kernel/internal/BernsteinRoots.h"

#include "tests/support/Test.h"

namespace {

// Bernstein coefficients of the product of (t - r) over the roots.
std::vector<double> FromRoots(const std::vector<double>& roots) {
    std::vector<double> c = {1.0};
    for (const double r : roots) {
        const double factor[2] = {-r, 1.0 - r};
        std::vector<double> next(c.size() + 1);
        Bernstein::Product(c.data(), static_cast<int>(c.size()) - 1, factor, 1, next.data());
        c = next;
    }
    return c;
}

std::vector<double> SignChanges(const std::vector<double>& c, double noise = 0.0) {
    double out[Bernstein::kMaxCoefficients];
    const int n = Bernstein::SignChanges(c.data(), static_cast<int>(c.size()) - 1, noise, out);
    return {out, out + n};
}

TEST(BernsteinRoots, FindsEveryRootOfAProduct) {
    std::mt19937 rng(3);
    std::uniform_real_distribution<double> uniform(-0.5, 1.5);
    for (int trial = 0; trial < 300; ++trial) {
        SCOPED_TRACE(trial);
        std::vector<double> roots, inside;
        while (static_cast<int>(roots.size()) < 1 + trial % 8) {
            const double r = uniform(rng);
            const bool clear =
                std::all_of(roots.begin(), roots.end(), [r](double s) { return std::fabs(r - s) > 0.02; });
            if (clear && std::fabs(r) > 1e-6 && std::fabs(r - 1.0) > 1e-6)
                roots.push_back(r);
        }
        std::copy_if(roots.begin(), roots.end(), std::back_inserter(inside),
                     [](double r) { return r > 0 && r < 1; });
        std::sort(inside.begin(), inside.end());
        const std::vector<double> found = SignChanges(FromRoots(roots));
        ASSERT_EQ(found.size(), inside.size());
        for (std::size_t i = 0; i < found.size(); ++i)
            EXPECT_NEAR(found[i], inside[i], 1e-8);
    }
}

TEST(BernsteinRoots, MultipleAndHiddenRoots) {
    EXPECT_TRUE(SignChanges({1.0, 2.0, 0.5}).empty());
    EXPECT_EQ(SignChanges({-1.0, 1.0}), std::vector<double>{0.5});
    const std::vector<double> triple = SignChanges(FromRoots({0.3, 0.3, 0.3}), 1e-17);
    ASSERT_FALSE(triple.empty());
    for (const double t : triple)
        EXPECT_NEAR(t, 0.3, 1e-4);
    const std::vector<double> pair = SignChanges(FromRoots({0.6, 0.6 + 1e-6}));
    ASSERT_EQ(pair.size(), 2u);
    EXPECT_NEAR(pair[1] - pair[0], 1e-6, 1e-9);
    // An end that is zero to rounding is not the root that was asked for.
    const std::vector<double> flat = SignChanges({-1e-17, -3.0, -2.0, 5.0});
    ASSERT_EQ(flat.size(), 1u);
    EXPECT_NEAR(Bernstein::Value(std::vector<double>{0.0, -3.0, -2.0, 5.0}.data(), 3, flat[0]), 0.0, 1e-14);
    EXPECT_GT(flat[0], 0.5);
    // A root on the first cut of the bisection, others around it.
    const std::vector<double> cut = SignChanges(FromRoots({0.25, 0.5, 0.75}));
    ASSERT_EQ(cut.size(), 3u);
    EXPECT_NEAR(cut[1], 0.5, 1e-14);
}

TEST(BernsteinRoots, DerivativeAgreesWithDifferences) {
    const double f[] = {1, -2, 3, 0.5}, h = 1e-6;
    double slope[3];
    Bernstein::Derivative(f, 3, slope);
    for (double t = 0.0; t <= 1.0; t += 0.125)
        EXPECT_NEAR(Bernstein::Value(slope, 2, t),
                    (Bernstein::Value(f, 3, t + h) - Bernstein::Value(f, 3, t - h)) / (2 * h), 1e-8);
}

} // namespace
