// What differs between the single- and double-precision planners: element
// type and size, lanes per vector, root type, and how angles are evaluated.
#pragma once

#include <cstdint>

#include "plan_classes.h"

// sin(pi x) and cos(pi x) through the standard double functions. The single
// versions widen x, multiply by pi in double and narrow the result once.
float PlanSinPi_32f(float x);
float PlanCosPi_32f(float x);
double PlanSinPi_64f(double x);
double PlanCosPi_64f(double x);

struct PlanF32 {
    typedef float T;
    typedef tqfgDCT4Spec_32f Handle;
    static constexpr int32_t lanes = 4;
    static constexpr int32_t width = 4;
    static T SinPi(T x) { return PlanSinPi_32f(x); }
    static T CosPi(T x) { return PlanCosPi_32f(x); }
    // Numerator and denominator are rounded to single and divided in single:
    // the angle carries a single-precision rounding before it is widened.
    static T Ratio(int32_t num, int32_t den) {
        return static_cast<float>(num) / static_cast<float>(den);
    }
};

struct PlanF64 {
    typedef double T;
    typedef tqfgDCT4Spec_64f Handle;
    static constexpr int32_t lanes = 2;
    static constexpr int32_t width = 8;
    static T SinPi(T x) { return PlanSinPi_64f(x); }
    static T CosPi(T x) { return PlanCosPi_64f(x); }
    static T Ratio(int32_t num, int32_t den) {
        return static_cast<double>(num) / static_cast<double>(den);
    }
};

// Signed 32-bit arithmetic that wraps instead of being undefined.
inline int32_t PlanAdd(int32_t a, int32_t b) {
    return static_cast<int32_t>(static_cast<uint32_t>(a) + static_cast<uint32_t>(b));
}
inline int32_t PlanMul(int32_t a, int32_t b) {
    return static_cast<int32_t>(static_cast<uint32_t>(a) * static_cast<uint32_t>(b));
}
// PlanAlign32 of a signed count, read back as signed.
inline int32_t PlanAlign32s(int32_t count) {
    return static_cast<int32_t>(PlanAlign32(static_cast<uint32_t>(count)));
}

// Bytes of a block of n elements: n * w, wrapping.
template <class P>
inline int32_t PlanElementBytes(int32_t n) { return PlanMul(n, P::width); }
