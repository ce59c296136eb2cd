// The one way in which the geometry, stroke and recognition classes report an error.
#pragma once

#include "tessera/core/Export.h"

namespace Tessera::Core {

/// Text that outlives every caller: only a constant expression converts to it.
struct StaticText {
    consteval StaticText(const char* literal) : text(literal) {}
    const char* text;
};

/// Throws the text as a `char*` (not `const char*`): hosts catch exactly that type.
/// The text is a literal; nobody frees or writes to it.
[[noreturn]] TESSERA_API void ThrowMessage(StaticText message);

} // namespace Tessera::Core
