#include "apps/cli/CommandLine.h"

#include <charconv>
#include <cmath>
#include <filesystem>
#include <ostream>

#include <unistd.h>

#include <CLI/CLI.hpp>

#include "apps/cli/recognize/Constraints.h"
#include "apps/cli/recognize/Preferences.h"

namespace Tessera::Tool {

namespace {

struct RawOptions {
    CommandLine line;
    std::string format;
    std::string inkScale = "auto";
    std::optional<std::string> toleranceZone;
    std::vector<std::string> preferences;
    std::vector<std::string> dimensions;
    std::vector<std::string> constraints;
    bool hasNoScribbles = false;
    bool hasNoConstraints = false;
    bool hasNoGlyphs = false;
};

std::string RecognizeFooter() {
    std::string text =
        "Ink is read from InkML, JSON, NDJSON (one drawing a line), CSV and SVG files; the kind is known by\n"
        "the content. JSON strokes are {\"points\": [[x, y], ...]} or [[x, y, milliseconds], ...], several "
        "of\n"
        "them under \"strokes\"; CSV lines are x,y[,milliseconds[,stroke]], a blank line begins a stroke.\n\n"
        "Exit status: 0 all well; 1 a stroke could not be used, the others were; 2 a file could not be\n"
        "used, or a mistake on the command line.\n\n"
        "Examples:\n"
        "  tessera recognize sketch.inkml -o sketch.svg\n"
        "  tessera recognize --to json strokes.ndjson > curves.ndjson\n"
        "  tessera recognize -o pictures/ *.json\n"
        "  tessera recognize --no-scribble hatching.svg\n"
        "  tessera recognize --constraints horizontal,vertical,tangent sketch.inkml -o sketch.svg\n"
        "  tessera recognize --dimension length,angular,radial sketch.inkml -o sketch.svg\n"
        "  tessera recognize --preference AskTangentAngleThreshold=40 sketch.inkml\n\n"
        "Preferences and their defaults (lengths at the size that --ink-scale brings the ink to):\n";
    for (const std::string& preference : ListPreferences()) {
        text += "  " + preference + "\n";
    }
    return text;
}

/// An option for a list, which takes one text each time it is given: what follows is no part of it.
CLI::Option* AddList(CLI::App& command, const char* name, const char* type, const std::string& help,
                     std::vector<std::string>& values) {
    return command
        .add_option(name, values, help + "; several values are separated by commas; may be repeated")
        ->type_name(type)
        ->take_all()
        ->expected(1)
        ->allow_extra_args(false);
}

/// What every command takes.
void DefineCommon(CLI::App& command, const std::vector<std::string>& formats, const std::string& formatHelp,
                  RawOptions& raw) {
    command.add_option("INPUT", raw.line.inputs, "Ink files; - is standard input")->required();
    command.add_option("-o,--output", raw.line.output,
                       "File to write, - for standard output (default), or a directory (with a / at its end) "
                       "that gets one file for each input");
    command.add_option("--to", raw.format, formatHelp)->check(CLI::IsMember(formats));
    AddList(command, "--preference", "NAME=VALUE",
            "Setting of the recogniser by the name of its getter, as in AskTangentAngleThreshold=40",
            raw.preferences);
    command
        .add_option(
            "--ink-scale", raw.inkScale,
            "auto (default) brings each drawing to the size of a page, 1000 units along its diagonal, "
            "at which the distances among the preferences are right; a number multiplies the ink's "
            "coordinates instead; results come back in ink units either way")
        ->type_name("auto|NUMBER");
    command.add_flag("--quiet", raw.line.isQuiet, "No progress bar and no reports of single strokes");
}

void DefineRules(CLI::App& command, RawOptions& raw) {
    command.add_flag(
        "--rules-only", raw.line.options.useRulesOnly,
        "Let the recogniser's rules read each stroke by itself, without asking what was meant: on "
        "cleaned and resampled ink at the size at which they work, or with a number after --ink-scale "
        "on the samples as they are");
}

/// Scribbles and constraints, which erase and move what strokes have become.
void DefineEdits(CLI::App& command, const char* constraintHelp, RawOptions& raw) {
    command.add_flag("--no-scribble", raw.hasNoScribbles,
                     "Read every stroke as geometry; without this a scribble erases what it covers of the "
                     "strokes before it");
    CLI::Option* constraints =
        AddList(command, "--constraints", "all|KIND,...",
                "Kinds of constraints to infer and to satisfy, by default all: " + ListConstraintKinds(),
                raw.constraints);
    command.add_flag("--no-constraints", raw.hasNoConstraints, constraintHelp)->excludes(constraints);
}

void DefineRecognize(CLI::App& command, RawOptions& raw) {
    DefineCommon(command, {"svg", "json", "summary"},
                 "svg, json or summary; by default what the name after -o tells, summary on standard output",
                 raw);
    DefineRules(command, raw);
    DefineEdits(command, "Infer no constraints: the curves of each stroke stay as they were read", raw);
    command.get_option("--rules-only")->excludes(command.get_option("--constraints"));
    command.add_flag("--no-glyphs", raw.hasNoGlyphs, "Leave the glyphs of constraints out of pictures");
    AddList(
        command, "--dimension", "all|KIND,...",
        "Annotate pictures and JSON with dimensions: length, horizontal and vertical of each line, angular "
        "at corners, radial of arcs and circles, linear between parallel lines of a stroke",
        raw.dimensions);
    command.footer(RecognizeFooter());
}

void DefineScribble(CLI::App& command, RawOptions& raw) {
    DefineCommon(command, {"json", "summary"},
                 "json or summary; by default what the name after -o tells, summary on standard output", raw);
    DefineRules(command, raw);
    command.footer("Ink files, preferences and exit status are those of \"tessera recognize --help\".\n\n"
                   "Examples:\n"
                   "  tessera scribble sketch.inkml\n"
                   "  tessera scribble --to json strokes.ndjson > scribbles.ndjson\n"
                   "  tessera scribble --preference GetMinNumCusps=5 sketch.inkml\n");
}

void DefineConvert(CLI::App& command, RawOptions& raw) {
    DefineCommon(command, {"json", "summary"}, "json, the default, or summary, the default on a terminal",
                 raw);
    DefineEdits(command, "Create no constraints", raw);
    command
        .add_option("--tolerance-zone", raw.toleranceZone,
                    "Pick radius of the host's view, at the size that --ink-scale brings the ink to: points "
                    "this far apart may be joined, and constraints move nothing as far; 10 by default")
        ->type_name("NUMBER");
    command.footer(
        "Each drawing has a document of its own: its strokes go into it one after the other, in drawing\n"
        "order, each by one call of ConvertInkingStrokeToGeometry. The document has the size that\n"
        "--ink-scale brings the ink to, its view the zoom of GetZoomFactor; what it holds is told in ink "
        "units.\n"
        "Failures that the library reports (HRerrEx) are told as problems of the stroke.\n\n"
        "Ink files, preferences and exit status are those of \"tessera recognize --help\".\n\n"
        "Examples:\n"
        "  tessera convert sketch.inkml -o document.json\n"
        "  tessera convert --to summary sketch.inkml\n"
        "  tessera convert --no-constraints --preference AskSnapping=false sketch.inkml\n");
}

OutputFormat ChooseFormat(const RawOptions& raw) {
    const std::filesystem::path output = raw.line.output;
    const std::string extension = output.extension().string();
    const bool isDirectory = !output.has_filename() || std::filesystem::is_directory(output);
    const bool isJsonName = extension == ".json" || extension == ".ndjson" || extension == ".jsonl";
    const bool isJson = raw.format == "json" || (raw.format.empty() && isJsonName);
    if (raw.line.command == Command::Convert) {
        const bool isRead = raw.line.output == "-" && isatty(STDOUT_FILENO) == 1;
        return raw.format == "summary" || (raw.format.empty() && isRead) ? OutputFormat::Summary
                                                                         : OutputFormat::Json;
    }
    if (raw.line.command == Command::Scribble) {
        return isJson ? OutputFormat::ScribbleJson : OutputFormat::ScribbleSummary;
    }
    if (raw.format == "svg" ||
        (raw.format.empty() && (extension == ".svg" || (isDirectory && output != "-")))) {
        return OutputFormat::Svg;
    }
    if (isJson) {
        return OutputFormat::Json;
    }
    return OutputFormat::Summary;
}

/// Nothing when the text is no number above 0.
std::optional<double> ParsePositive(const std::string& text) {
    const char* end = text.data() + text.size();
    double value = 0.0;
    const auto [rest, error] = std::from_chars(text.data(), end, value);
    const bool isPositive = error == std::errc() && rest == end && std::isfinite(value) && value > 0.0;
    return isPositive ? std::optional(value) : std::nullopt;
}

/// The message of what is wrong with the values, or nothing.
std::string CompleteOptions(RawOptions& raw) {
    if (raw.inkScale != "auto" && !(raw.line.options.inkScale = ParsePositive(raw.inkScale))) {
        return "--ink-scale takes auto or a number above 0, not \"" + raw.inkScale + "\"";
    }
    if (raw.toleranceZone && !(raw.line.toleranceZone = ParsePositive(*raw.toleranceZone))) {
        return "--tolerance-zone takes a number above 0, not \"" + *raw.toleranceZone + "\"";
    }
    try {
        for (const std::string& preference : raw.preferences) {
            SetPreference(raw.line.options.preferences, preference);
        }
        for (const std::string& names : raw.dimensions) {
            const DimensionKinds kinds = ParseDimensionKinds(names);
            std::vector<Dimension::DimensionType_e>& all = raw.line.options.dimensions;
            all.insert(all.end(), kinds.begin(), kinds.end());
        }
        std::uint32_t& chosen = raw.line.options.constraintKinds;
        if (raw.line.command == Command::Scribble || raw.hasNoConstraints || !raw.constraints.empty()) {
            chosen = 0;
        }
        for (const std::string& names : raw.constraints) {
            chosen |= ParseConstraintKinds(names);
        }
    } catch (const std::exception& error) {
        return error.what();
    }
    raw.line.options.useScribbles = !raw.hasNoScribbles;
    raw.line.showsGlyphs = !raw.hasNoGlyphs;
    raw.line.format = ChooseFormat(raw);
    return {};
}

} // namespace

std::optional<CommandLine> ParseCommandLine(int argc, const char* const* argv, std::ostream& out,
                                            std::ostream& err, int& status) {
    RawOptions raw;
    CLI::App app("Turns pen strokes into lines, arcs, circles, ellipses and B-splines.", "tessera");
    app.set_version_flag("--version", "tessera " TESSERA_VERSION);
    app.require_subcommand(1);
    app.footer(
        "Run \"tessera recognize --help\", \"tessera scribble --help\" or \"tessera convert --help\" for "
        "their options.");
    DefineRecognize(*app.add_subcommand("recognize", "Recognise the geometry in ink files"), raw);
    CLI::App* scribble =
        app.add_subcommand("scribble", "Tell which strokes are scribbles, and what they erase");
    DefineScribble(*scribble, raw);
    CLI::App* convert = app.add_subcommand(
        "convert", "Draw ink into a host's document and tell its elements and constraints");
    DefineConvert(*convert, raw);
    try {
        app.parse(argc, argv);
    } catch (const CLI::ParseError& error) {
        status = app.exit(error, out, err) == 0 ? kFine : kBadFile;
        return std::nullopt;
    }
    raw.line.command = scribble->parsed()  ? Command::Scribble
                       : convert->parsed() ? Command::Convert
                                           : Command::Recognize;
    if (const std::string mistake = CompleteOptions(raw); !mistake.empty()) {
        err << "tessera: " << mistake << '\n';
        status = kBadFile;
        return std::nullopt;
    }
    return raw.line;
}

} // namespace Tessera::Tool
