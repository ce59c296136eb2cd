// A line on the terminal that tells how far a long run has got.
#pragma once

#include <cstddef>
#include <iosfwd>

namespace Tessera::Tool {

class ProgressBar {
public:
    /// Draws nothing when `isShown` is false.
    ProgressBar(std::ostream& err, std::size_t total, bool isShown);
    ProgressBar(const ProgressBar&) = delete;
    ProgressBar& operator=(const ProgressBar&) = delete;
    ~ProgressBar();

    void Advance();
    /// Takes the bar off the line, so that a message can be written; the next Advance draws it again.
    void Clear();

private:
    std::ostream& err_;
    std::size_t total_;
    std::size_t done_ = 0;
    int drawnPercent_ = -1;
    bool isShown_;
};

} // namespace Tessera::Tool
