// Runs a fuzz target as an ordinary test, without a fuzzer: over all files of the folders given, and over mutations of
// them. The mutations follow from the seed alone, so a failure comes back.
//
//   quillon_x_fuzz [--mutations N] [--seed N] FOLDER_OR_FILE...

#include <algorithm>
#include <csignal>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <random>
#include <string>
#include <string_view>
#include <vector>

#include <unistd.h>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

namespace {

namespace fs = std::filesystem;

using TInput = std::vector<std::uint8_t>;

struct TOptions {
    int m_nMutations = 4000;
    std::uint64_t m_nSeed = 1;
    std::vector<fs::path> m_paths;
};

const TInput* g_pInput = nullptr; // the one that runs

// Shows the input of a run that aborts, as the escapes of printf. Only calls that a signal handler may make.
extern "C" void ShowInput(int) {
    const auto show = [](std::string_view text) { return write(STDERR_FILENO, text.data(), text.size()) >= 0; };
    bool bShown = show("input: ");
    for (std::size_t i = 0; bShown && g_pInput != nullptr && i < g_pInput->size(); ++i) {
        constexpr char digits[] = "0123456789abcdef";
        const std::uint8_t byte = (*g_pInput)[i];
        const char escape[] = {'\\', 'x', digits[byte >> 4], digits[byte & 15]};
        bShown = byte >= ' ' && byte < 127 && byte != '\\' && byte != '%'
                     ? show({reinterpret_cast<const char*>(&byte), 1})
                     : show({escape, sizeof escape});
    }
    static_cast<void>(show("\n"));
}

void Run(const TInput& input) {
    g_pInput = &input;
    LLVMFuzzerTestOneInput(input.data(), input.size());
    g_pInput = nullptr;
}

TInput ReadFile(const fs::path& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

std::vector<TInput> ReadAll(const std::vector<fs::path>& paths) {
    std::vector<fs::path> files;
    for (const fs::path& path : paths) {
        if (!fs::is_directory(path)) {
            files.push_back(path);
            continue;
        }
        for (const fs::directory_entry& entry : fs::recursive_directory_iterator(path))
            if (entry.is_regular_file())
                files.push_back(entry.path());
    }
    std::ranges::sort(files); // the order of a folder is not that of another machine
    std::vector<TInput> inputs;
    std::ranges::transform(files, std::back_inserter(inputs), ReadFile);
    return inputs;
}

// Changes inputs a little: most mutations are then rejected late by a parser, not at once.
class CMutator {
  public:
    CMutator(const std::vector<TInput>& inputs, std::uint64_t seed) : m_inputs(inputs), m_random(seed) {}

    TInput Next() {
        TInput input = AnyInput();
        for (std::size_t change = 1 + Below(4); change > 0; --change)
            ChangeOnce(input);
        return input;
    }

  private:
    std::size_t Below(std::size_t bound) { return static_cast<std::size_t>(m_random() % bound); }
    const TInput& AnyInput() { return m_inputs[Below(m_inputs.size())]; }

    // A place before a byte or at the end.
    TInput::difference_type AnyPlace(const TInput& input) {
        return static_cast<TInput::difference_type>(Below(input.size() + 1));
    }

    // Half of them bytes that occur in an input, the other half any.
    std::uint8_t AnyByte() {
        const TInput& source = AnyInput();
        if (source.empty() || Below(2) == 0)
            return static_cast<std::uint8_t>(Below(256));
        return source[Below(source.size())];
    }

    void ChangeOnce(TInput& input) {
        const auto from = AnyPlace(input);
        const auto to = std::min(from + 1 + static_cast<TInput::difference_type>(Below(8)), std::ssize(input));
        switch (Below(6)) {
        case 0: // another byte
            if (from < to)
                input[static_cast<std::size_t>(from)] = AnyByte();
            break;
        case 1: // a flipped bit
            if (from < to)
                input[static_cast<std::size_t>(from)] ^= static_cast<std::uint8_t>(1u << Below(8));
            break;
        case 2: // a byte more
            input.insert(input.begin() + from, AnyByte());
            break;
        case 3: // some bytes gone
            input.erase(input.begin() + from, input.begin() + to);
            break;
        case 4: { // some bytes twice
            const TInput piece(input.begin() + from, input.begin() + to);
            input.insert(input.begin() + from, piece.begin(), piece.end());
            break;
        }
        default: // the rest of another input
            Splice(input, from);
        }
    }

    void Splice(TInput& input, TInput::difference_type from) {
        const TInput& other = AnyInput();
        input.erase(input.begin() + from, input.end());
        input.insert(input.end(), other.begin() + AnyPlace(other), other.end());
    }

    const std::vector<TInput>& m_inputs;
    std::mt19937_64 m_random;
};

TOptions ReadOptions(int argc, char** argv) {
    TOptions options;
    for (int i = 1; i < argc; ++i) {
        const std::string_view argument = argv[i];
        if (argument == "--mutations" && i + 1 < argc)
            options.m_nMutations = std::atoi(argv[++i]);
        else if (argument == "--seed" && i + 1 < argc)
            options.m_nSeed = std::strtoull(argv[++i], nullptr, 10);
        else
            options.m_paths.emplace_back(argument);
    }
    return options;
}

} // namespace

int main(int argc, char** argv) {
    const TOptions options = ReadOptions(argc, argv);
    const std::vector<TInput> inputs = ReadAll(options.m_paths);
    if (inputs.empty()) {
        std::fprintf(stderr, "no input files\n");
        return 2;
    }
    std::signal(SIGABRT, ShowInput);
    std::ranges::for_each(inputs, Run);
    CMutator mutator(inputs, options.m_nSeed);
    for (int i = 0; i < options.m_nMutations; ++i)
        Run(mutator.Next());
    std::printf("%zu files, %d mutations\n", inputs.size(), options.m_nMutations);
    return 0;
}
