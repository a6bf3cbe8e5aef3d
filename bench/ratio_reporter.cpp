#include "ratio_reporter.h"

#include <cstdio>

void RatioReporter::ReportRuns(const std::vector<Run>& runs) {
    ConsoleReporter::ReportRuns(runs);
    for (const Run& r : runs) {
        if (r.run_type != Run::RT_Iteration || r.iterations == 0) continue;
        const std::string name = r.benchmark_name();
        const size_t slash = name.rfind('/');
        if (slash == std::string::npos) continue;
        const std::string key = name.substr(0, slash), side = name.substr(slash + 1);
        if (!ns_.count(key)) order_.push_back(key);
        ns_[key][side] = r.GetAdjustedRealTime();
    }
}

void RatioReporter::Finalize() {
    std::printf("\n%-28s %12s %12s %10s\n", "transform", "ours ns", (peer_ + " ns").c_str(), "ours/peer");
    for (const std::string& key : order_) {
        auto& m = ns_[key];
        if (!m.count("ours") || !m.count(peer_)) continue;
        std::printf("%-28s %12.2f %12.2f %10.3f\n", key.c_str(), m["ours"], m[peer_], m["ours"] / m[peer_]);
    }
    ConsoleReporter::Finalize();
}
