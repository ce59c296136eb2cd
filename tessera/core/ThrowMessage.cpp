#include "tessera/core/ThrowMessage.h"

namespace Tessera::Core {

void ThrowMessage(StaticText message) {
    throw const_cast<char*>(message.text);
}

} // namespace Tessera::Core
