#include "apps/cli/ink/InkReader.h"

#include "tests/support/ToolInk.h"

namespace Tessera::Tool {
namespace {

std::string ReadText(const std::string& content, const std::string& name = "ink") {
    return TextOf(ReadInk(content, name).drawings.at(0));
}

std::string Refusal(const std::string& content, const std::string& name = "ink") {
    return RefusalOf<InkError>([&] { ReadInk(content, name); });
}

TEST(InkReader, KindsByContent) {
    const struct {
        const char* content;
        const char* name;
        InkFormat format;
    } rows[] = {
        {"<?xml version='1.0'?><!-- x --><ink/>", "a.svg", InkFormat::InkML},
        {"<inkml:ink xmlns:inkml='u'/>", "a", InkFormat::InkML},
        {" \n<svg/>", "a.inkml", InkFormat::Svg},
        {"{\"points\": []}", "a.csv", InkFormat::Json},
        {"{\n\"points\": []\n}", "a", InkFormat::Json},
        {"{\"strokes\": [\n{\"points\": []}\n]}", "a", InkFormat::Json},
        {"{\"points\": []}", "a.ndjson", InkFormat::JsonLines},
        {"{\"points\": []}\n{\"points\": []}", "a.json", InkFormat::JsonLines},
        {"{\"points\": []\n{\"points\": []}", "a", InkFormat::JsonLines}, // its first line is broken
        {"[[0,0],\n[1,1]]", "a", InkFormat::Json},
        {"\xEF\xBB\xBF{}", "a", InkFormat::Json},
        {"0,0\n1,1", "a.json", InkFormat::Csv},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.content);
        EXPECT_EQ(SniffInkFormat(row.content, row.name), row.format);
    }
}

TEST(InkReader, JsonForms) {
    EXPECT_EQ(ReadText(R"({"points":[[0,1],[2,3.5]]})"), "0,1 2,3.5");
    EXPECT_EQ(ReadText(R"({"points":[[0,1,5],[2,3,9.5]]})"), "0,1@5 2,3@9.5");
    EXPECT_EQ(ReadText(R"({"points":[[0,1,5],[2,3]]})"), "0,1 2,3"); // a time is missing: none is of use
    EXPECT_EQ(ReadText(R"({"points":[{"x":0,"y":1},{"x":2,"y":3}]})"), "0,1 2,3");
    EXPECT_EQ(ReadText(R"({"strokes":[{"points":[[0,0],[1,1]]},[[2,2],[3,3]]]})"), "0,0 1,1 | 2,2 3,3");
    EXPECT_EQ(ReadText(R"({"strokes":1,"points":[[0,0],[1,1]]})"), "0,0 1,1");
    EXPECT_EQ(ReadText("[[0,0],[1,1]]"), "0,0 1,1");
    EXPECT_EQ(ReadText("[[[0,0],[1,1]],[[2,2],[3,3]]]"), "0,0 1,1 | 2,2 3,3");
    EXPECT_EQ(ReadInk(R"({"id":17,"points":[[0,0],[1,1]]})", "a").drawings[0].id, 17);
    EXPECT_EQ(ReadInk(R"({"points":[[0,0],[1,1]]})", "dir/a.json").drawings[0].id, "a");
}

TEST(InkReader, CsvForms) {
    EXPECT_EQ(ReadText("0,0\n1,1\n\n\n2,2\r\n3,3\r\n"), "0,0 1,1 | 2,2 3,3");
    EXPECT_EQ(ReadText("0;0;10\n1;1;20"), "0,0@10 1,1@20");
    EXPECT_EQ(ReadText("0 0\n  1\t1"), "0,0 1,1");
    EXPECT_EQ(ReadText("0,0,1,a\n1,1,2,a\n5,5,3,b\n6,6,4,b"), "0,0@1 1,1@2 | 5,5@3 6,6@4");
    EXPECT_EQ(ReadText("# made\nStroke,T_s,Y,X\n1,0.5,10,20\n1,0.75,11,21\n"), "20,10@500 21,11@750");
    EXPECT_EQ(ReadText("+1e1,-.5\n2.,3"), "10,-0.5 2,3");
}

TEST(InkReader, RefusalsNameThePlace) {
    const struct {
        const char* content;
        const char* message;
    } rows[] = {
        {"", "the file is empty"},
        {" \r\n\t", "the file is empty"},
        {"<html/>", "neither an InkML nor an SVG document"},
        {"0,0\n1,nan\n", "line 2: \"nan\" is not a finite number"},
        {"nan,0\n", "line 1: \"nan\" is not a finite number"},
        {"0,0\n\n1,1e999\n", "line 3: \"1e999\" is not a finite number"},
        {"0,0\n1\n", "line 2: fewer than two columns"},
        {"0,0\n1,two\n", "line 2: y \"two\" is not a number"},
        {"\x89PNG\r\n", "line 1: fewer than two columns"},
        {"a,b\n1,2\n", "line 1: neither numbers nor a header with the columns x and y"},
        {R"({"id":"a"})", "neither \"points\" nor \"strokes\" found"},
        {R"({"points":[[0,0],[1,"a"]]})", "no usable stroke; stroke 0: point 1: y is not a number"},
        {R"({"points":[[0,0],[null,1]]})", "no usable stroke; stroke 0: point 1: x is not a number"},
        {R"({"points":[[3,3]]})", "no usable stroke; stroke 0: fewer than two points"},
        {R"({"points":[[3,3],[3,3]]})", "no usable stroke; stroke 0: all points in one place"},
        {R"({"strokes":[]})", "no strokes found"},
        {"<svg><path d='M0 0'/></svg>", "no strokes found"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.content);
        EXPECT_EQ(Refusal(row.content), row.message);
    }
    EXPECT_NE(Refusal("{\"points\":[[0,0],[NaN,1]]}").find("line 1, column"), std::string::npos);
    EXPECT_NE(Refusal("{\"points\":[[0,0],[1e999,1]]}"), "accepted");
    EXPECT_NE(Refusal("<ink>\n<trace>0 0, 1 1</trace>\n").find("line "), std::string::npos);
}

TEST(InkReader, BadStrokesStandBesideGoodOnes) {
    const Drawing drawing =
        ReadInk(R"({"strokes":[[[0,0],[1,1]],[[5,5]],[[0,0],["a",1]],7]})", "a").drawings[0];
    ASSERT_EQ(drawing.strokes.size(), 4U);
    EXPECT_EQ(drawing.problem, "");
    EXPECT_EQ(drawing.strokes[0].problem, "");
    EXPECT_EQ(drawing.strokes[1].problem, "fewer than two points");
    EXPECT_EQ(drawing.strokes[2].problem, "point 1: x is not a number");
    EXPECT_EQ(drawing.strokes[3].problem, "no array of points");
}

TEST(InkReader, EveryJsonLineKeepsItsPlace) {
    const InkFile file = ReadInk("{\"id\":\"a\",\"points\":[[0,0],[1,1]]}\n\n{broken\n"
                                 "{\"points\":[[0,0]]}\n{\"id\":5,\"points\":[[0,0],[2,2]]}",
                                 "set.ndjson");
    EXPECT_TRUE(file.isLines);
    ASSERT_EQ(file.drawings.size(), 4U);
    EXPECT_EQ(file.drawings[0].id, "a");
    EXPECT_EQ(file.drawings[1].problem.substr(0, 8), "line 3: ");
    EXPECT_EQ(file.drawings[2].id, "set:4");
    EXPECT_FALSE(file.drawings[2].problem.empty());
    EXPECT_EQ(file.drawings[3].id, 5);
    EXPECT_EQ(file.drawings[3].problem, "");
}

} // namespace
} // namespace Tessera::Tool
