#include "apps/cli/CommandRun.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <istream>
#include <iterator>
#include <ostream>
#include <set>

#include <unistd.h>

#include "apps/cli/ProgressBar.h"
#include "apps/cli/ink/InkReader.h"
#include "apps/cli/write/CurveText.h"

namespace Tessera::Tool {

namespace {

std::string ReadStream(std::istream& in) {
    return {std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
}

std::string ReadFile(const std::string& name) {
    if (std::filesystem::is_directory(name)) {
        throw InkError("is a directory");
    }
    std::ifstream file(name, std::ios::binary);
    if (!file) {
        throw InkError(std::strerror(errno));
    }
    std::string text = ReadStream(file);
    if (file.bad()) {
        throw InkError("cannot be read to its end");
    }
    return text;
}

const char* ExtensionOf(OutputFormat format) {
    switch (format) {
    case OutputFormat::Svg:
        return ".svg";
    case OutputFormat::Json:
    case OutputFormat::ScribbleJson:
        return ".json";
    case OutputFormat::Summary:
    case OutputFormat::ScribbleSummary:
        break;
    }
    return ".txt";
}

class CommandRun {
public:
    CommandRun(const CommandLine& line, const OutputMaker& makeOutput, std::istream& in, std::ostream& out,
               std::ostream& err)
        : line_(line), makeOutput_(makeOutput), in_(in), out_(out), err_(err),
          progress_(err, line.inputs.size(), ShowsProgress(line)) {
        const std::filesystem::path output = line.output;
        isDirectory_ =
            line.output != "-" && (!output.has_filename() || std::filesystem::is_directory(output));
    }

    int Run() {
        try {
            if (isDirectory_) {
                std::filesystem::create_directories(line_.output);
            }
            for (const std::string& input : line_.inputs) {
                RunFile(input);
                progress_.Advance();
            }
            CloseOutput();
        } catch (const std::exception& error) {
            Report(line_.output, error.what());
            status_ = kBadFile;
        }
        return status_;
    }

private:
    static bool ShowsProgress(const CommandLine& line) {
        return !line.isQuiet && line.inputs.size() > 1 && isatty(STDERR_FILENO) == 1;
    }

    /// One line, whatever the file or its name holds.
    void Report(const std::string& file, const std::string& message) {
        std::string line = (file == "-" ? "standard input" : file) + ": " + message;
        std::replace_if(
            line.begin(), line.end(), [](unsigned char c) { return c < ' ' || c == 0x7F; }, '?');
        progress_.Clear();
        err_ << "tessera: " << line << '\n';
    }

    void RunFile(const std::string& input) {
        InkFile file;
        try {
            file = ReadInk(input == "-" ? ReadStream(in_) : ReadFile(input), input);
        } catch (const InkError& error) {
            Report(input, error.what());
            status_ = kBadFile;
            return;
        }
        if (isDirectory_) {
            OpenOutput((std::filesystem::path(line_.output) / OutputName(input)).string());
        } else if (output_ == nullptr) { // only now: broken input leaves an older result alone
            OpenOutput(line_.output);
        }
        for (Drawing& drawing : file.drawings) {
            RunDrawing(input, std::move(drawing), file.isLines);
        }
        if (isDirectory_) {
            CloseOutput();
        }
    }

    /// The input's name with the output's extension, numbered when two inputs have the same.
    std::string OutputName(const std::string& input) {
        const std::string stem = input == "-" ? "stdin" : std::filesystem::path(input).stem().string();
        std::string name = stem + ExtensionOf(line_.format);
        for (int copy = 2; !names_.insert(name).second; ++copy) {
            name = stem + "-" + std::to_string(copy) + ExtensionOf(line_.format);
        }
        return name;
    }

    void RunDrawing(const std::string& input, Drawing drawing, bool isLine) {
        const auto tell = [&](const std::string& message) {
            status_ = std::max<int>(status_, kBadStroke);
            if (!line_.isQuiet) {
                Report(input, message);
            }
        };
        const std::string problem = drawing.problem;
        const std::string name = isLine ? IdText(drawing.id) + ", " : "";
        const std::vector<StrokeProblem> problems = output_->Add(std::move(drawing));
        if (!problem.empty()) {
            tell(problem);
            return;
        }
        for (const StrokeProblem& of : problems) {
            tell(name + "stroke " + std::to_string(of.stroke) + ": " + of.text);
        }
    }

    void OpenOutput(const std::string& name) {
        if (name == "-") {
            output_ = makeOutput_(out_);
            return;
        }
        file_.open(name, std::ios::binary | std::ios::trunc);
        if (!file_) {
            throw InkError(std::string("cannot be written: ") + std::strerror(errno));
        }
        output_ = makeOutput_(file_);
    }

    void CloseOutput() {
        if (output_ == nullptr) {
            return;
        }
        output_->Finish();
        output_.reset();
        const bool isGood = file_.is_open() ? file_.good() : out_.good();
        if (file_.is_open()) {
            file_.close();
        }
        if (!isGood) {
            throw InkError("cannot be written to its end");
        }
    }

    const CommandLine& line_;
    const OutputMaker& makeOutput_;
    std::istream& in_;
    std::ostream& out_;
    std::ostream& err_;
    ProgressBar progress_;
    bool isDirectory_ = false;
    std::ofstream file_;
    std::unique_ptr<CommandOutput> output_;
    std::set<std::string> names_;
    int status_ = kFine;
};

} // namespace

int RunCommand(const CommandLine& line, const OutputMaker& makeOutput, std::istream& in, std::ostream& out,
               std::ostream& err) {
    return CommandRun(line, makeOutput, in, out, err).Run();
}

} // namespace Tessera::Tool
