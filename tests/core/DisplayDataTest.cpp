#include "tessera/core/DisplayData.h"

#include <gtest/gtest.h>

#include <cmath>
#include <utility>

namespace Tessera::Core {
namespace {

TEST(Color, TableNamesAndTheBoundsBesideThem) {
    struct Row {
        int index;
        Color named, expected;
    };
    const Row rows[] = {
        {0, Color::LightGray(), {255, 211, 211, 211}},
        {1, Color::Gray(), {255, 128, 128, 128}},
        {2, Color::Black(), {255, 0, 0, 0}},
        {3, Color::Red(), {255, 255, 0, 0}},
        {4, Color::Green(), {255, 0, 128, 0}},
        {5, Color::Blue(), {255, 0, 0, 255}},
        {6, Color::Brown(), {255, 165, 42, 42}},
        {7, Color::Purple(), {255, 128, 0, 128}},
        {8, Color::DarkOrange(), {255, 255, 140, 0}},
        {9, Color(), {255, 255, 255, 255}},
        {10, Color::LightBlue(), {255, 173, 216, 230}},
        {11, Color::DarkCyan(), {255, 0, 139, 139}},
        {12, Color::Yellow(), {255, 255, 255, 0}},
        {13, {0, 0, 0, 0}, {0, 0, 0, 0}},
        {14, Color::Black(), {255, 0, 0, 0}},
        {-1, Color::Black(), {255, 0, 0, 0}},
    };
    for (const Row& row : rows) {
        DisplayData data;
        data.SetColor(static_cast<ColorType_e>(row.index));
        EXPECT_EQ(data.GetRGBColor(), row.expected) << row.index;
        EXPECT_EQ(row.named, row.expected) << row.index;
    }
    GetColorFromIntColor(3, nullptr); // no place for an answer
}

TEST(DisplayData, StartsVisibleBlackAndTwoWide) {
    const DisplayData data;
    EXPECT_TRUE(data.GetVisibility());
    EXPECT_FALSE(data.GetHighlit());
    EXPECT_EQ(data.GetWidth(), 2.0);
    EXPECT_EQ(data.GetRGBColor(), Color(255, 0, 0, 0));
    EXPECT_EQ(data.GetOpacity(), 1.0);
}

TEST(DisplayData, OpacityIsTruncatedAndNeverOverflows) {
    const std::pair<double, int> rows[] = {
        {0.5, 127},  {1.0, 255}, {0.999, 254},   {0.0039, 0},    {0.0, 0}, {-0.001, 0},
        {-1e300, 0}, {2.0, 510}, {257.0, 65535}, {1e300, 65535}, {NAN, 0}, {INFINITY, 65535},
    };
    for (const auto& [opacity, alpha] : rows) {
        DisplayData data;
        data.SetOpacity(opacity);
        EXPECT_EQ(data.GetRGBColor().alpha, alpha) << opacity;
        EXPECT_EQ(data.GetOpacity(), alpha / 255.0);
    }
}

} // namespace
} // namespace Tessera::Core
