// CSV: x,y or x,y,t (milliseconds) or x,y,t,stroke a line; separators are comma, semicolon, tab or blanks. A
// header line may name the columns in another order; a blank line or a new value in the stroke column begins
// a stroke; lines that begin with # are comments.

#include "apps/cli/ink/InkReader.h"
#include "apps/cli/ink/NumberText.h"

#include <array>
#include <cctype>

namespace Tessera::Tool {

namespace {

constexpr int kNone = -1;

struct Columns {
    int x = 0;
    int y = 1;
    int time = 2;
    int stroke = 3;
    double timeUnitMs = 1.0;
};

std::string_view Trim(std::string_view text) {
    const std::size_t first = text.find_first_not_of(" \t\r\"");
    return first == std::string_view::npos ? std::string_view()
                                           : text.substr(first, text.find_last_not_of(" \t\r\"") - first + 1);
}

/// Separators: the first of `,`, `;` and tab that occurs, else runs of blanks.
void SplitFields(std::string_view line, std::vector<std::string_view>& fields) {
    fields.clear();
    for (const char separator : {',', ';', '\t'}) {
        if (line.find(separator) == std::string_view::npos) {
            continue;
        }
        for (std::size_t start = 0; start <= line.size();) {
            const std::size_t end = std::min(line.find(separator, start), line.size());
            fields.push_back(Trim(line.substr(start, end - start)));
            start = end + 1;
        }
        return;
    }
    for (std::size_t start = line.find_first_not_of(' '); start < line.size();) {
        const std::size_t end = std::min(line.find(' ', start), line.size());
        fields.push_back(Trim(line.substr(start, end - start)));
        start = line.find_first_not_of(' ', end);
    }
}

bool IsHeader(const std::vector<std::string_view>& fields) {
    const std::string_view first = fields.front();
    return !first.empty() && std::isalpha(static_cast<unsigned char>(first.front())) != 0 && first != "nan" &&
           first != "NaN" && first != "inf" && first != "Inf";
}

std::string Lower(std::string_view text) {
    std::string lower(text);
    for (char& c : lower) {
        c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    }
    return lower;
}

Columns ReadHeader(const std::vector<std::string_view>& fields) {
    Columns columns{kNone, kNone, kNone, kNone, 1.0};
    for (std::size_t i = 0; i < fields.size(); ++i) {
        const std::string name = Lower(fields[i]);
        const int index = static_cast<int>(i);
        if (name == "x") {
            columns.x = index;
        } else if (name == "y") {
            columns.y = index;
        } else if (name == "t" || name == "t_ms" || name == "time" || name == "time_ms" || name == "ms") {
            columns.time = index;
        } else if (name == "t_s" || name == "time_s" || name == "s" || name == "seconds") {
            columns.time = index;
            columns.timeUnitMs = 1000.0;
        } else if (name == "stroke" || name == "stroke_id" || name == "trace") {
            columns.stroke = index;
        }
    }
    if (columns.x == kNone || columns.y == kNone) {
        throw InkError("neither numbers nor a header with the columns x and y");
    }
    return columns;
}

double NumberIn(std::string_view field, const char* what) {
    std::string_view rest = field;
    const std::optional<double> value = TakeNumber(rest);
    if (!value || !rest.empty()) {
        throw InkError(std::string(what) + " \"" + std::string(field.substr(0, 40)) + "\" is not a number");
    }
    return *value;
}

class CsvBuilder {
public:
    explicit CsvBuilder(Drawing& drawing) : drawing_(drawing) {}

    void ReadLine(std::string_view line) {
        if (Trim(line).empty()) {
            isNewStroke_ = true;
            return;
        }
        if (Trim(line).front() == '#') {
            return;
        }
        SplitFields(line, fields_);
        if (!hasColumns_) {
            hasColumns_ = true;
            if (IsHeader(fields_)) {
                columns_ = ReadHeader(fields_);
                return;
            }
        }
        AddSample();
    }

private:
    bool Has(int column) const { return column != kNone && column < static_cast<int>(fields_.size()); }

    void AddSample() {
        if (!Has(columns_.x) || !Has(columns_.y)) {
            throw InkError("fewer than two columns");
        }
        Sample sample{NumberIn(fields_[columns_.x], "x"), NumberIn(fields_[columns_.y], "y"), 0.0};
        const bool isTimed = Has(columns_.time) && !fields_[columns_.time].empty();
        if (isTimed) {
            sample.timeMs = columns_.timeUnitMs * NumberIn(fields_[columns_.time], "t");
        }
        const std::string_view stroke = Has(columns_.stroke) ? fields_[columns_.stroke] : std::string_view();
        if (isNewStroke_ || stroke != stroke_) {
            drawing_.strokes.emplace_back().isTimed = true;
            isNewStroke_ = false;
            stroke_ = stroke;
        }
        InkStroke& current = drawing_.strokes.back();
        current.isTimed = current.isTimed && isTimed;
        current.samples.push_back(sample);
    }

    Drawing& drawing_;
    Columns columns_;
    bool hasColumns_ = false;
    bool isNewStroke_ = true;
    std::string stroke_;
    std::vector<std::string_view> fields_;
};

} // namespace

Drawing ReadCsv(std::string_view text, const std::string& name) {
    Drawing drawing;
    drawing.id = name;
    CsvBuilder builder(drawing);
    for (std::size_t start = 0, line = 1; start < text.size(); ++line) {
        const std::size_t end = std::min(text.find('\n', start), text.size());
        try {
            builder.ReadLine(text.substr(start, end - start));
        } catch (const InkError& error) {
            throw InkError("line " + std::to_string(line) + ": " + error.what());
        }
        start = end + 1;
    }
    return drawing;
}

} // namespace Tessera::Tool
