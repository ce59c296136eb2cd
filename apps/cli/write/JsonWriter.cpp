#include <ostream>

#include "apps/cli/write/DrawingWriter.h"
#include "apps/cli/write/JsonValues.h"

namespace Tessera::Tool {

namespace {

Json CurveObject(const RecognizedCurve& curve) {
    Json json = {
        {"kind", curve.KindName()}, {"from", curve.from}, {"to", curve.to}, {"deviation", curve.deviation}};
    AddShape(curve.shape, json);
    if (curve.retracedBy >= 0) {
        json["retraced_by"] = curve.retracedBy;
    }
    return json;
}

Json PlacePair(const CurvePlace& place) {
    return Json::array({place.stroke, place.curve});
}

/// Stroke and curve, then the name of the point where one is meant.
Json ElementArray(const DrawingElement& element) {
    Json json = PlacePair(element.place);
    if (element.point != Geometry::SnapPointType_None) {
        json.push_back(kPointNames[element.point]);
    }
    return json;
}

const char* EndName(bool isEnd) {
    return kPointNames[isEnd ? Geometry::SnapPointType_End : Geometry::SnapPointType_Start];
}

Json JointObject(const RecognizedJoint& joint) {
    return {{"before", joint.before},
            {"after", joint.after},
            {"ends", Json::array({EndName(joint.isBeforeEnd), EndName(joint.isAfterEnd)})},
            {"kind", joint.isTangent ? "tangent" : "corner"},
            {"position", Pair(joint.position)},
            {"turn", joint.turn}};
}

Json ConnectionObject(const RecognizedConnection& connection) {
    return {{"curve", connection.curve},
            {"end", EndName(connection.isEnd)},
            {"onto", ElementArray(connection.onto)},
            {"position", Pair(connection.position)}};
}

/// What interpretation tells of a stroke besides its curves.
void AddReading(const RecognizedStroke& stroke, Json& json) {
    json["shape"] = kShapeNames[static_cast<int>(*stroke.shape)];
    json["joints"] = Json::array();
    for (const RecognizedJoint& joint : stroke.joints) {
        json["joints"].push_back(JointObject(joint));
    }
    json["connections"] = Json::array();
    for (const RecognizedConnection& connection : stroke.connections) {
        json["connections"].push_back(ConnectionObject(connection));
    }
    if (stroke.retraces) {
        json["retraces"] = PlacePair(*stroke.retraces);
    }
}

Json ConstraintObject(const RecognizedConstraint& constraint) {
    Json json = {{"kind", kConstraintNames[constraint.kind]}, {"curves", Json::array()}};
    for (const DrawingElement& element : constraint.elements) {
        json["curves"].push_back(ElementArray(element));
    }
    if (constraint.side != 0) {
        json["side"] = constraint.side;
    }
    json["confidence"] = constraint.confidence;
    return json;
}

Json DimensionObject(const DrawnDimension& dimension) {
    Json json = {{"kind", dimension.kind},
                 {"value", dimension.value},
                 {"text", dimension.text},
                 {"curves", dimension.curves},
                 {"position", Pair(dimension.position)},
                 {"text_angle", dimension.textAngle},
                 {"font_height", dimension.fontHeight},
                 {"lines", Json::array()},
                 {"arrowheads", Json::array()}};
    for (const CurveShape& line : dimension.lines) {
        Json shape = {{"kind", kCurveKindNames[line.index()]}};
        AddShape(line, shape);
        json["lines"].push_back(std::move(shape));
    }
    for (const auto& [tip, left, right] : dimension.arrowheads) {
        json["arrowheads"].push_back(Json::array({Pair(tip), Pair(left), Pair(right)}));
    }
    return json;
}

Json StrokeObject(const RecognizedStroke& stroke) {
    Json json = {{"index", stroke.index}, {"points", stroke.points}, {"curves", Json::array()}};
    for (const RecognizedCurve& curve : stroke.curves) {
        json["curves"].push_back(CurveObject(curve));
    }
    if (stroke.shape) {
        AddReading(stroke, json);
    }
    if (stroke.isScribble) {
        json["scribble"] = true;
        json["cusps"] = stroke.cusps;
        json["erases"] = stroke.erases;
    }
    for (const ErasedCurve& erased : stroke.erased) {
        Json curve = CurveObject(erased.curve);
        curve["erased_by"] = erased.by;
        json["erased"].push_back(std::move(curve));
    }
    if (!stroke.problem.empty()) {
        json["error"] = stroke.problem;
    }
    return json;
}

/// What `tessera scribble` tells of a stroke.
Json AnswerObject(const RecognizedStroke& stroke) {
    Json json = {{"index", stroke.index}, {"points", stroke.points}};
    if (stroke.problem.empty()) {
        json["scribble"] = stroke.isScribble;
        json["cusps"] = stroke.cusps;
        json["erases"] = stroke.erases;
    } else {
        json["error"] = stroke.problem;
    }
    return json;
}

class JsonWriter : public DrawingWriter {
public:
    JsonWriter(std::ostream& out, Json (*strokeObject)(const RecognizedStroke&))
        : out_(out), strokeObject_(strokeObject) {}

    void Add(const RecognizedDrawing& drawing) override {
        Json json = {{"id", drawing.ink.id}, {"strokes", Json::array()}};
        for (const RecognizedStroke& stroke : drawing.strokes) {
            json["strokes"].push_back(strokeObject_(stroke));
        }
        if (drawing.constraints) {
            json["constraints"] = Json::array();
            for (const RecognizedConstraint& constraint : *drawing.constraints) {
                json["constraints"].push_back(ConstraintObject(constraint));
            }
        }
        if (drawing.dimensions) {
            json["dimensions"] = Json::array();
            for (const DrawnDimension& dimension : *drawing.dimensions) {
                json["dimensions"].push_back(DimensionObject(dimension));
            }
        }
        if (!drawing.ink.problem.empty()) {
            json["error"] = drawing.ink.problem;
        }
        WriteJsonLine(json, out_);
    }
    void Finish() override { out_.flush(); }

private:
    std::ostream& out_;
    Json (*strokeObject_)(const RecognizedStroke&);
};

} // namespace

std::unique_ptr<DrawingWriter> MakeJsonWriter(std::ostream& out) {
    return std::make_unique<JsonWriter>(out, StrokeObject);
}

std::unique_ptr<DrawingWriter> MakeScribbleJsonWriter(std::ostream& out) {
    return std::make_unique<JsonWriter>(out, AnswerObject);
}

std::unique_ptr<DrawingWriter> MakeWriter(OutputFormat format, std::ostream& out, bool showsGlyphs) {
    switch (format) {
    case OutputFormat::Json:
        return MakeJsonWriter(out);
    case OutputFormat::Svg:
        return MakeSvgWriter(out, showsGlyphs);
    case OutputFormat::ScribbleSummary:
        return MakeScribbleSummaryWriter(out);
    case OutputFormat::ScribbleJson:
        return MakeScribbleJsonWriter(out);
    case OutputFormat::Summary:
        break;
    }
    return MakeSummaryWriter(out);
}

} // namespace Tessera::Tool
