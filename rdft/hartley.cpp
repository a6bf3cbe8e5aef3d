#include "hartley.h"

#include <set>

#include "forward.h"
#include "inverse.h"

namespace tqfrdft {

using tqfgen::Cx;
using tqfgen::Handle;

bool hartley_form_a(int n) {
    // Lengths 2, 3, 4, 5, 7 and 17 cost the same in both forms; they take A.
    static const std::set<int> a = {2,  3,  4,  5,  6,  7,  8,  9,  11, 16, 17, 19, 21, 22, 24, 26, 29,
                                    38, 39, 41, 47, 49, 50, 52, 57, 58, 59, 61, 63};
    return a.count(n) != 0;
}

std::vector<Handle> hartley(tqfgen::SplitAlg& a, int n, const std::vector<Handle>& x) {
    const int m = (n - 1) / 2;
    if (hartley_form_a(n)) {
        // H[k] = Re X[k] - Im X[k], H[n-k] = Re X[k] + Im X[k]: a sign the
        // forward program holds negated turns into the other operation here.
        const std::vector<Cx> X = forward_real(a, n, x);
        std::vector<Handle> H(n);
        H[0] = X[0].re;
        if (n % 2 == 0) H[n / 2] = X[n / 2].re;
        for (int k = 1; k <= m; ++k) {
            H[k] = a.sub_r(X[k].re, X[k].im);
            H[n - k] = a.add_r(X[k].re, X[k].im);
        }
        return H;
    }
    // The inverse program with x[0], x[n/2], u[k] = x[k] + x[n-k] and
    // -v[k] = x[n-k] - x[k] for the harmonics, none of them doubled.
    std::vector<Cx> F(n / 2 + 1);
    F[0].re = x[0];
    if (n % 2 == 0) F[n / 2].re = x[n / 2];
    for (int k = 1; k <= m; ++k) {
        F[k].re = a.add_r(x[k], x[n - k]);
        F[k].im = a.sub_r(x[n - k], x[k]);
    }
    return inverse_real_weighted(a, n, F, false);
}

}  // namespace tqfrdft
