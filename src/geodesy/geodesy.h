#pragma once
// Plane-earth geodesy (modMapping): the flat-earth distance of the FM spacing
// rules, bearings from its two legs, the destination point, and degree-
// minute-second text.
//
// Units: angles in decimal degrees at every interface, distances in km,
// bearings in degrees clockwise from true north. Longitude: the distance and
// bearing routines count longitude positive WEST (a smaller longitude lies
// further east), as the station tables do; GetPosn alone ADDS its east leg to
// the longitude (see there).
//
// Every routine runs under the common error trap. A floating-point fault is a
// non-finite value (NaN or infinity) where a finite one is needed, or a
// division by zero; it is reported under "modMapping" and ":RoutineName:" and
// the routine returns 0 (or empty text) and leaves its out arguments as they
// were, except where a routine's comment says otherwise.

#include <string>

#include "geodesy/circle.h"         // Min, Max (modCircle)
#include "geodesy/lat_lon.h"        // clsLatLon
#include "geodesy/map_constants.h"  // InitMapConstants, Pi, HalfPi, DegToRad, TwoPi

namespace qarvel::geodesy {

// Kilometres per degree of latitude at latDeg (degrees, -90..90), from the
// spacing rules' cosine series, rounded to 32 bits. KmPerDegLat(0) = 110.56724.
float KmPerDegLat(double latDeg);

// Kilometres per degree of longitude at latDeg (degrees, -90..90), rounded to
// 32 bits. KmPerDegLon(0) = 111.3207.
float KmPerDegLon(double latDeg);

// Flat-earth distance (km) from point 1 to point 2, coordinates in degrees,
// longitude positive WEST. Out: northKm > 0 when point 2 is north of point 1,
// eastKm > 0 when point 2 is east of it (smaller longitude). Series and legs
// in 64-bit arithmetic.
double FlatDistance(double lat1, double lon1, double lat2, double lon2, double& northKm,
                    double& eastKm);

// As FlatDistance for 32-bit coordinates (map drawing): every step (middle
// latitude, series values, legs, squares, sum, square root) rounded to 32
// bits. The coordinates are taken by reference and not changed.
float FlatDistanceSingle(float& lat1, float& lon1, float& lat2, float& lon2, float& northKm,
                         float& eastKm);

// Distance (km) and bearing (degrees, 0 to below 360, clockwise from north)
// from point 1 to point 2; degrees, longitude positive WEST. The angle sum is
// held as a 32-bit float, so the bearing carries about 3e-5 degree of
// rounding. Below 0.001 km the bearing argument is left as the caller set it.
// A fault inside FlatDistance is reported by FlatDistance, which gives
// distance 0 (and so the bearing is left alone).
void DistBearing(double lat1, double lon1, double lat2, double lon2, double& distanceKm,
                 double& bearingDeg);

// The reverse of bearingDeg (degrees): bearing + 180, less 360 when above
// 360, as a 32-bit float. BackBearing(180) is 360, not 0.
float BackBearing(double bearingDeg);

// The point distanceKm away from (lat1, lon1) on bearing bearingDeg (degrees,
// any value; 360 is 0). The east leg is ADDED to the longitude: give and read
// longitudes positive EAST (negate station-table longitudes in and out), or
// the point comes out mirrored east-west. lon2 is wrapped into -180..180.
// Solved by iterating on the middle latitude to 1e-7 arc-second; if it never
// converges (e.g. a NaN argument) the program shows "Non-convergence error in
// Function ModMapping.GetPosn.  Program Halted!" and halts (core::HaltProgram).
void GetPosn(double lat1, double lon1, double& lat2, double& lon2, double distanceKm,
             double bearingDeg);

// Degrees as "+DDD:MM:SS" text (77.5042 -> "+077:30:15"); seconds rounded half
// to even. The sign rides on the degrees only, so -0.5 gives "+000:30:00".
// Degrees beyond 16 bits (|x| >= 32768) are an overflow fault: empty text.
std::string DegToDMS(double degrees);

}  // namespace qarvel::geodesy
