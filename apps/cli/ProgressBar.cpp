#include "apps/cli/ProgressBar.h"

#include <ostream>
#include <string>

namespace Tessera::Tool {

ProgressBar::ProgressBar(std::ostream& err, std::size_t total, bool isShown)
    : err_(err), total_(total), isShown_(isShown) {}

ProgressBar::~ProgressBar() {
    Clear();
}

void ProgressBar::Advance() {
    ++done_;
    const int percent = static_cast<int>(100 * done_ / total_);
    if (!isShown_ || percent == drawnPercent_) {
        return;
    }
    constexpr std::size_t kWidth = 40;
    drawnPercent_ = percent;
    const std::size_t filled = kWidth * done_ / total_;
    err_ << "\r[" << std::string(filled, '#') << std::string(kWidth - filled, '.') << "] " << done_ << '/'
         << total_ << std::flush;
}

void ProgressBar::Clear() {
    if (drawnPercent_ >= 0) {
        err_ << "\r\x1b[K" << std::flush;
        drawnPercent_ = -1;
    }
}

} // namespace Tessera::Tool
