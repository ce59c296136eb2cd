#include "apps/cli/recognize/Preferences.h"

#include "tests/support/ToolInk.h"

namespace Tessera::Tool {
namespace {

using Record = Geometry::SketchRecognizerPreferences;

std::string Refusal(const std::string& assignment) {
    return RefusalOf<PreferenceError>([&] {
        Record record;
        SetPreference(record, assignment);
    });
}

TEST(Preferences, EveryKindOfValue) {
    Record record;
    SetPreference(record, "AskTangentAngleThreshold=40.5");
    EXPECT_EQ(record.AskTangentAngleThreshold(), 40.5);
    SetPreference(record, "SegmentationScheme=1");
    EXPECT_EQ(record.AskSegmentationScheme(), 1);
    SetPreference(record, "GetCurveTidy=false");
    EXPECT_FALSE(record.GetCurveTidy());
    SetPreference(record, "GetPageScale=2.5");
    EXPECT_EQ(record.AskContextScale(), 2.5);
    SetPreference(record, "AskRelativeRecognitionTolerances=0.1,0.2,0.3,0.4");
    double tolerances[4];
    record.AskRelativeRecognitionTolerances(tolerances);
    EXPECT_EQ(tolerances[0], 0.1);
    EXPECT_EQ(tolerances[3], 0.4);
    SetPreference(record, "AskCloseStrokeTolerances=7,0.25");
    double absolute = 0.0, relative = 0.0;
    record.AskCloseStrokeTolerances(&absolute, &relative);
    EXPECT_EQ(absolute, 7.0);
    EXPECT_EQ(relative, 0.25);
}

TEST(Preferences, RefusalsAreTheSettersMessages) {
    EXPECT_EQ(Refusal("AskTangentAngleThreshold=0"), "Invalid tangent angle threshold specified");
    EXPECT_EQ(Refusal("AskTangentAngleThreshold=nan"), "Invalid tangent angle threshold specified");
    EXPECT_EQ(Refusal("AskSegmentationScheme=3"), "Invalid segmentation scheme specified");
    EXPECT_EQ(Refusal("AskRelativeRecognitionTolerances=1,1,1,1"), "Invalid relative tolerance specified");
    EXPECT_EQ(Refusal("AskNothing=1"), "unknown preference \"AskNothing\"");
    EXPECT_EQ(Refusal("AskSnapping"), "\"AskSnapping\" is not of the form NAME=VALUE");
    EXPECT_EQ(Refusal("AskSnapping=maybe"), "AskSnapping: \"maybe\" is not true or false");
    EXPECT_EQ(Refusal("AskSegmentationScheme=1.5"), "AskSegmentationScheme: \"1.5\" is not an integer");
    EXPECT_EQ(Refusal("AskSpeed1Ratio=half"), "AskSpeed1Ratio: \"half\" is not a number");
    EXPECT_EQ(Refusal("AskCloseStrokeTolerances=1"),
              "AskCloseStrokeTolerances takes 2 values separated by commas, not 1");
}

// Every line of the list can be given back as it stands and changes nothing; a changed value shows.
TEST(Preferences, ListedValuesSetThemselves) {
    const std::vector<std::string> list = ListPreferences();
    EXPECT_EQ(list.size(), 41U); // 40 fields, the four pairs of tolerances being two lines
    for (const std::string& line : list)
        EXPECT_EQ(Refusal(line), "accepted") << line;
}

} // namespace
} // namespace Tessera::Tool
