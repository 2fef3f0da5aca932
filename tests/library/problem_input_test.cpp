#include "library/problem_input.h"

#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <sstream>
#include <stdexcept>
#include <string>
#include <vector>

#include "core/chess_exception.h"
#include "library/file_text.h"
#include "library/problem_reading.h"

namespace quillon {
namespace {

using namespace quillon::testing;

using TIds = std::vector<int>;

constexpr const char* kEpd = "8/8/8/4k3/8/8/8/3QK3 w - - dm 3;\n";
const std::string kLibrary = "7 #3\n" + std::string(kPlainBody);

/// A folder of its own for each test.
class ProblemInput : public ::testing::Test {
  protected:
    ProblemInput()
        : m_folder(std::filesystem::path(::testing::TempDir()) /
                   (std::string("quillon_input_") + ::testing::UnitTest::GetInstance()->current_test_info()->name())) {
        std::filesystem::remove_all(m_folder);
        std::filesystem::create_directories(m_folder);
    }
    ~ProblemInput() override { std::filesystem::remove_all(m_folder); }

    std::string Path(const std::string& name) const { return (m_folder / name).string(); }

    std::string Given(const std::string& name, const std::string& text) const {
        std::ofstream(Path(name), std::ios::binary) << text;
        return Path(name);
    }

    static std::string FailureOf(const std::string& path, std::istream& standardInput) {
        try {
            const TProblemInput input = ReadProblemInput(path, standardInput);
            TReading reading;
            ReadProblems(input, Problems(reading), Errors(reading));
        } catch (const ChessException& failure) {
            return failure.what();
        }
        return {};
    }
    static std::string FailureOf(const std::string& path) {
        std::istringstream nothing;
        return FailureOf(path, nothing);
    }

    static TIds IdsOf(const std::string& path, const std::string& standardInput = {}) {
        std::istringstream stream(standardInput);
        TReading reading;
        ReadProblems(ReadProblemInput(path, stream), Problems(reading), Errors(reading));
        EXPECT_TRUE(reading.m_errors.empty());
        return reading.Ids();
    }

