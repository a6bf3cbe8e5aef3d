// Every kernel's output bits against the committed lock file. A deliberate
// change rewrites the file: TQF_BIT_LOCK_WRITE=1 ./test_bit_lock (see the
// README); any other difference is named here, kernel by kernel.
#include <gtest/gtest.h>

#include <cstdlib>
#include <fstream>
#include <map>
#include <sstream>

#include "bit_lock.h"

namespace {

using tqftest::LockCase;

std::map<std::string, std::string> read_lock(const std::string& path) {
    std::map<std::string, std::string> rows;
    std::ifstream in(path);
    std::string line;
    while (std::getline(in, line)) {
        if (line.empty() || line[0] == '#') continue;
        const size_t cut = line.rfind(' ');
        rows[line.substr(0, cut)] = line.substr(cut + 1);
    }
    return rows;
}

TEST(BitLock, EveryKernelGivesItsLockedBits) {
    const std::vector<LockCase> cases = tqftest::lock_cases();
    std::map<std::string, std::string> got;
    for (const LockCase& c : cases) {
        std::string error;
        const std::string d = tqftest::digest_case(c, &error);
        ASSERT_TRUE(error.empty()) << error;
        ASSERT_TRUE(got.emplace(c.key, d).second) << "case listed twice: " << c.key;
    }

    // Rows of another platform are kept as they are.
    const std::string own_tag = std::string(" @") + tqftest::lock_platform();
    auto foreign = [&](const std::string& key) {
        const size_t at = key.rfind(" @");
        return at != std::string::npos && key.substr(at) != own_tag;
    };
    const std::map<std::string, std::string> locked = read_lock(TQF_BIT_LOCK_PATH);

    const char* write = std::getenv("TQF_BIT_LOCK_WRITE");
    if (write && *write && std::string(write) != "0") {
        std::ofstream out(TQF_BIT_LOCK_PATH);
        out << "# Output bits of every kernel on the fixed inputs of tests/lock/bit_lock.cpp:\n"
            << "# FNV-1a 64 over the outputs of five calls (out of place, src or dst one\n"
            << "# scalar off alignment, in place aligned and moved). Rewrite only for a\n"
            << "# deliberate change: TQF_BIT_LOCK_WRITE=1 <build>/tests/test_bit_lock, in the\n"
            << "# x86-64 and the i386 build (rows marked @platform belong to one of them).\n";
        std::map<std::string, std::string> rows = got;
        for (const auto& [key, d] : locked)
            if (foreign(key)) rows[key] = d;
        for (const auto& [key, d] : rows) out << key << ' ' << d << '\n';
        ASSERT_TRUE(out.good()) << "cannot write " << TQF_BIT_LOCK_PATH;
        std::printf("[ bit lock ] wrote %zu rows to %s\n", rows.size(), TQF_BIT_LOCK_PATH);
        return;
    }

    ASSERT_FALSE(locked.empty()) << "no lock file at " << TQF_BIT_LOCK_PATH;
    int changed = 0;
    for (const auto& [key, d] : got) {
        auto it = locked.find(key);
        if (it == locked.end()) {
            ADD_FAILURE() << key << ": not in the lock file";
        } else if (it->second != d) {
            ++changed;
            ADD_FAILURE() << key << ": bits changed (locked " << it->second << ", now " << d << ")";
        }
    }
    for (const auto& [key, d] : locked)
        if (!got.count(key) && !foreign(key)) ADD_FAILURE() << key << ": locked, but no such kernel is built";
    std::printf("[ bit lock ] %zu cases, %d changed\n", got.size(), changed);
}

}  // namespace
