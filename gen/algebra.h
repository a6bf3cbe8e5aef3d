// Value algebras: what a complex operation of a block becomes in each form.
//
// Blocks are written once, as templates over an algebra `A` with a value type
// `A::C` and these operations:
//   add, sub, neg        complex sum, difference, negation
//   mul_i(x, s)          x times -i (s = -1) or +i (s = +1)
//   mul_real(x, c)       x times a real constant
//   rot_butterfly(x,y,s) {x + (s i) y, x - (s i) y}
//   rot_scale(x, c, s)   x times c times (s i): the rotation folded into the
//                        constant where the form allows it
//   settle(x)            end of a linear combination (rounds widened values)
//   cmul(x, w, leaf)     x times a general complex root, uniform over lanes
// and, optionally, eighth(x, s) for a cheaper (1 + s i)/sqrt2 product.
// twiddle() (twiddle.h) builds every product by a root from these.
//
// SplitAlg (split_alg.h): real and imaginary parts in separate registers,
// any register type, optional widening. PairAlg (pair_alg.h): [re, im] in one
// two-double register.
#pragma once

#include "pair_alg.h"
#include "roots.h"
#include "split_alg.h"
#include "twiddle.h"
