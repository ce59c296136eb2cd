// Writers of what documents hold: one is made for an output, given the drawings in order, then finished.
#pragma once

#include <iosfwd>
#include <memory>

#include "apps/cli/convert/ConvertedDrawing.h"

namespace Tessera::Tool {

class ConvertedWriter {
public:
    ConvertedWriter() = default;
    ConvertedWriter(const ConvertedWriter&) = delete;
    ConvertedWriter& operator=(const ConvertedWriter&) = delete;
    virtual ~ConvertedWriter() = default;

    virtual void Add(const ConvertedDrawing& drawing) = 0;
    virtual void Finish() = 0;
};

/// One line for each drawing: the object that the manual page describes. `out` must outlive the writer.
std::unique_ptr<ConvertedWriter> MakeConvertedJsonWriter(std::ostream& out);
/// What became of each stroke, a table of elements, and the totals.
std::unique_ptr<ConvertedWriter> MakeConvertedSummaryWriter(std::ostream& out);

} // namespace Tessera::Tool
