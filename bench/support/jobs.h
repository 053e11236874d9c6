// A job and its contenders: the library, its peers, and the floor (the least work that the machine must do).
#pragma once

#include <benchmark/benchmark.h>

#include <functional>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

namespace bench {

// Stops the program: the time of a wrong result is meaningless.
class Failure : public std::runtime_error {
    using std::runtime_error::runtime_error;
};

// The contenders of one job. Each is a benchmark named JOB/CONTENDER; the library is "tvmeta", the floor "floor".
class Contenders {
  public:
    explicit Contenders(std::string job) : job_(std::move(job)) {}

    // Runs the work once and checks the result before it is timed.
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
        // The system does most of the work, so wall-clock time counts.
        benchmark::RegisterBenchmark(name.c_str(), repeat)->UseRealTime();
    }

  private:
    std::string job_;
};

struct Job {
    std::string name;
    std::function<void(Contenders&)> prepare; // makes the inputs; they live as long as the contenders
};
using Jobs = std::vector<Job>;

void addReadJobs(Jobs& jobs);
void addSaveJobs(Jobs& jobs);
void addSettingsJobs(Jobs& jobs);
void addPacketJobs(Jobs& jobs);
void addHdrJobs(Jobs& jobs);

} // namespace bench
