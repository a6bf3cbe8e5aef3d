#include "prime_blocks.h"

#include <stdexcept>

namespace tqfcdft {

std::vector<tqfgen::Cx> prime_block(tqfgen::SplitAlg&, int p, const std::vector<tqfgen::Cx>&, int) {
    throw std::runtime_error("no prime block " + std::to_string(p));
}

std::vector<tqfgen::Handle> prime_block(tqfgen::PairAlg&, int p, const std::vector<tqfgen::Handle>&, int) {
    throw std::runtime_error("no prime block " + std::to_string(p));
}

}  // namespace tqfcdft
