// The evaluator against values worked out by hand, and the graph's promise
// that a node reference outlives later additions.
#include <gtest/gtest.h>

#include <complex>
#include <vector>

#include "graph_eval.h"

namespace {

using namespace tqfgen;
using tqftest::Lanes;
using cld = std::complex<long double>;

const std::vector<cld> kInput = {{1, 2}, {3, -4}, {0.5L, 8}, {-2, 0.25L}};

Lanes at(const std::vector<Lanes>& v, Handle h) {
    EXPECT_FALSE(h.neg);
    return v.at(h.id);
}

TEST(GraphEval, EveryNodeKind) {
    Graph g;
    // Scalars: a load, a widening to double, a product, a narrowing back.
    const Handle s = g.load_scalar(Ty::F32, 5);                    // 8: flat offset 5, Im x[2]
    const Handle w = g.widen(s);                                   // 8
    const Handle m = g.mul(w, g.constant(Ty::F64, {0.25}));        // 2
    const Handle n = g.narrow(m);                                  // 2
    const Handle sn = g.add(n, s);                                 // 10
    const Handle neg_s = g.materialize(-s);                        // -8
    // Two-lane double: a pair load, a lane-wise product, add-subtract, a
    // one-lane sign flip, a lane swap.
    const Handle p = g.load_pair(1);                               // [3, -4]
    const Handle pm = g.mul(p, g.constant(Ty::V2D, {2, -0.5}));   // [6, 2]
    const Handle as = g.addsub(p, pm);                             // [3 - 6, -4 + 2]
    const Handle pf = g.flip(as, 2u);                              // [-3, 2]
    const Handle sw = g.swap_pair(pf);                             // [2, -3]
    // Four-lane float: planar loads with a missing lane, add, sub, flip,
    // add-subtract, and a gather from three registers and a zero lane.
    const Handle im = g.load_planar({3, -1, 0, 2}, 1);             // [0.25, 0, 2, 8]
    const Handle re = g.load_planar({0, 1, 2, 3}, 0);              // [1, 3, 0.5, -2]
    const Handle sum = g.add(im, re);                              // [1.25, 3, 2.5, 6]
    const Handle diff = g.sub(im, re);                             // [-0.75, -3, 1.5, 10]
    const Handle f = g.flip(diff, 0x5u);                           // [0.75, -3, -1.5, 10]
    const Handle as4 = g.addsub(sum, f);                           // [0.5, 0, 4, 16]
    const Handle gath = g.shuffle(Ty::V4F, {{f, 3}, {Handle{}, 0}, {sum, 0}, {re, 1}});  // [10, 0, 1.25, 3]

    const std::vector<Lanes> v = tqftest::evaluate_graph(g, kInput);
    EXPECT_EQ(at(v, s), (Lanes{8}));
    EXPECT_EQ(at(v, w), (Lanes{8}));
    EXPECT_EQ(at(v, m), (Lanes{2}));
    EXPECT_EQ(at(v, n), (Lanes{2}));
    EXPECT_EQ(at(v, sn), (Lanes{10}));
    EXPECT_EQ(at(v, neg_s), (Lanes{-8}));
    EXPECT_EQ(at(v, p), (Lanes{3, -4}));
    EXPECT_EQ(at(v, pm), (Lanes{6, 2}));
    EXPECT_EQ(at(v, as), (Lanes{-3, -2}));
    EXPECT_EQ(at(v, pf), (Lanes{-3, 2}));
    EXPECT_EQ(at(v, sw), (Lanes{2, -3}));
    EXPECT_EQ(at(v, im), (Lanes{0.25L, 0, 2, 8}));
    EXPECT_EQ(at(v, re), (Lanes{1, 3, 0.5L, -2}));
    EXPECT_EQ(at(v, sum), (Lanes{1.25L, 3, 2.5L, 6}));
    EXPECT_EQ(at(v, diff), (Lanes{-0.75L, -3, 1.5L, 10}));
    EXPECT_EQ(at(v, f), (Lanes{0.75L, -3, -1.5L, 10}));
    EXPECT_EQ(at(v, as4), (Lanes{0.5L, 0, 4, 16}));
    EXPECT_EQ(at(v, gath), (Lanes{10, 0, 1.25L, 3}));
}

// Planar stores put lane l of the re and im registers at element index[l].
TEST(GraphEval, PlanarStoresByLaneIndex) {
    Kernel k;
    k.length = 3;
    k.form = Form::Planar;
    const Handle re = k.g.load_planar({0, 1, 2, -1}, 0);
    const Handle im = k.g.load_planar({0, 1, 2, -1}, 1);
    PlanarStore st{re, im, {2, 0, 1, -1}};
    k.planar_out.push_back(st);
    const std::vector<cld> out = tqftest::evaluate_kernel(k, {{1, 2}, {3, -4}, {0.5L, 8}});
    EXPECT_EQ(out, (std::vector<cld>{{3, -4}, {0.5L, 8}, {1, 2}}));
    // An element stored twice (and so another never) is refused.
    k.planar_out[0].index[3] = 2;
    k.planar_out[0].index[2] = 2;
    EXPECT_THROW(tqftest::evaluate_kernel(k, {{1, 2}, {3, -4}, {0.5L, 8}}), std::logic_error);
}

// Descriptions hold node references while they add nodes.
TEST(GraphNodes, ReferencesSurviveGrowth) {
    Graph g;
    const Handle first = g.load_pair(7);
    const Node& ref = g.node(first.id);
    const Node* const addr = &ref;
    for (int i = 0; i < 10000; ++i) g.splat(Ty::V2D, 1.0 + i);
    ASSERT_EQ(g.size(), 10001);
    EXPECT_EQ(&g.node(first.id), addr);
    EXPECT_EQ(ref.op, Op::LoadPair);
    EXPECT_EQ(ref.ty, Ty::V2D);
    EXPECT_EQ(ref.index[0], 7);
    EXPECT_EQ(ref.live, 3u);
}

}  // namespace