  private:
    std::filesystem::path m_folder;
};

TEST_F(ProblemInput, ReadsLibrariesAndEpdFiles) {
    EXPECT_EQ(IdsOf(Given("a.cp", kLibrary)), (TIds{7}));
    EXPECT_EQ(IdsOf(Given("a.epd", kEpd)), (TIds{1}));
    EXPECT_EQ(IdsOf(Given("a.CPX", kLibrary)), (TIds{7}));
    EXPECT_EQ(IdsOf(Given("a.EPD", kEpd)), (TIds{1}));
}

TEST_F(ProblemInput, WithoutATellingExtensionTheTextTells) {
    EXPECT_EQ(IdsOf(Given("a.txt", kLibrary)), (TIds{7}));
    EXPECT_EQ(IdsOf(Given("b", kEpd)), (TIds{1}));
    EXPECT_EQ(IdsOf(Given("c.txt", std::string("# comment\n\n// another\n") + kEpd)), (TIds{1}));
    EXPECT_EQ(IdsOf(Given("d.txt", "UTF-8\n\n" + kLibrary)), (TIds{7}));
    EXPECT_EQ(IdsOf(Given("e.txt", "/* 8/8\n*/\n" + kLibrary)), (TIds{7}));
}

TEST_F(ProblemInput, TheExtensionGoesBeforeTheText) {
    EXPECT_EQ(ProblemFormat("x.cp", kEpd), EProblemFormat::Library);
    EXPECT_EQ(ProblemFormat("x.epd", kLibrary), EProblemFormat::Epd);
    EXPECT_EQ(ProblemFormat("-", kEpd), EProblemFormat::Epd);
    EXPECT_EQ(ProblemFormat("x.fen", "no sign of either"), EProblemFormat::Library);
}

TEST_F(ProblemInput, MinusIsStandardInput) {
    EXPECT_EQ(IdsOf("-", kLibrary), (TIds{7}));
    EXPECT_EQ(IdsOf("-", kEpd), (TIds{1}));
    std::istringstream stream(kLibrary);
    EXPECT_EQ(ReadProblemInput("-", stream).m_name, "standard input");
}

TEST_F(ProblemInput, LargerTextsArriveWhole) {
    std::string text = kLibrary;
    while (text.size() < 300'000)
        text += "// " + std::to_string(text.size()) + "\n";
    std::istringstream stream(text);
    EXPECT_EQ(ReadProblemInput("-", stream).m_text, text);
    EXPECT_EQ(ReadProblemInput(Given("large.cp", text), stream).m_text, text);
}

TEST_F(ProblemInput, MissingFilesAndFolders) {
    EXPECT_EQ(FailureOf(Path("none.cp")), "Error opening file: " + Path("none.cp") + " (No such file or directory)");
    EXPECT_EQ(FailureOf(Path("")), "Error opening file: " + Path("") + " (Is a directory)");
    EXPECT_EQ(FailureOf(Given("a.cp", kLibrary) + "/b.cp"),
              "Error opening file: " + Path("a.cp/b.cp") + " (Not a directory)");
}

TEST_F(ProblemInput, EmptyFilesAreRefused) {
    for (const char* text : {"", " \r\n\t\n", "UTF-8\n\n", "// nothing\n"})
        EXPECT_EQ(FailureOf(Given("a.cp", text)), "File cannot be empty. (" + Path("a.cp") + ")") << text;
    EXPECT_EQ(FailureOf(Given("a.epd", "# nothing\n")), "File cannot be empty. (" + Path("a.epd") + ")");
    std::istringstream nothing;
    EXPECT_EQ(FailureOf("-", nothing), "File cannot be empty. (standard input)");
}

TEST_F(ProblemInput, BinaryFilesAreRefused) {
    EXPECT_EQ(FailureOf(Given("a.cp", kLibrary + std::string(1, '\0') + kLibrary)), "Not a text file: " + Path("a.cp"));
    EXPECT_EQ(FailureOf(Given("b.txt", std::string("\xFF\xFE") + std::string("1\0 \0", 4))),
              "Not a text file: " + Path("b.txt"));
}

/// A device that breaks down after its first bytes.
class CBrokenBuffer : public std::streambuf {
    int_type underflow() override {
        if (m_bBroken)
            throw std::runtime_error("device gone");
        m_bBroken = true;
        setg(m_text, m_text, m_text + 1);
        return traits_type::to_int_type(m_text[0]);
    }
    char m_text[1] = {'1'};
    bool m_bBroken = false;
};

TEST_F(ProblemInput, ReadFailuresAreTold) {
    CBrokenBuffer buffer;
    std::istream stream(&buffer);
    EXPECT_EQ(FailureOf("-", stream), "Error opening file: standard input (Input/output error)");
}

TEST_F(ProblemInput, TextsWithoutEndAreRefused) {
    std::istringstream stream(std::string(1000, 'x'));
    std::string text;
    EXPECT_EQ(ReadStreamText(stream, text, 999), std::make_error_code(std::errc::file_too_large));
    std::istringstream small(std::string(1000, 'x'));
    EXPECT_FALSE(ReadStreamText(small, text, 1000));
    EXPECT_EQ(text.size(), 1000u);
}

TEST_F(ProblemInput, AFileOfFailuresIsNotEmpty) { EXPECT_EQ(FailureOf(Given("a.cp", "rubbish here\n")), ""); }

TEST_F(ProblemInput, CollectingKeepsTheLaterProblemOfANumber) {
    std::istringstream stream(kLibrary + "7 #5\n" + std::string(kPlainBody) + "2 #1\n" + std::string(kPlainBody));
    std::vector<std::string> told;
    const TProblemMap problems = CollectProblems(
        ReadProblemInput("-", stream), [&](const ProblemFileError& error) { told.emplace_back(error.what()); });
    ASSERT_EQ(problems.size(), 2u);
    EXPECT_EQ(problems.at(7)->plies, 9);
    EXPECT_EQ(problems.begin()->first, 2);
    EXPECT_EQ(told, (std::vector<std::string>{"WARINING: Problem id=7 redefinition - overwriting."}));
}

} // namespace
} // namespace quillon
