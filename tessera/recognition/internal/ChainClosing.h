// ChainClosing - a chain of lines and arcs made the closed or open shape that it was meant to be.
#pragma once

#include "tessera/recognition/internal/PricedPath.h"

namespace Tessera::Geometry {

/// The chain closed with a corner where the last piece meets the first, or with the last and the first piece
/// made one (the pen began within a side, or ran on along it), with or without a hook at either end (a short
/// piece that the pen drew when it touched down or left): the cheapest of these where one costs less than the
/// open chain. A chain that stays open loses hooks that are shorter still, at no change of its price: the ink
/// of a hook has to be described in any case.
Chain CloseChain(const PricedPath& ink, const Chain& open);

} // namespace Tessera::Geometry
