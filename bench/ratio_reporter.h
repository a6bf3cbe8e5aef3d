// Console output plus a closing table: for each transform, our time, the
// peer's time and their ratio, from benchmarks named "<case>/ours" and
// "<case>/<peer>".
#pragma once

#include <benchmark/benchmark.h>

#include <map>
#include <string>

class RatioReporter : public benchmark::ConsoleReporter {
public:
    explicit RatioReporter(std::string peer) : peer_(std::move(peer)) {}
    void ReportRuns(const std::vector<Run>& runs) override;
    void Finalize() override;

private:
    std::string peer_;
    std::map<std::string, std::map<std::string, double>> ns_;  // case -> side -> ns per call
    std::vector<std::string> order_;
};
