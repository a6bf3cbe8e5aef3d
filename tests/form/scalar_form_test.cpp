// Kernels of the scalar form execute no packed arithmetic. The compiler may
// turn scalar code into vector code of its own accord (superword-level
// vectorisation) without changing a bit, so the form is checked on the built
// library's machine code: every kernel that the manifest lists as scalar is
// found in the disassembly, and none of its instructions is a packed
// arithmetic one.
#include <gtest/gtest.h>

#include <cstdio>
#include <fstream>
#include <map>
#include <regex>
#include <sstream>
#include <string>
#include <vector>

namespace {

// Instruction lines of every function in the disassembly, by symbol name.
std::map<std::string, std::vector<std::string>> disassemble(const std::string& lib) {
    std::map<std::string, std::vector<std::string>> functions;
    const std::string cmd = "objdump -d --no-show-raw-insn " + lib;
    FILE* p = popen(cmd.c_str(), "r");
    if (!p) return functions;
    std::vector<std::string>* current = nullptr;
    char buf[4096];
    static const std::regex header("^[0-9a-f]+ <([^>]+)>:");
    while (std::fgets(buf, sizeof buf, p)) {
        const std::string line(buf);
        std::smatch m;
        if (std::regex_search(line, m, header)) current = &functions[m[1]];
        else if (current && line.size() > 1) current->push_back(line);
    }
    pclose(p);
    return functions;
}

// Scalar kernels from the manifest: the name column of rows in the scalar form.
std::vector<std::string> scalar_kernels(const std::string& manifest) {
    std::ifstream in(manifest);
    std::string line;
    std::getline(in, line);
    std::map<std::string, size_t> col;
    {
        std::stringstream ss(line);
        std::string c;
        for (size_t i = 0; std::getline(ss, c, ','); ++i) col[c] = i;
    }
    std::vector<std::string> names;
    if (!col.count("name") || !col.count("form")) return names;
    while (std::getline(in, line)) {
        std::vector<std::string> cells;
        std::stringstream ss(line);
        std::string c;
        while (std::getline(ss, c, ',')) cells.push_back(c);
        if (cells.size() > col["form"] && cells[col["form"]] == "scalar") names.push_back(cells[col["name"]]);
    }
    return names;
}

TEST(KernelForm, ScalarKernelsExecuteNoPackedArithmetic) {
    const auto functions = disassemble(TQF_LIBRARY_PATH);
    ASSERT_FALSE(functions.empty()) << "no disassembly of " << TQF_LIBRARY_PATH;
    const std::vector<std::string> names = scalar_kernels(TQF_MANIFEST_PATH);
    ASSERT_FALSE(names.empty()) << "no scalar kernels in " << TQF_MANIFEST_PATH;
    // Packed arithmetic of SSE to SSE3: the ps/pd forms of the arithmetic,
    // the horizontal and alternating sums, and packed conversions.
    static const std::regex packed(
        "\\s(add|sub|mul|div|min|max|sqrt|addsub|hadd|hsub)p[sd]\\s|\\s(rcp|rsqrt)ps\\s|\\scvt(ps2pd|pd2ps)\\s");
    static const std::regex scalar_op("\\s(add|sub|mul)s[sd]\\s");
    for (const std::string& name : names) {
        auto it = functions.find(name);
        if (it == functions.end()) {
            ADD_FAILURE() << name << ": not in the disassembly";
            continue;
        }
        int scalar = 0;
        for (const std::string& insn : it->second) {
            if (std::regex_search(insn, packed)) ADD_FAILURE() << name << " executes packed arithmetic:" << insn;
            scalar += std::regex_search(insn, scalar_op);
        }
        EXPECT_GT(scalar, 0) << name << ": no scalar arithmetic found; is this the kernel's body?";
    }
    std::printf("[ form ] %zu scalar kernels checked\n", names.size());
}

}  // namespace
