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

TEST(Manifest, EveryTabledCountMatchesTheEmittedProgram) {
    const std::vector<Row> manifest = read_csv(TQF_MANIFEST_PATH);
    ASSERT_GT(manifest.size(), 1u) << "manifest missing: " << TQF_MANIFEST_PATH;
    const Row& header = manifest[0];
    // The expected counts come in several files ('|'-separated), each with the same header.
    std::vector<Row> expected{header};
    std::stringstream files(TQF_EXPECTED_COUNTS_FILES);
    std::string path;
    while (std::getline(files, path, '|')) {
        const std::vector<Row> rows = read_csv(path);
        ASSERT_GT(rows.size(), 1u) << path;
        ASSERT_EQ(rows[0], header) << path;
        expected.insert(expected.end(), rows.begin() + 1, rows.end());
    }

    std::map<std::string, Row> by_key;
    for (size_t i = 1; i < manifest.size(); ++i)
        by_key[manifest[i][0] + "," + manifest[i][1] + "," + manifest[i][2]] = manifest[i];

    // Cells known not to match, each with the reason; they are reported, not
    // failed, and a listed cell that matches after all is a failure.
    std::map<std::string, std::string> known;  // "family,precision,length,column" -> reason
    for (const Row& r : read_csv(TQF_COUNT_MISMATCHES_PATH))
        if (r.size() >= 5 && r[0] != "family") known[r[0] + "," + r[1] + "," + r[2] + "," + r[3]] = r[4];

    std::map<std::string, std::pair<int, int>> per_precision;  // matched, total
    for (size_t i = 1; i < expected.size(); ++i) {
        const Row& want = expected[i];
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
            auto listed = known.find(key + "," + header[c]);
            if (it->second[c] != want[c]) {
                all = false;
                if (listed == known.end())
                    ADD_FAILURE() << key << ": " << header[c] << " is " << it->second[c] << ", table says " << want[c];
                else
                    std::printf("[ mismatch ] %s %s: %s, table %s (%s)\n", key.c_str(), header[c].c_str(),
                                it->second[c].c_str(), want[c].c_str(), listed->second.c_str());
            } else if (listed != known.end()) {
                ADD_FAILURE() << key << ": " << header[c] << " matches now; remove it from the known mismatches";
            }
        }
        tally.first += all;
    }
    for (const auto& [what, tally] : per_precision)
        std::printf("[ manifest ] %s: %d/%d rows match\n", what.c_str(), tally.first, tally.second);
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
        const size_t last = bluestein ? 8 : 9;  // constants column excluded for the Bluestein pair
        for (size_t c = 3; c < last; ++c) EXPECT_EQ(r[c], it->second[c]) << key << " column " << manifest[0][c];
        ++compared;
    }
    EXPECT_EQ(compared, static_cast<int>(fwd.size()));
}

}  // namespace
