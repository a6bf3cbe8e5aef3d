// Console output plus a closing table: for each transform, our time, the
// peer's time and their ratio, from benchmarks named "<case>/ours" and
// "<case>/<peer>". Further sides of a case ("<case>/<side>", named to the
// constructor) get their own columns: ns per call and the ratio to the peer.
//
// Times are CPU time per call: the benchmarks are single-threaded, so on an
// idle machine that is the wall time, and on a loaded one it leaves out the
// time the process waited for a core (which wall time does not, by a factor
// of three on a 2-core machine running a dozen compilers).
//
// With --benchmark_repetitions=R (R > 1) every time in the table is the
// minimum over the R repetitions, the one least disturbed by other load on a
// shared machine, and a last column gives median(ours)/median(peer) for
// comparison. The reporter reads the per-repetition runs, so leave
// --benchmark_report_aggregates_only off. Cases are listed by name, lengths
// in numeric order (with --benchmark_enable_random_interleaving they arrive
// in any order).
#pragma once

#include <benchmark/benchmark.h>

#include <map>
#include <string>
#include <vector>

class RatioReporter : public benchmark::ConsoleReporter {
public:
    explicit RatioReporter(std::string peer, std::vector<std::string> extra_sides = {})
        : peer_(std::move(peer)), extra_(std::move(extra_sides)) {}
    void ReportRuns(const std::vector<Run>& runs) override;
    void Finalize() override;

private:
    using Times = std::vector<double>;  // ns per call, one per repetition
    std::string peer_;
    std::vector<std::string> extra_;
    std::map<std::string, std::map<std::string, Times>> ns_;  // case -> side -> times
};
