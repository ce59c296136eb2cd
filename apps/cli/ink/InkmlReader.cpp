// InkML documents (W3C Ink Markup Language): traces under ink and nested trace groups, with trace formats
// given directly, by context or by ink source. Brushes, annotations and trace views say nothing about the
// geometry and are passed over, as are traces made with the pen up.

#include "apps/cli/ink/InkReader.h"

#include <cstring>
#include <map>
#include <optional>

#include <pugixml.hpp>

#include "apps/cli/ink/InkmlTrace.h"
#include "apps/cli/ink/NumberText.h"
#include "apps/cli/ink/XmlName.h"

namespace Tessera::Tool {

namespace {

std::string Identifier(const pugi::xml_node& node) {
    const pugi::xml_attribute id = node.attribute("xml:id");
    return id ? id.value() : node.attribute("id").value();
}

pugi::xml_node Child(const pugi::xml_node& node, std::string_view name) {
    return node.find_child([&](const pugi::xml_node& child) { return LocalName(child) == name; });
}

/// Length units in millimetres and time units in milliseconds; device units and unknown ones give nothing.
std::optional<double> UnitSize(const std::string& unit) {
    static const std::map<std::string, double> sizes = {
        {"m", 1000.0},      {"cm", 10.0},        {"mm", 1.0},   {"in", 25.4}, {"pt", 25.4 / 72.0},
        {"pc", 25.4 / 6.0}, {"px", 25.4 / 96.0}, {"s", 1000.0}, {"ms", 1.0},  {"us", 1e-3}};
    const auto found = sizes.find(unit);
    return found == sizes.end() ? std::nullopt : std::optional<double>(found->second);
}

InkmlFormat DefaultFormat() {
    InkmlFormat format;
    format.channels = {{"X", 1.0, 0.0, false}, {"Y", 1.0, 0.0, false}};
    format.x = 0;
    format.y = 1;
    return format;
}

void AddChannel(const pugi::xml_node& node, bool isIntermittent, InkmlFormat& format,
                std::vector<std::string>& units) {
    InkmlChannel channel;
    channel.name = node.attribute("name").value();
    channel.isIntermittent = isIntermittent;
    channel.defaultValue = node.attribute("default").as_double(0.0);
    const int index = static_cast<int>(format.channels.size());
    const std::string unit = node.attribute("units").value();
    if (channel.name == "X") {
        format.x = index;
    } else if (channel.name == "Y") {
        format.y = index;
    } else if (channel.name == "T") {
        format.time = index;
        channel.unitScale = UnitSize(unit).value_or(1.0);
    }
    format.channels.push_back(channel);
    units.push_back(unit);
}

InkmlFormat ReadFormat(const pugi::xml_node& node) {
    InkmlFormat format;
    std::vector<std::string> units;
    for (const pugi::xml_node& child : node.children()) {
        if (LocalName(child) == "channel") {
            AddChannel(child, false, format, units);
        } else if (LocalName(child) == "intermittentChannels") {
            for (const pugi::xml_node& channel : child.children()) {
                if (LocalName(channel) == "channel") {
                    AddChannel(channel, true, format, units);
                }
            }
        }
    }
    if (format.channels.empty()) {
        return DefaultFormat();
    }
    if (format.x < 0 || format.y < 0) {
        throw InkError("a trace format without the channels X and Y");
    }
    // Results are given in the unit of X; Y follows when it is measured in another one.
    const std::optional<double> xSize = UnitSize(units[format.x]);
    const std::optional<double> ySize = UnitSize(units[format.y]);
    if (xSize && ySize) {
        format.channels[format.y].unitScale = *ySize / *xSize;
    }
    return format;
}

class InkmlBuilder {
public:
    InkmlBuilder(std::string_view text, Drawing& drawing) : text_(text), drawing_(drawing) {}

    void ReadDocument(const pugi::xml_node& root) {
        CollectIdentifiers(root);
        ReadChildren(root, DefaultFormat());
    }

private:
    struct OpenTrace {
        std::size_t stroke;
        std::vector<InkmlChannelState> states;
    };

    std::string Place(const pugi::xml_node& node) const {
        return "line " + std::to_string(LineAt(text_, static_cast<std::size_t>(node.offset_debug()))) + ": ";
    }

    void CollectIdentifiers(const pugi::xml_node& root) {
        struct Walker : pugi::xml_tree_walker {
            std::map<std::string, pugi::xml_node>* nodes = nullptr;
            bool for_each(pugi::xml_node& node) override {
                if (std::string id = Identifier(node); !id.empty()) {
                    nodes->emplace(std::move(id), node);
                }
                return true;
            }
        } walker;
        walker.nodes = &nodes_;
        pugi::xml_node start = root;
        start.traverse(walker);
    }

