/// \file
/// Trigonometric functions in double precision that give the same bits on every system: the C runtimes differ
/// in their last digits, and a result that is rounded to a float must not depend on those. Errors are below
/// two units in the last place of a double, so that 27 digits are left for the rounding.
#pragma once

namespace vorlund {

struct TSineAndCosine {
    double sine;
    double cosine;
};

/// Of an angle of any size; NaN for an infinite one.
TSineAndCosine SineAndCosine(double angle);

/// The same of three angles, in little more time than one takes.
void SinesAndCosines(const double (&angles)[3], TSineAndCosine (&results)[3]);

/// An angle within a quarter turn around 0, and the number of right angles, modulo 4, that it is away from
/// the whole one.
struct TReducedAngle {
    double rest;
    unsigned int quadrant;
};

/// Reduces a finite angle of 2^15 or more.
TReducedAngle ReduceLargeAngle(double angle);

/// The angle from -pi to pi of the direction (x, y), with the special cases of the C function `atan2`.
double ArcTangent(double y, double x);

/// From -pi/2 to pi/2; NaN outside -1 to 1.
double ArcSine(double sine);

} // namespace vorlund
