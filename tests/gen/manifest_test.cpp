// The generator's own counts of the emitted programs against the tables.
#include <gtest/gtest.h>

#include <fstream>
#include <map>
#include <sstream>
#include <string>
#include <vector>

namespace {

using Row = std::vector<std::string>;

std::vector<Row> read_csv(const std::string& path) {
    std::ifstream in(path);
    std::vector<Row> rows;
    std::string line;
    while (std::getline(in, line)) {
        if (line.empty() || line[0] == '#') continue;
        Row r;
        std::stringstream ss(line);
        std::string cell;
        while (std::getline(ss, cell, ',')) r.push_back(cell);
        if (!line.empty() && line.back() == ',') r.push_back("");
        rows.push_back(r);
    }
    return rows;
}

// A list of files joined by "|" (a ";" would split a definition on the
// compiler's command line).
std::vector<std::string> paths(const std::string& joined) {
    std::vector<std::string> v;
    std::stringstream ss(joined);
    std::string path;
    while (std::getline(ss, path, '|')) v.push_back(path);
    return v;
}

TEST(Manifest, EveryTabledCountMatchesTheEmittedProgram) {
    const std::vector<Row> manifest = read_csv(TQF_MANIFEST_PATH);
    ASSERT_GT(manifest.size(), 1u) << "manifest missing: " << TQF_MANIFEST_PATH;
    // The expected counts come in several files, each with its own header
    // (family, precision, length, then the columns its table fixes).
    struct Expected {
        const Row* header;
        Row cells;
    };
    std::vector<std::vector<Row>> files;
    std::vector<Expected> expected;
    for (const std::string& path : paths(TQF_EXPECTED_COUNTS_FILES)) {
        files.push_back(read_csv(path));
        ASSERT_GT(files.back().size(), 1u) << path;
    }
    for (const std::vector<Row>& rows : files)
        for (size_t i = 1; i < rows.size(); ++i) expected.push_back({&rows[0], rows[i]});

    // The manifest may hold more columns than the tables: cells are matched by column name.
    std::map<std::string, size_t> column;
    for (size_t c = 0; c < manifest[0].size(); ++c) column[manifest[0][c]] = c;
    std::map<std::string, Row> by_key;
    for (size_t i = 1; i < manifest.size(); ++i)
        by_key[manifest[i][0] + "," + manifest[i][1] + "," + manifest[i][2]] = manifest[i];

    // Cells known not to match yet: family,precision,length,column,reason.
    // Each is reported; a listed cell that matches must come off the list.
    std::map<std::string, std::string> known;  // "key,column" -> reason
    for (const std::string& path : paths(TQF_COUNT_MISMATCHES_FILES))
        for (const Row& r : read_csv(path)) {
            if (r.size() < 5 || r[0] == "family") continue;
            std::string reason = r[4];
            for (size_t i = 5; i < r.size(); ++i) reason += "," + r[i];
            known[r[0] + "," + r[1] + "," + r[2] + "," + r[3]] = reason;
        }
    std::map<std::string, bool> known_seen;

    std::map<std::string, std::pair<int, int>> per_precision;  // matched, total
    int reported = 0;
    for (const Expected& e : expected) {
        const Row& want = e.cells;
        const Row& header = *e.header;
        const std::string key = want[0] + "," + want[1] + "," + want[2];
        auto& tally = per_precision[want[0] + " " + want[1]];
        ++tally.second;
        auto it = by_key.find(key);
        if (it == by_key.end()) {
            ADD_FAILURE() << "no kernel " << key << " in the manifest";
            continue;
        }
        bool all = true;
        for (size_t c = 3; c < want.size(); ++c) {
            if (want[c].empty()) continue;
            const std::string& name = header[c];
            ASSERT_TRUE(column.count(name)) << "manifest has no column " << name;
            const std::string& got = it->second[column[name]];
            const std::string cell = key + "," + name;
            auto k = known.find(cell);
            const bool equal = got == want[c];
            if (k != known.end()) {
                known_seen[cell] = true;
                if (equal) {
                    ADD_FAILURE() << cell << " is listed as a known mismatch but matches (" << got
                                  << "): take it off the list";
                } else {
                    all = false;
                    ++reported;
                    std::printf("[ known mismatch ] %s: %s is %s, table says %s (%s)\n", key.c_str(),
                                name.c_str(), got.c_str(), want[c].c_str(), k->second.c_str());
                }
                continue;
            }
            if (!equal) {
                all = false;
                ADD_FAILURE() << key << ": " << name << " is " << got << ", table says " << want[c];
            }
        }
        tally.first += all;
    }
    for (const auto& [cell, reason] : known)
        if (!known_seen.count(cell)) ADD_FAILURE() << "known mismatch " << cell << " names no tabled cell";
    for (const auto& [what, tally] : per_precision)
        std::printf("[ manifest ] %s: %d/%d rows match\n", what.c_str(), tally.first, tally.second);
    std::printf("[ manifest ] %d known mismatched cells reported\n", reported);
}

}  // namespace

