#include "tessera/core/DisplayData.h"

#include "tests/support/Test.h"

namespace Tessera::Core {
namespace {

TEST(Color, TableNamesAndTheBoundsBesideThem) {
    const std::pair<Color, Color> rows[] = {
        {Color::LightGray(), {255, 211, 211, 211}}, {Color::Gray(), {255, 128, 128, 128}},
        {Color::Black(), {255, 0, 0, 0}},           {Color::Red(), {255, 255, 0, 0}},
        {Color::Green(), {255, 0, 128, 0}},         {Color::Blue(), {255, 0, 0, 255}},
        {Color::Brown(), {255, 165, 42, 42}},       {Color::Purple(), {255, 128, 0, 128}},
        {Color::DarkOrange(), {255, 255, 140, 0}},  {Color(), {255, 255, 255, 255}},
        {Color::LightBlue(), {255, 173, 216, 230}}, {Color::DarkCyan(), {255, 0, 139, 139}},
        {Color::Yellow(), {255, 255, 255, 0}},      {{0, 0, 0, 0}, {0, 0, 0, 0}}, // one past the names
    };
    for (int index = -1; index <= 14; ++index) {
        DisplayData data;
        data.SetColor(static_cast<ColorType_e>(index));
        const auto& [named, expected] = rows[index < 0 || index > 13 ? ColorType_Black : index];
        EXPECT_EQ(data.GetRGBColor(), expected) << index;
        EXPECT_EQ(named, expected) << index;
    }
    GetColorFromIntColor(3, nullptr); // no place for an answer
}

TEST(DisplayData, StartsVisibleBlackAndTwoWide) {
    const DisplayData data;
    EXPECT_TRUE(data.GetVisibility() && !data.GetHighlit());
    EXPECT_TRUE(data.GetWidth() == 2.0 && data.GetOpacity() == 1.0);
    EXPECT_EQ(data.GetRGBColor(), Color(255, 0, 0, 0));
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
