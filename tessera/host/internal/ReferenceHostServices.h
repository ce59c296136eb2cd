// The reference host's own table of services.
#pragma once

#include "tessera/host/HostServices.h"

namespace Tessera::Host {

HostServices ReferenceHostServices();

} // namespace Tessera::Host
