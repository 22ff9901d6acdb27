// Own approximations in single precision. The stencil halftones depend on their last bit, so the
// platform's mathematics library cannot replace them.
// SPDX-License-Identifier: Apache-2.0
#ifndef KORVEL_TATTOO_NUMERIC_H
#define KORVEL_TATTOO_NUMERIC_H

// x if x is not below 0, else -x.
float myabs(float x);

// Square root by Newton's iteration from x / 2; -1 for a negative x. Never returns for an x that
// is not finite.
float my_sqrt(float x);

// e^x by at most 20 terms of Taylor's series, so the result is too small for large x.
float my_exp(float x);

// Natural logarithm by a fixed-point iteration on my_exp; -1 for x <= 0. Never returns for an x
// that is not a number.
float my_ln(float x);

// base^exponent as my_exp(exponent * my_ln(base)). A base of 0 gives 1, 0 or -1 by the sign of the
// exponent; a negative base gives -1 for a fractional exponent, my_exp(-exponent) otherwise.
float my_pow(float base, float exponent);

// Half away from zero, by truncation.
int my_round(float x);

// low below low, high from high on, else value. With low > high all but those below low give high.
int myClamp(int value, int low, int high);

#endif
