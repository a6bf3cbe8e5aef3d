#pragma once

#include <cstdint>

// The factor for a quotient v: the first row of (bound, factor) = (512, 32),
// (128, 16), (32, 8), (16, 4), (4, 2) with v >= bound and v divisible by the
// factor. A row whose bound is met but whose factor does not divide falls
// through to the next. Returns the factor, or tqfStsBadSize (-6) when no row
// applies (v below 4, or odd). Never 1.
int32_t PlanChooseFactor(int32_t v);
