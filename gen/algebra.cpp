#include "algebra.h"

namespace tqfgen {

static const long double kR = 0.707106781186547524400844362104849039L;
static const long double kEighths[8][2] = {{1, 0}, {kR, kR},   {0, 1},  {-kR, kR},
                                           {-1, 0}, {-kR, -kR}, {0, -1}, {kR, -kR}};

Root unit_root(long k, long n, int sign) {
    k %= n;
    if (k < 0) k += n;
    long double c, s;
    if ((8 * k) % n == 0) {
        c = kEighths[8 * k / n][0];
        s = kEighths[8 * k / n][1];
    } else {
        // The lower half mirrors the upper: the same argument gives both.
        const long q = 2 * k > n ? n - k : k;
        const long double a = 2 * 3.141592653589793238462643383279502884L * q / n;
        c = cosl(a);
        s = q == k ? sinl(a) : -sinl(a);
    }
    return Root(c, sign > 0 ? s : -s);
}

int eighth_turn(Root w) {
    for (int j = 0; j < 8; ++j)
        if (w.real() == kEighths[j][0] && w.imag() == kEighths[j][1]) return j;
    return -1;
}

// Doubles a sum of products by doubling its constants, so that the factor 2
// of x + x costs nothing; looks through a rounding (the products of a
// widened combination sit under its narrowing).
Handle SplitAlg::twice(Handle h, int levels) {
    // Copies, not references: the calls below add nodes.
    const Node n = g_.node(h.id);
    if (n.op == Op::Narrow) {
        const Handle r = g_.narrow(twice(Handle{n.a, false}, levels));
        return h.neg ? -r : r;
    }
    if (n.op == Op::Mul && levels > 0) {
        std::vector<double> v;
        bool unit = true;
        for (double x : g_.node(n.b).cval) {
            v.push_back(2 * x);
            unit = unit && 2 * x == 1.0;
        }
        // Twice a half is the value itself, not a product by 1.0.
        if (unit && g_.node(n.a).ty == n.ty) return h.neg ? -Handle{n.a, false} : Handle{n.a, false};
        const Handle c = g_.constant(g_.node(n.b).ty, v);
        const Handle r = g_.mul(Handle{n.a, false}, c);
        return h.neg ? -r : r;
    }
    if ((n.op == Op::Add || n.op == Op::Sub) && levels > 1) {
        const bool products = g_.node(n.a).op == Op::Mul && g_.node(n.b).op == Op::Mul;
        if (products) {
            const Handle x = twice(Handle{n.a, false}, levels - 1);
            const Handle y = twice(Handle{n.b, false}, levels - 1);
            const Handle r = n.op == Op::Add ? g_.add(x, y) : g_.sub(x, y);
            return h.neg ? -r : r;
        }
    }
    return g_.add(h, h);
}

}  // namespace tqfgen
