#include "geodesy/map_constants.h"

namespace qarvel::geodesy {

// Pi = 4 x atan(1), HalfPi = Pi / 2, DegToRad = Pi / 180, TwoPi = 2 x Pi are
// compile-time constants (see map_constants.h), so there is nothing left to
// set at start-up. Kept so the start-up sequence reads as it always has.
void InitMapConstants() {}

}  // namespace qarvel::geodesy
