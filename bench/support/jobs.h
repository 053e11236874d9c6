// Jobs, and who does them: the library, its peers, and the floor, the least that the machine must do for the job.
#pragma once

#include <benchmark/benchmark.h>

#include <functional>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

namespace bench {

// Ends the bench: a figure is worth nothing beside a wrong result.
class Failure : public std::runtime_error {
    using std::runtime_error::runtime_error;
};

// Those who do one job. Each is a benchmark named JOB/CONTENDER; the library is "tvmeta" and the floor "floor".
class Contenders {
  public:
    explicit Contenders(std::string job) : job_(std::move(job)) {}

    // Does the work once and has its result checked; only then may it be timed.
    template <typename Work, typename Check>
    void add(const std::string& contender, Work work, Check check) {
        const std::string name = job_ + '/' + contender;
        if (!check(work())) {
            throw Failure(name + ": the result is wrong");
        }
        const auto repeat = [work](benchmark::State& state) {
            for ([[maybe_unused]] auto iteration : state) {
                auto result = work();
                benchmark::DoNotOptimize(result);
            }
        };
        // Most of the work is done by the system: what counts is the time that passes.
        benchmark::RegisterBenchmark(name.c_str(), repeat)->UseRealTime();
    }

  private:
    std::string job_;
};

struct Job {
    std::string name;
    std::function<void(Contenders&)> prepare; // makes the inputs, which live as long as the contenders
};
using Jobs = std::vector<Job>;

void addReadJobs(Jobs& jobs);
void addSaveJobs(Jobs& jobs);
void addSettingsJobs(Jobs& jobs);
void addPacketJobs(Jobs& jobs);
void addHdrJobs(Jobs& jobs);

} // namespace bench
