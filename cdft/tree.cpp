#include "tree.h"

#include <cctype>
#include <stdexcept>
#include <utility>

namespace tqfcdft {
namespace {

struct Parser {
    const std::string& s;
    size_t i = 0;

    void skip() {
        while (i < s.size() && s[i] == ' ') ++i;
    }
    std::shared_ptr<const Tree> operand() {
        skip();
        if (i < s.size() && s[i] == '(') {
            ++i;
            auto t = expr();
            skip();
            if (i >= s.size() || s[i] != ')') throw std::runtime_error("unbalanced tree: " + s);
            ++i;
            return t;
        }
        auto leaf = std::make_shared<Tree>();
        while (i < s.size() && (std::isdigit(static_cast<unsigned char>(s[i])) || s[i] == 'w' || s[i] == 'v' || s[i] == 'd' || s[i] == 'r')) leaf->block += s[i++];
        if (leaf->block.empty()) throw std::runtime_error("bad tree: " + s);
        // A Rader block with its own form: "23[2 G 11d / 11d / 11d]".
        if (i < s.size() && s[i] == '[') {
            int open = 0;
            do {
                if (s[i] == '[') ++open;
                if (s[i] == ']') --open;
                leaf->block += s[i++];
            } while (open > 0 && i < s.size());
            if (open != 0) throw std::runtime_error("unbalanced Rader form in tree: " + s);
        }
        leaf->size = std::stoi(leaf->block);
        return leaf;
    }
    // "{a | b | ...}": a first stage that names a tree per block. Their
    // lengths are checked where the blocks run (first_stage_block); the
    // sine by halves reads them as its branches' own sine trees.
    std::vector<std::shared_ptr<const Tree>> block_list() {
        std::vector<std::shared_ptr<const Tree>> blocks;
        skip();
        if (i >= s.size() || s[i] != '{') return blocks;
        do {
            ++i;
            blocks.push_back(expr());
            skip();
            if (i >= s.size()) throw std::runtime_error("unbalanced block list in tree: " + s);
        } while (s[i] == '|');
        if (s[i] != '}') throw std::runtime_error("unbalanced block list in tree: " + s);
        ++i;
        return blocks;
    }
    std::shared_ptr<const Tree> expr() {
        auto blocks = block_list();
        auto left = blocks.empty() ? operand() : blocks.front();
        for (;;) {
            skip();
            if (i >= s.size() || (s[i] != 'G' && s[i] != 'T')) {
                if (!blocks.empty()) throw std::runtime_error("a block list must be a node's first stage: " + s);
                return left;
            }
            auto node = std::make_shared<Tree>();
            node->op = s[i++];
            if (node->op == 'G' && i < s.size() && s[i] == '<') {
                const size_t close = s.find('>', i);
                if (close == std::string::npos) throw std::runtime_error("unbalanced index map in tree: " + s);
                node->map = s.substr(i + 1, close - i - 1);
                i = close + 1;
            }
            node->left = left;
            node->right = operand();
            node->size = node->left->size * node->right->size;
            if (!blocks.empty() && static_cast<int>(blocks.size()) != node->right->size)
                throw std::runtime_error("a block list needs one tree per block: " + s);
            node->blocks = std::move(blocks);
            blocks.clear();
            left = node;
        }
    }
};

}  // namespace

const Tree& first_stage_block(const Tree& t, int b) {
    if (t.blocks.empty()) return *t.left;
    const Tree& block = *t.blocks.at(b);
    if (block.size != t.left->size) throw std::runtime_error("first stage blocks of unequal length");
    return block;
}

std::shared_ptr<const Tree> parse_tree(const std::string& text) {
    Parser p{text};
    auto t = p.expr();
    p.skip();
    if (p.i != text.size()) throw std::runtime_error("trailing text in tree: " + text);
    return t;
}

}  // namespace tqfcdft
