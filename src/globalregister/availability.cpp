// Which precalculated data sets are at hand. None can be loaded yet, so none is: the search then never asks for one.

#include "core/queries.h"

namespace quillon {

bool IsPrecalcDataAvailable(TPositionType) { return false; }

} // namespace quillon
