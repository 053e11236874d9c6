// Measures the library, its peers and the floors. `report` runs this program and prints a table.
//
//   tvmeta-bench [--list | --job=NAME] [options of Google Benchmark]
#include "support/jobs.h"

#include <algorithm>
#include <cstdlib>
#include <iostream>
#include <string_view>

namespace {

using namespace bench;

Jobs allJobs() {
    Jobs jobs;
    addReadJobs(jobs);
    addSaveJobs(jobs);
    addSettingsJobs(jobs);
    addPacketJobs(jobs);
    addHdrJobs(jobs);
    return jobs;
}

void list(const Jobs& jobs) {
    for (const Job& job : jobs) {
        std::cout << job.name << '\n';
    }
}

Jobs jobsNamed(const Jobs& jobs, std::string_view name) {
    const auto found = std::ranges::find(jobs, name, &Job::name);
    if (found == jobs.end()) {
        throw Failure("no job has the name " + std::string(name));
    }
    return {*found};
}

void measure(const Jobs& jobs) {
    for (const Job& job : jobs) {
        Contenders contenders(job.name);
        job.prepare(contenders);
    }
    benchmark::RunSpecifiedBenchmarks();
}

void run(int argc, char** argv) {
    constexpr std::string_view JobOption = "--job=";
    const Jobs jobs = allJobs();
    const std::string_view option = argc > 1 ? argv[1] : "";
    if (argc > 2 || (argc == 2 && option != "--list" && !option.starts_with(JobOption))) {
        throw Failure("usage: tvmeta-bench [--list | --job=NAME] [options of Google Benchmark]");
    }
    if (option == "--list") {
        list(jobs);
    } else {
        measure(option.empty() ? jobs : jobsNamed(jobs, option.substr(JobOption.size())));
    }
}

} // namespace

int main(int argc, char** argv) {
    benchmark::Initialize(&argc, argv); // removes its own options
    int result = EXIT_SUCCESS;
    try {
        run(argc, argv);
    } catch (const std::exception& failure) {
        std::cerr << "tvmeta-bench: " << failure.what() << '\n';
        result = EXIT_FAILURE;
    }
    benchmark::ClearRegisteredBenchmarks(); // deletes the inputs and their files too
    return result;
}