namespace {

// The inverse family is the forward description with conjugated roots: the
// same tree, lanes and operations, so the same counts row for row (the
// single-precision Bluestein pair keeps its own chirp, hence more constants).
TEST(Manifest, InverseCountsEqualForward) {
    const std::vector<Row> manifest = read_csv(TQF_MANIFEST_PATH);
    std::map<std::string, Row> fwd;
    for (const Row& r : manifest)
        if (r[0] == "cfwd") fwd[r[1] + "," + r[2]] = r;
    int compared = 0;
    for (const Row& r : manifest) {
        if (r[0] != "cinv") continue;
        const std::string key = r[1] + "," + r[2];
        auto it = fwd.find(key);
        ASSERT_NE(it, fwd.end()) << "inverse without forward kernel: " << key;
        const bool bluestein = r[1] == "32fc" && (r[2] == "47" || r[2] == "59");
        for (size_t c = 3; c < r.size(); ++c) {
            const std::string& column = manifest[0][c];
            if (column == "name") continue;
            // The Bluestein pair's inverse chirp has other signs lane by lane:
            // where lanes of mixed sign meet in one register, a sign flip
            // makes them one, so its flips (and with them its depth) differ.
            if (bluestein && (column == "constants" || column == "sign_flips" || column == "depth")) continue;
            EXPECT_EQ(r[c], it->second[c]) << key << " column " << column;
        }
        ++compared;
    }
    EXPECT_EQ(compared, static_cast<int>(fwd.size()));
}

}  // namespace

namespace {

// The real kernels negate nothing by a sign operation (a negated output is
// stored as 0.0 - t) and multiply by no trivial constant.
TEST(Manifest, RealKernelsHaveNoSignOperation) {
    const std::vector<Row> manifest = read_csv(TQF_MANIFEST_PATH);
    std::map<std::string, size_t> column;
    for (size_t c = 0; c < manifest[0].size(); ++c) column[manifest[0][c]] = c;
    ASSERT_TRUE(column.count("sign_flips") && column.count("trivial_muls"));
    int checked = 0;
    for (const Row& r : manifest) {
        const bool forward = r[0].rfind("rfwd_", 0) == 0;
        if (!forward && r[0].rfind("rinv_", 0) != 0 && r[0] != "hartley") continue;
        EXPECT_EQ(r[column["sign_flips"]], "0") << r[3];
        EXPECT_EQ(r[column["trivial_muls"]], "0") << r[3];
        // Every output of an inverse or Hartley kernel is a sum or difference
        // times the scale.
        if (!forward) EXPECT_EQ(r[column["zero_sub_stores"]], "0") << r[3];
        ++checked;
    }
    EXPECT_EQ(checked, (2 * 3 + 1) * 2 * 63);
}

// The three layouts of a real length are one program with other load or
// store offsets: every count is the same.
TEST(Manifest, RealLayoutsCountTheSame) {
    const std::vector<Row> manifest = read_csv(TQF_MANIFEST_PATH);
    std::map<std::string, Row> ccs;
    for (const Row& r : manifest)
        if (r[0] == "rfwd_ccs" || r[0] == "rinv_ccs") ccs[r[0].substr(0, 5) + "," + r[1] + "," + r[2]] = r;
    int compared = 0;
    for (const Row& r : manifest) {
        if (r[0] != "rfwd_pack" && r[0] != "rfwd_perm" && r[0] != "rinv_pack" && r[0] != "rinv_perm") continue;
        auto it = ccs.find(r[0].substr(0, 5) + "," + r[1] + "," + r[2]);
        ASSERT_NE(it, ccs.end()) << r[0] << " " << r[1] << " " << r[2] << " without CCS kernel";
        for (size_t c = 4; c < r.size(); ++c)
            EXPECT_EQ(r[c], it->second[c]) << r[3] << " column " << manifest[0][c];
        ++compared;
    }
    EXPECT_EQ(compared, 2 * static_cast<int>(ccs.size()));
}

}  // namespace
