// The three scale values a kernel of length N must hold, computed here
// independently of the generator: 1/N and 1/sqrt(N) as the nearest double
// (proved with exact integer arithmetic, since 1.0/std::sqrt(N) can be one
// unit off), and in single precision the double quotients rounded to float.
#pragma once

namespace tqftest {

// The double nearest to 1/sqrt(n), for n >= 1.
double nearest_inv_sqrt(int n);

// Scale of a flag, by which flags divide by N: `by_n` is true when the flag
// is the kernel's own dividing flag (or, for families without a direction,
// either of the first two).
template <class T> T scale_value(int n, int flag, bool by_n);

}  // namespace tqftest
