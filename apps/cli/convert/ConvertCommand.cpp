#include "apps/cli/convert/ConvertCommand.h"

#include <ostream>

#include "apps/cli/CommandRun.h"
#include "apps/cli/convert/ConvertDrawing.h"
#include "apps/cli/convert/ConvertedWriter.h"

namespace Tessera::Tool {

namespace {

ConvertOptions OptionsOf(const CommandLine& line) {
    ConvertOptions options{line.options.preferences, line.options.inkScale, line.options.constraintKinds,
                           line.toleranceZone};
    if (!line.options.useScribbles) {
        options.preferences.SetDoScribble(false);
    }
    return options;
}

class ConvertOutput : public CommandOutput {
public:
    ConvertOutput(const CommandLine& line, std::ostream& out)
        : options_(OptionsOf(line)),
          writer_(line.format == OutputFormat::Summary ? MakeConvertedSummaryWriter(out)
                                                       : MakeConvertedJsonWriter(out)) {}

    std::vector<StrokeProblem> Add(Drawing ink) override {
        const ConvertedDrawing drawing = ConvertDrawing(ink, options_);
        writer_->Add(drawing);
        return ProblemsOf(drawing.strokes);
    }
    void Finish() override { writer_->Finish(); }

private:
    ConvertOptions options_;
    std::unique_ptr<ConvertedWriter> writer_;
};

} // namespace

int RunConvert(const CommandLine& line, std::istream& in, std::ostream& out, std::ostream& err) {
    const auto makeOutput = [&](std::ostream& to) { return std::make_unique<ConvertOutput>(line, to); };
    return RunCommand(line, makeOutput, in, out, err);
}

} // namespace Tessera::Tool