    pugi::xml_node Referenced(const pugi::xml_node& node, const char* attribute) const {
        std::string id = node.attribute(attribute).value();
        if (id.empty()) {
            return {};
        }
        if (id == "#DefaultCanvas" || id == "#DefaultTraceFormat" || id == "#DefaultContext") {
            return {};
        }
        const auto found = nodes_.find(id.substr(id.find('#') + 1));
        if (found == nodes_.end()) {
            throw InkError(Place(node) + attribute + "=\"" + id + "\" refers to nothing");
        }
        return found->second;
    }

    /// The format that a context (or an ink source) stands for; nothing when it does not speak of one. A
    /// context may lean on another; `depth` ends circles.
    std::optional<InkmlFormat> ContextFormat(const pugi::xml_node& context, int depth = 0) const {
        if (!context || depth > kMaxReferences) {
            return std::nullopt;
        }
        for (const pugi::xml_node& own :
             {Child(context, "traceFormat"), Referenced(context, "traceFormatRef")}) {
            if (own) {
                return ReadFormat(own);
            }
        }
        for (const pugi::xml_node& next : {Child(context, "inkSource"), Referenced(context, "inkSourceRef"),
                                           Referenced(context, "contextRef")}) {
            if (std::optional<InkmlFormat> format = ContextFormat(next, depth + 1)) {
                return format;
            }
        }
        return std::nullopt;
    }

    /// A context or trace format between the traces holds for those after it.
    void ReadChildren(const pugi::xml_node& parent, InkmlFormat format) {
        for (const pugi::xml_node& node : parent.children()) {
            const std::string_view name = LocalName(node);
            if (name == "context") {
                format = ContextFormat(node).value_or(format);
            } else if (name == "traceFormat") {
                format = ReadFormat(node);
            } else if (name == "traceGroup") {
                ReadChildren(node, ContextFormat(Referenced(node, "contextRef")).value_or(format));
            } else if (name == "trace") {
                ReadTrace(node, ContextFormat(Referenced(node, "contextRef")).value_or(format));
            }
        }
    }

    void ReadTrace(const pugi::xml_node& node, const InkmlFormat& format) {
        if (std::strcmp(node.attribute("type").value(), "penUp") == 0) {
            return;
        }
        OpenTrace trace{drawing_.strokes.size(), std::vector<InkmlChannelState>(format.channels.size())};
        const std::string continuation = node.attribute("continuation").value();
        if (continuation == "middle" || continuation == "end") {
            const std::string prior = node.attribute("priorRef").value();
            const auto open = open_.find(prior.substr(prior.find('#') + 1));
            if (open != open_.end() && open->second.states.size() == format.channels.size()) {
                trace = open->second;
            }
        }
        if (trace.stroke == drawing_.strokes.size()) {
            drawing_.strokes.emplace_back().isTimed = format.time >= 0;
        }
        InkStroke& stroke = drawing_.strokes[trace.stroke];
        const std::size_t first = stroke.samples.size();
        try {
            ReadInkmlTrace(node.text().get(), format, trace.states, stroke.samples);
        } catch (const InkError& error) {
            throw InkError(Place(node) + "trace " + std::to_string(trace.stroke) + ", " + error.what());
        }
        const double offsetMs = node.attribute("timeOffset").as_double(0.0);
        for (std::size_t i = first; i < stroke.samples.size(); ++i) {
            stroke.samples[i].timeMs += offsetMs;
        }
        if (!continuation.empty() && continuation != "end") {
            open_[Identifier(node)] = trace;
        }
    }

    static constexpr int kMaxReferences = 8;

    std::string_view text_;
    Drawing& drawing_;
    std::map<std::string, pugi::xml_node> nodes_;
    std::map<std::string, OpenTrace> open_; ///< traces that another one continues
};

} // namespace

Drawing ReadInkml(std::string_view text, const std::string& name) {
    pugi::xml_document document;
    const pugi::xml_parse_result result = document.load_buffer(text.data(), text.size());
    if (!result) {
        throw InkError("line " + std::to_string(LineAt(text, static_cast<std::size_t>(result.offset))) +
                       ": " + result.description());
    }
    const pugi::xml_node root = document.document_element();
    if (LocalName(root) != "ink") {
        throw InkError("the root element is not ink");
    }
    Drawing drawing;
    drawing.id = name;
    if (const std::string id = root.attribute("documentID").value(); !id.empty()) {
        drawing.id = id;
    }
    InkmlBuilder(text, drawing).ReadDocument(root);
    return drawing;
}

} // namespace Tessera::Tool
