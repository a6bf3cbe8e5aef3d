// Factor trees: "A G B" (Good-Thomas), "A T B" (Cooley-Tukey with twiddles),
// the A-point transforms acting first; brackets nest. A Good-Thomas node may
// name its index map in angle brackets, "A G<rur> B" (see real_dft.h).
#pragma once

#include <memory>
#include <string>

namespace tqfcdft {

struct Tree {
    std::string block;  // leaf: block name ("2", "5w", ...); empty for a node
    char op = 0;        // 'G' or 'T' for a node
    std::string map;    // a G node's stated index map ("rur", "neg,lower", ...); empty: the reader's rule
    std::shared_ptr<const Tree> left, right;
    int size = 0;
    bool leaf() const { return op == 0; }
};

std::shared_ptr<const Tree> parse_tree(const std::string& text);

}  // namespace tqfcdft
