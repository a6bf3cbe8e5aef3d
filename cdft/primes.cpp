#include "primes.h"

#include <stdexcept>

namespace tqfcdft {

void build_prime_kernel(tqfgen::Kernel& k, int) {
    throw std::runtime_error("no prime kernel of length " + std::to_string(k.length));
}

}  // namespace tqfcdft
