// Reading and writing a library of ten thousand problems, each with tags, variants, comments and an answer.

#include <benchmark/benchmark.h>

#include <filesystem>
#include <string>

#include "library/problem_file.h"
#include "library/problem_file_writer.h"
#include "library/problem_writer.h"
#include "platform/memory_info.h"

namespace quillon {
namespace {

constexpr int kProblems = 10'000;

std::string ProblemText(int id) {
    const std::string number = std::to_string(id);
    return "\n" + number + " #" + std::to_string(2 + id % 9) +
           " AllSolutions THREADS 4 Requires RRk\n//#TAGS\n//#ideal mate\n//#theme " + std::to_string(id % 50) +
           "\n//!VARIANTS\n//!{Main variant} Qd1-d8[the key of the problem] Ke5-f5[the only move] Qd8-f6 Kf5-g4 "
           "Ke1-e2 Kg4-g3 Qf6-g5\n//!{Variant1} Qd1-d8 Ke5-e4 Ke1-e2 Ke4-f4 Qd8-d5\n//!ENDVARIANTS\n"
           "//@SortIndications: 1.Qd1-d8; 3.Qd8:f6+\n{\n\tDescription: Someone, some paper, " +
           number + "\n\tFEN: 8/8/8/4k3/8/8/8/3QK3\n\tAnswer:  Qd1-d8\n}\n";
}

const std::string& LibraryText() {
    static const std::string text = [] {
        std::string whole = "UTF-8\n\n";
        for (int id = 1; id <= kProblems; ++id)
            whole += ProblemText(id);
        return whole;
    }();
    return text;
}

TProblemMap ReadLibrary(const std::filesystem::path& path) {
    TProblemMap library;
    ReadProblemFile(path, library, [](const ProblemFileError&) {});
    return library;
}

std::filesystem::path LibraryPath() { return std::filesystem::temp_directory_path() / "quillon_library_bench.cp"; }

void TellMemory(benchmark::State& state) {
    state.counters["peakMB"] = static_cast<double>(PeakResidentMemory()) / (1024 * 1024);
    state.counters["fileKB"] = static_cast<double>(LibraryText().size()) / 1024;
}

void LibraryRead(benchmark::State& state) {
    SaveTextFile(LibraryPath(), LibraryText());
    for (auto _ : state)
        benchmark::DoNotOptimize(ReadLibrary(LibraryPath()));
    TellMemory(state);
    std::filesystem::remove(LibraryPath());
    std::filesystem::remove(LibraryPath().native() + ".BAK");
}
BENCHMARK(LibraryRead)->Unit(benchmark::kMillisecond);

void LibraryWrite(benchmark::State& state) {
    TProblemMap library;
    ReadProblemText(LibraryText(), library, [](const ProblemFileError&) {});
    for (auto _ : state)
        WriteProblemFile(LibraryPath(), library);
    TellMemory(state);
    std::filesystem::remove(LibraryPath());
    std::filesystem::remove(LibraryPath().native() + ".BAK");
}
BENCHMARK(LibraryWrite)->Unit(benchmark::kMillisecond);

} // namespace
} // namespace quillon
