#include <ostream>

#include "apps/cli/convert/ConvertedWriter.h"
#include "apps/cli/convert/HostReports.h"
#include "apps/cli/write/JsonValues.h"

namespace Tessera::Tool {

namespace {

Json StrokeObject(const ConvertedStroke& stroke) {
    Json json = {{"index", stroke.index}, {"points", stroke.points}};
    if (stroke.code) {
        json["code"] = CodeText(*stroke.code);
    }
    if (!stroke.problem.empty()) {
        json["error"] = stroke.problem;
        return json;
    }
    json["outcome"] = kOutcomeNames[stroke.outcome];
    json["shape"] = kShapeNames[static_cast<int>(stroke.shape)];
    json["elements"] = stroke.elements;
    json["constraints"] = stroke.constraints;
    if (stroke.outcome == kHostInkScribble) {
        json["erased"] = stroke.erased;
        json["trimmed"] = stroke.trimmed;
    }
    return json;
}

Json ElementObject(const ConvertedElement& element) {
    Json json = {{"id", element.id}, {"kind", kCurveKindNames[element.shape.index()]}};
    AddShape(element.shape, json);
    return json;
}

Json ConstraintObject(const HostConstraint2d& constraint) {
    Json json = {
        {"id", constraint.id}, {"kind", kConstraintNames[constraint.kind]}, {"elements", Json::array()}};
    for (std::int32_t i = 0; i < constraint.memberCount; ++i) {
        const HostConstraintMember& member = constraint.members[i];
        Json named = Json::array({member.element});
        if (member.point != kHostPointNone) {
            named.push_back(kPointNames[member.point]);
        }
        json["elements"].push_back(std::move(named));
    }
    if (constraint.side != 0) {
        json["side"] = constraint.side;
    }
    json["confidence"] = constraint.confidence;
    return json;
}

class ConvertedJsonWriter : public ConvertedWriter {
public:
    explicit ConvertedJsonWriter(std::ostream& out) : out_(out) {}

    void Add(const ConvertedDrawing& drawing) override {
        Json json = {{"id", drawing.id},
                     {"strokes", Json::array()},
                     {"elements", Json::array()},
                     {"constraints", Json::array()}};
        for (const ConvertedStroke& stroke : drawing.strokes) {
            json["strokes"].push_back(StrokeObject(stroke));
        }
        for (const ConvertedElement& element : drawing.elements) {
            json["elements"].push_back(ElementObject(element));
        }
        for (const HostConstraint2d& constraint : drawing.constraints) {
            json["constraints"].push_back(ConstraintObject(constraint));
        }
        if (!drawing.problem.empty()) {
            json["error"] = drawing.problem;
        }
        WriteJsonLine(json, out_);
    }
    void Finish() override { out_.flush(); }

private:
    std::ostream& out_;
};

} // namespace

std::unique_ptr<ConvertedWriter> MakeConvertedJsonWriter(std::ostream& out) {
    return std::make_unique<ConvertedJsonWriter>(out);
}

} // namespace Tessera::Tool
