// Writers of recognised drawings: one is made for an output, given its drawings in order, then finished.
#pragma once

#include <iosfwd>
#include <memory>

#include "apps/cli/recognize/RecognizedDrawing.h"

namespace Tessera::Tool {

/// The last two are what `tessera scribble` writes.
enum class OutputFormat { Summary, Json, Svg, ScribbleSummary, ScribbleJson };

class DrawingWriter {
public:
    DrawingWriter() = default;
    DrawingWriter(const DrawingWriter&) = delete;
    DrawingWriter& operator=(const DrawingWriter&) = delete;
    virtual ~DrawingWriter() = default;

    virtual void Add(const RecognizedDrawing& drawing) = 0;
    virtual void Finish() = 0;
};

/// `out` must outlive the writer. Pictures may show the glyphs of constraints.
std::unique_ptr<DrawingWriter> MakeWriter(OutputFormat format, std::ostream& out, bool showsGlyphs = true);

/// One line for each drawing: the object that README and manual page describe.
std::unique_ptr<DrawingWriter> MakeJsonWriter(std::ostream& out);
/// A table of curves for each drawing, and the totals.
std::unique_ptr<DrawingWriter> MakeSummaryWriter(std::ostream& out);
/// One picture: the drawing with a legend, or a sheet of all drawings.
std::unique_ptr<DrawingWriter> MakeSvgWriter(std::ostream& out, bool showsGlyphs);

/// A line for each stroke: whether it is a scribble, its cusps, what it erases.
std::unique_ptr<DrawingWriter> MakeScribbleSummaryWriter(std::ostream& out);
std::unique_ptr<DrawingWriter> MakeScribbleJsonWriter(std::ostream& out);

} // namespace Tessera::Tool
