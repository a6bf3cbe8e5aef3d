#include "plan_factor.h"

#include "tqfgen.h"

int32_t PlanChooseFactor(int32_t v) {
    static const int32_t kRows[][2] = {{512, 32}, {128, 16}, {32, 8}, {16, 4}, {4, 2}};
    for (const auto& row : kRows)
        if (v >= row[0] && v % row[1] == 0) return row[1];
    return tqfStsBadSize;
}
