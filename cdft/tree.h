// Factor trees: "A G B" (Good-Thomas), "A T B" (Cooley-Tukey with twiddles),
// the A-point transforms acting first; brackets nest. A Good-Thomas node may
// name its index map in angle brackets, "A G<rur> B" (see real_dft.h). The
// first stage may name a tree per block, "{a | b | c | d} T 4": first-stage
// block j (the inputs j, j + B, ... of a T node) runs the j-th tree; all
// have the same length.
#pragma once

#include <memory>
#include <string>
#include <vector>

namespace tqfcdft {

struct Tree {
    std::string block;  // leaf: block name ("2", "5w", ...); empty for a node
    char op = 0;        // 'G' or 'T' for a node
    std::string map;    // a G node's stated index map ("rur", "neg,lower", ...); empty: the reader's rule
    std::shared_ptr<const Tree> left, right;
    std::vector<std::shared_ptr<const Tree>> blocks;  // a node's first stage block by block; empty: all left
    int size = 0;
    bool leaf() const { return op == 0; }
};

std::shared_ptr<const Tree> parse_tree(const std::string& text);

// The tree that first-stage block b of node t runs, of the stage's length.
const Tree& first_stage_block(const Tree& t, int b);

}  // namespace tqfcdft
