#include "apps/cli/RecognizeCommand.h"

#include <ostream>

#include "apps/cli/CommandRun.h"

namespace Tessera::Tool {

namespace {

class RecognizeOutput : public CommandOutput {
public:
    RecognizeOutput(const CommandLine& line, std::ostream& out)
        : options_(line.options), writer_(MakeWriter(line.format, out, line.showsGlyphs)) {}

    std::vector<StrokeProblem> Add(Drawing ink) override {
        const RecognizedDrawing drawing = RecognizeDrawing(std::move(ink), options_);
        writer_->Add(drawing);
        return ProblemsOf(drawing.strokes);
    }
    void Finish() override { writer_->Finish(); }

private:
    const RecognizeOptions& options_;
    std::unique_ptr<DrawingWriter> writer_;
};

} // namespace

int RunRecognize(const CommandLine& line, std::istream& in, std::ostream& out, std::ostream& err) {
    const auto makeOutput = [&](std::ostream& to) { return std::make_unique<RecognizeOutput>(line, to); };
    return RunCommand(line, makeOutput, in, out, err);
}

} // namespace Tessera::Tool
