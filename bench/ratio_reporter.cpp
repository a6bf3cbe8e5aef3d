#include "ratio_reporter.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>

namespace {

double min_of(const std::vector<double>& v) { return *std::min_element(v.begin(), v.end()); }

double median_of(std::vector<double> v) {
    std::sort(v.begin(), v.end());
    const size_t m = v.size() / 2;
    return v.size() % 2 ? v[m] : (v[m - 1] + v[m]) / 2;
}

// "cfwd_32fc_9" before "cfwd_32fc_10": the trailing number compares as a number.
bool case_order(const std::string& a, const std::string& b) {
    const size_t ia = a.find_last_not_of("0123456789") + 1, ib = b.find_last_not_of("0123456789") + 1;
    const int c = a.compare(0, ia, b, 0, ib);
    if (c != 0 || ia == a.size() || ib == b.size()) return c != 0 ? c < 0 : a < b;
    return std::strtoll(a.c_str() + ia, nullptr, 10) < std::strtoll(b.c_str() + ib, nullptr, 10);
}

}  // namespace

void RatioReporter::ReportRuns(const std::vector<Run>& runs) {
    ConsoleReporter::ReportRuns(runs);
    for (const Run& r : runs) {
        if (r.run_type != Run::RT_Iteration || r.iterations == 0) continue;
        const std::string name = r.benchmark_name();
        const size_t slash = name.rfind('/');
        if (slash == std::string::npos) continue;
        ns_[name.substr(0, slash)][name.substr(slash + 1)].push_back(r.GetAdjustedCPUTime());
    }
}

void RatioReporter::Finalize() {
    bool repeated = false;
    for (auto& c : ns_)
        for (auto& s : c.second) repeated = repeated || s.second.size() > 1;
    std::vector<std::string> order;
    for (auto& c : ns_) order.push_back(c.first);
    std::sort(order.begin(), order.end(), case_order);

    if (repeated) std::printf("\nns per call: minimum over the repetitions");
    std::printf("\n%-28s %12s %12s %10s", "transform", "ours ns", (peer_ + " ns").c_str(), "ours/peer");
    for (const std::string& x : extra_) std::printf(" %12s %10s", (x + " ns").c_str(), (x + "/peer").c_str());
    if (repeated) std::printf(" %12s", "median ratio");
    std::printf("\n");
    for (const std::string& key : order) {
        auto& m = ns_[key];
        if (!m.count("ours") || !m.count(peer_)) continue;
        const double ours = min_of(m["ours"]), peer = min_of(m[peer_]);
        std::printf("%-28s %12.2f %12.2f %10.3f", key.c_str(), ours, peer, ours / peer);
        for (const std::string& x : extra_) {
            if (m.count(x))
                std::printf(" %12.2f %10.3f", min_of(m[x]), min_of(m[x]) / peer);
            else
                std::printf(" %12s %10s", "-", "-");
        }
        if (repeated) std::printf(" %12.3f", median_of(m["ours"]) / median_of(m[peer_]));
        std::printf("\n");
    }
    ConsoleReporter::Finalize();
}
