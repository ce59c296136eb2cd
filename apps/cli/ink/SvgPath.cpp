#include "apps/cli/ink/SvgPath.h"

#include <cmath>
#include <numbers>

#include "apps/cli/ink/NumberText.h"

namespace Tessera::Tool {

namespace {

constexpr std::string_view kBlank = " \t\r\n";
/// Chords a Bezier segment or a quarter of an arc is flattened into: enough that the largest gap between
/// chord and curve stays below a thousandth of the segment's size.
constexpr int kChords = 24;

Position operator+(Position a, Position b) {
    return {a.x + b.x, a.y + b.y};
}
Position operator-(Position a, Position b) {
    return {a.x - b.x, a.y - b.y};
}
Position operator*(double f, Position a) {
    return {f * a.x, f * a.y};
}

class PathFlattener {
public:
    explicit PathFlattener(std::string_view data) : data_(data) {}

    void Run() {
        for (char command = TakeCommand('\0'); command != '\0'; command = TakeCommand(command)) {
            Draw(command);
        }
    }
    std::vector<std::vector<Position>> TakeLines() {
        FinishLine();
        return std::move(lines_);
    }

private:
    // --- Scanning
    void SkipSeparators() {
        data_.remove_prefix(std::min(data_.find_first_not_of(kBlank), data_.size()));
        if (!data_.empty() && data_.front() == ',') {
            data_.remove_prefix(1);
            data_.remove_prefix(std::min(data_.find_first_not_of(kBlank), data_.size()));
        }
    }

    /// The next command letter, or the last one again when arguments follow; the null character at the end.
    char TakeCommand(char last) {
        SkipSeparators();
        if (data_.empty()) {
            return '\0';
        }
        const char next = data_.front();
        if (std::string_view("MmZzLlHhVvCcSsQqTtAa").find(next) != std::string_view::npos) {
            if (last == '\0' && next != 'M' && next != 'm') {
                throw InkError("path data does not begin with M");
            }
            data_.remove_prefix(1);
            return next;
        }
        if (last == '\0' || last == 'Z' || last == 'z') {
            throw InkError("path data: \"" + std::string(data_.substr(0, 20)) + "\" is not a command");
        }
        // Further pairs after a move are lines.
        return last == 'M' ? 'L' : last == 'm' ? 'l' : last;
    }

    double Number() {
        SkipSeparators();
        const std::optional<double> value = TakeNumber(data_);
        if (!value) {
            throw InkError(
                "path data: number expected" +
                (data_.empty() ? " at the end" : " before \"" + std::string(data_.substr(0, 20)) + "\""));
        }
        return *value;
    }

    /// Flags are single digits and need no separator.
    bool Flag() {
        SkipSeparators();
        if (data_.empty() || (data_.front() != '0' && data_.front() != '1')) {
            throw InkError("path data: arc flag expected");
        }
        const bool flag = data_.front() == '1';
        data_.remove_prefix(1);
        return flag;
    }

    Position Pair(bool isRelative) {
        const double x = Number();
        const Position p{x, Number()};
        return isRelative ? pen_ + p : p;
    }

    // --- Drawing
    void Draw(char command) {
        const bool isRelative = command >= 'a';
        const char kind = static_cast<char>(isRelative ? command - 'a' + 'A' : command);
        switch (kind) {
        case 'M':
            MoveTo(Pair(isRelative));
            break;
        case 'Z':
            Close();
            break;
        case 'L':
            LineTo(Pair(isRelative));
            break;
        case 'H':
            LineTo({Number() + (isRelative ? pen_.x : 0.0), pen_.y});
            break;
        case 'V':
            LineTo({pen_.x, Number() + (isRelative ? pen_.y : 0.0)});
            break;
        case 'C':
        case 'S': {
            const Position c1 = kind == 'C' ? Pair(isRelative) : Reflected("CS");
            const Position c2 = Pair(isRelative);
            CubicTo(c1, c2, Pair(isRelative));
            break;
        }
        case 'Q':
        case 'T': {
            const Position c = kind == 'Q' ? Pair(isRelative) : Reflected("QT");
            const Position end = Pair(isRelative);
            const Position start = pen_;
            CubicTo(start + (2.0 / 3.0) * (c - start), end + (2.0 / 3.0) * (c - end), end);
            control_ = c;
            break;
        }
        default:
            DrawArc(isRelative);
            break;
        }
        lastKind_ = kind;
    }

