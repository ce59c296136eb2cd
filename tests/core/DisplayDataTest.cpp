#include "tessera/core/DisplayData.h"

#include <gtest/gtest.h>

#include <cmath>
#include <utility>

namespace Tessera::Core {
namespace {

TEST(Color, TableRowsAndTheBoundsBesideThem) {
    const std::pair<int, Color> rows[] = {
        {0, {255, 211, 211, 211}}, {1, {255, 128, 128, 128}},  {2, {255, 0, 0, 0}},
        {3, {255, 255, 0, 0}},     {4, {255, 0, 128, 0}},      {5, {255, 0, 0, 255}},
        {6, {255, 165, 42, 42}},   {7, {255, 128, 0, 128}},    {8, {255, 255, 140, 0}},
        {9, {255, 255, 255, 255}}, {10, {255, 173, 216, 230}}, {11, {255, 0, 139, 139}},
        {12, {255, 255, 255, 0}},  {13, {0, 0, 0, 0}},         {14, {255, 0, 0, 0}},
        {-1, {255, 0, 0, 0}},
    };
    for (const auto& [index, expected] : rows) {
        Color color(1, 2, 3, 4);
        GetColorFromIntColor(index, &color);
        EXPECT_EQ(color, expected) << index;
    }
}

TEST(Color, NamesAgreeWithTheTable) {
    const std::pair<ColorType_e, Color> rows[] = {
        {ColorType_LightGray, Color::LightGray()},
        {ColorType_Gray, Color::Gray()},
        {ColorType_Black, Color::Black()},
        {ColorType_Red, Color::Red()},
        {ColorType_Green, Color::Green()},
        {ColorType_Blue, Color::Blue()},
        {ColorType_Brown, Color::Brown()},
        {ColorType_Purple, Color::Purple()},
        {ColorType_White, Color()},
        {ColorType_DarkOrange, Color::DarkOrange()},
        {ColorType_LightBlue, Color::LightBlue()},
        {ColorType_DarkCyan, Color::DarkCyan()},
        {ColorType_Yellow, Color::Yellow()},
    };
    for (const auto& [type, named] : rows) {
        DisplayData data;
        data.SetColor(type);
        EXPECT_EQ(data.GetRGBColor(), named) << type;
    }
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
