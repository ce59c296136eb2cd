// Names of XML elements, whatever prefix a document gives their namespace.
#pragma once

#include <string_view>

#include <pugixml.hpp>

namespace Tessera::Tool {

inline std::string_view LocalName(const pugi::xml_node& node) {
    const std::string_view name = node.name();
    const std::size_t colon = name.find(':');
    return colon == std::string_view::npos ? name : name.substr(colon + 1);
}

} // namespace Tessera::Tool