    /// The last control point mirrored at the pen, if the last command was of the same family.
    Position Reflected(std::string_view family) const {
        return family.find(lastKind_) == std::string_view::npos ? pen_ : 2.0 * pen_ - control_;
    }

    void FinishLine() {
        if (line_.size() > 1) {
            lines_.push_back(std::move(line_));
        }
        line_.clear();
    }

    void MoveTo(Position p) {
        FinishLine();
        line_.push_back(p);
        pen_ = start_ = p;
    }

    void LineTo(Position p) {
        if (line_.empty()) { // after a close the next sub-path begins where the last one did
            line_.push_back(pen_);
        }
        line_.push_back(p);
        pen_ = p;
    }

    void Close() {
        if (!line_.empty() && (pen_.x != start_.x || pen_.y != start_.y)) {
            LineTo(start_);
        }
        FinishLine();
        pen_ = start_;
    }

    void CubicTo(Position c1, Position c2, Position end) {
        const Position p = pen_;
        for (int i = 1; i < kChords; ++i) {
            const double t = static_cast<double>(i) / kChords;
            const double u = 1.0 - t;
            LineTo(u * u * u * p + 3.0 * u * u * t * c1 + 3.0 * u * t * t * c2 + t * t * t * end);
        }
        LineTo(end);
        control_ = c2;
    }

    void DrawArc(bool isRelative) {
        const double rx = std::fabs(Number());
        const double ry = std::fabs(Number());
        const double rotation = Number() * std::numbers::pi / 180.0;
        const bool isLarge = Flag();
        const bool isPositive = Flag();
        const Position end = Pair(isRelative);
        if (rx == 0.0 || ry == 0.0 || (pen_.x == end.x && pen_.y == end.y)) {
            LineTo(end); // radii of zero mean a line; an arc that ends where it begins is left out
            return;
        }
        ArcTo(rx, ry, rotation, isLarge, isPositive, end);
    }

    /// End points to centre: SVG 2, appendix B.2.4.
    void ArcTo(double rx, double ry, double rotation, bool isLarge, bool isPositive, Position end) {
        const double cosine = std::cos(rotation);
        const double sine = std::sin(rotation);
        const Position half = 0.5 * (pen_ - end);
        const Position p{(cosine * half.x + sine * half.y) / rx, (cosine * half.y - sine * half.x) / ry};
        const double sizeSq = p.x * p.x + p.y * p.y;
        if (sizeSq > 1.0) { // too small to reach: scaled up until they just do
            rx *= std::sqrt(sizeSq);
            ry *= std::sqrt(sizeSq);
        }
        const Position unit = sizeSq > 1.0 ? (1.0 / std::sqrt(sizeSq)) * p : p;
        const double reach = std::sqrt(std::max(0.0, 1.0 / (unit.x * unit.x + unit.y * unit.y) - 1.0));
        const double side = isLarge == isPositive ? -reach : reach;
        const Position centre{side * unit.y, -side * unit.x};
        const double from = std::atan2(unit.y - centre.y, unit.x - centre.x);
        double sweep = std::atan2(-unit.y - centre.y, -unit.x - centre.x) - from;
        if (isPositive && sweep < 0.0) {
            sweep += 2.0 * std::numbers::pi;
        } else if (!isPositive && sweep > 0.0) {
            sweep -= 2.0 * std::numbers::pi;
        }
        const Position middle = 0.5 * (pen_ + end);
        const int chords =
            std::max(2, static_cast<int>(std::ceil(std::fabs(sweep) / (0.5 * std::numbers::pi) * kChords)));
        for (int i = 1; i < chords; ++i) {
            const double angle = from + sweep * i / chords;
            const double x = rx * (centre.x + std::cos(angle));
            const double y = ry * (centre.y + std::sin(angle));
            LineTo(middle + Position{cosine * x - sine * y, sine * x + cosine * y});
        }
        LineTo(end);
    }

    std::string_view data_;
    std::vector<std::vector<Position>> lines_;
    std::vector<Position> line_;
    Position pen_;
    Position start_;
    Position control_;
    char lastKind_ = '\0';
};

} // namespace

std::vector<std::vector<Position>> FlattenSvgPath(std::string_view data, std::string& problem) {
    PathFlattener flattener(data);
    try {
        flattener.Run();
    } catch (const InkError& error) {
        problem = error.what();
    }
    return flattener.TakeLines();
}

} // namespace Tessera::Tool
