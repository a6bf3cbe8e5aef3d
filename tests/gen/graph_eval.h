// An interpreter of generated programs: runs a kernel's expression graph in
// long double, lane by lane, on a test's input.
//
// It checks what a description builds, not how the emitted code rounds: loads,
// constants, additions, products, sign flips and lane gathers are taken as the
// emitter writes them, while widening and narrowing are identities and every
// operation is carried out in long double. Constants are used as the graph
// holds them (already rounded to float for single-precision registers), so a
// correct program differs from the exact transform by its constants' rounding
// only.
#pragma once

#include <complex>
#include <vector>

#include "graph.h"
#include "kernel.h"

namespace tqftest {

using Lanes = std::vector<long double>;  // one value per lane of a register (1, 2 or 4)

// Values of every node of `g` for the complex input `x` (element n = x[n]).
std::vector<Lanes> evaluate_graph(const tqfgen::Graph& g, const std::vector<std::complex<long double>>& x);

// The value of a handle of a scalar graph in the values `v` of evaluate_graph:
// an invalid handle is an exact zero, a pending negation is applied.
long double scalar_value(const std::vector<Lanes>& v, const tqfgen::Handle& h);

// The kernel's N outputs, gathered the way the emitter stores them: scalar
// outputs as re0, im0, re1, ...; pair outputs as one [re, im] register per
// element; planar stores as element index[l] = (re lane l, im lane l) for
// each stored lane. Output handles are read by node, as the emitter reads
// them: their pending negations must have been settled into the graph.
// Throws std::logic_error if an element is stored twice or never.
std::vector<std::complex<long double>> evaluate_kernel(const tqfgen::Kernel& k,
                                                       const std::vector<std::complex<long double>>& x);

}  // namespace tqftest
