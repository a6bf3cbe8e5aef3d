// Every table value comes from its own evaluation (no recurrence), so the
// double tables are as good as the library's sin and cos.
#include <cmath>

#include "plan_precision.h"

static const double kPi = 3.14159265358979323846;

float PlanSinPi_32f(float x) { return static_cast<float>(std::sin(static_cast<double>(x) * kPi)); }
float PlanCosPi_32f(float x) { return static_cast<float>(std::cos(static_cast<double>(x) * kPi)); }
double PlanSinPi_64f(double x) { return std::sin(x * kPi); }
double PlanCosPi_64f(double x) { return std::cos(x * kPi); }
