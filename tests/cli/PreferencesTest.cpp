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
    for (const char* assignment :
         {"AskTangentAngleThreshold=40.5", "SegmentationScheme=1", "GetCurveTidy=false", "GetPageScale=2.5",
          "AskRelativeRecognitionTolerances=0.1,0.2,0.3,0.4", "AskCloseStrokeTolerances=7,0.25"})
        SetPreference(record, assignment);
    double relative[4], closing[2];
    record.AskRelativeRecognitionTolerances(relative);
    record.AskCloseStrokeTolerances(&closing[0], &closing[1]);
    EXPECT_THAT((std::vector{record.AskTangentAngleThreshold(), record.AskContextScale(), relative[0],
                             relative[3], closing[0], closing[1]}),
                ::testing::ElementsAre(40.5, 2.5, 0.1, 0.4, 7, 0.25));
    EXPECT_EQ(record.AskSegmentationScheme(), 1);
    EXPECT_FALSE(record.GetCurveTidy());
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
