// Tree helpers of the prime constructions.
#pragma once

#include <memory>
#include <stdexcept>

#include "tree.h"

namespace tqfcdft {

// The same factors acting in reversed order: the inverse transform of a
// convolution runs the chain of the forward one backwards.
inline std::shared_ptr<const Tree> mirror_tree(const Tree& t) {
    auto r = std::make_shared<Tree>(t);
    if (!t.blocks.empty()) throw std::runtime_error("mirror_tree: a first stage named block by block");
    if (!t.leaf()) {
        r->left = mirror_tree(*t.right);
        r->right = mirror_tree(*t.left);
    }
    return r;
}

}  // namespace tqfcdft
