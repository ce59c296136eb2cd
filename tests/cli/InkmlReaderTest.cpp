#include "apps/cli/ink/InkReader.h"
#include "apps/cli/ink/InkmlTrace.h"
#include "tests/support/ToolInk.h"

namespace Tessera::Tool {
namespace {

using ::testing::HasSubstr;

Drawing Read(const std::string& body) {
    return ReadInkml("<ink xmlns=\"http://www.w3.org/2003/InkML\">" + body + "</ink>", "a");
}

std::string ReadText(const std::string& body) {
    return TextOf(Read(body));
}

std::string Refusal(const std::string& body) {
    return RefusalOf<InkError>([&] { Read(body); });
}

constexpr const char* kTimed = "<traceFormat><channel name='X' units='mm'/><channel name='Y' units='cm'/>"
                               "<channel name='T' units='s'/></traceFormat>";

// The first is the example of the recommendation, with the values that it says it stands for.
TEST(InkmlReader, DifferencesRepeatsAndHexadecimal) {
    EXPECT_EQ(ReadText("<trace>1125 18432,'23'43,\"7\"-8,3-5,7-3,6 2,6 8,3 6,2 4,5 3</trace>"),
              "1125,18432 1148,18475 1178,18510 1211,18540 1251,18567 1297,18596 1349,18633 1404,18676 "
              "1461,18723 1523,18773");
    EXPECT_EQ(ReadText("<trace>10 20, '1'2, 3 * , !50 !#1F, 51 32,</trace>"),
              "10,20 11,22 14,22 50,31 51,32");
}

TEST(InkmlReader, UnitsAndTimes) {
    EXPECT_EQ(ReadText(std::string(kTimed) + "<trace timeOffset='100'>1 2 0, 3 4 0.5</trace>"),
              "1,20@100 3,40@600");
    EXPECT_EQ(ReadText(std::string(kTimed) + "<trace>1 2 0, 3 4 0.5</trace>"), "1,20@0 3,40@500");
    EXPECT_EQ(Read("<trace>1 2, 3 4</trace>").strokes.at(0).samples[0].timeMs, 0.0);
}

TEST(InkmlReader, FormatsByContextGroupAndSource) {
    const std::string definitions =
        "<definitions>"
        "<traceFormat xml:id='f'><channel name='Y'/><channel name='F'/><channel name='X'/></traceFormat>"
        "<inkSource xml:id='pen'><traceFormat><channel name='X'/><channel name='Y'/><channel name='P'/>"
        "<intermittentChannels><channel name='S' "
        "default='7'/></intermittentChannels></traceFormat></inkSource>"
        "<context xml:id='c' traceFormatRef='#f'/><context xml:id='p' inkSourceRef='#pen'/>"
        "<context xml:id='q' contextRef='#p'/></definitions>";
    EXPECT_EQ(ReadText(definitions +
                       "<trace>1 2, 3 4</trace><trace contextRef='#c'>1 0 2, 3 0 4</trace>"
                       "<traceGroup contextRef='#q'><traceGroup><trace>5 6 0, 7 8 0 1</trace></traceGroup>"
                       "<trace contextRef='#c'>5 0 6, 7 0 8</trace></traceGroup>"
                       "<context traceFormatRef='#f'/><trace>9 0 10, 11 0 12</trace>"),
              "1,2 3,4 | 2,1 4,3 | 5,6 7,8 | 6,5 8,7 | 10,9 12,11");
}

TEST(InkmlReader, PenUpBrushesAndContinuation) {
    EXPECT_EQ(
        ReadText(
            "<definitions><brush xml:id='b'/></definitions><trace type='penUp'>0 0, 9 9</trace>"
            "<trace xml:id='t1' brushRef='#b' continuation='begin'>0 0, '1'1</trace>"
            "<trace>5 5, 6 6</trace><trace xml:id='t2' continuation='end' priorRef='#t1'>2 2, 3 3</trace>"),
        "0,0 1,1 3,3 6,6 | 5,5 6,6");
}

TEST(InkmlReader, Refusals) {
    EXPECT_THAT(Refusal("\n<trace>1 2, 3</trace>"),
                HasSubstr("line 2: trace 0, point 1: no value for channel Y"));
    EXPECT_THAT(Refusal("<trace>1 2 3</trace>"), HasSubstr("point 0: more values than channels"));
    EXPECT_THAT(Refusal("<trace>1 2, nan 3</trace>"), HasSubstr("point 1: \"nan\" is not a finite number"));
    EXPECT_THAT(Refusal("<trace>1 2, x 3</trace>"), HasSubstr("is not a number"));
    EXPECT_THAT(Refusal("<trace>1 2,, 3 4</trace>"), HasSubstr("point 1: no value"));
    EXPECT_THAT(Refusal("<trace contextRef='#no'>1 2</trace>"), HasSubstr("refers to nothing"));
    EXPECT_THAT(Refusal("<traceFormat><channel name='X'/></traceFormat>"), HasSubstr("channels X and Y"));
    EXPECT_THAT(Refusal("<trace>1e308 0, \"1e308 0, 1e308 0</trace>"), HasSubstr("not a finite number"));
    EXPECT_EQ(Refusal("<context xml:id='a' contextRef='#a'/><trace>0 0, 1 1</trace>"), "accepted");
}

} // namespace
} // namespace Tessera::Tool
