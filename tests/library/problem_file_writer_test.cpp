#include "library/problem_file_writer.h"

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <string>
#include <vector>

#include "core/answering_notifier.h"
#include "library/problem_reading.h"
#include "library/problem_writer.h"
#include "platform/killed_saves.h"
#include "platform/lowered_limit.h"
#include "platform/temporary_folder.h"

namespace quillon {
namespace {

using namespace quillon::testing;
namespace fs = std::filesystem;

constexpr std::string_view kWithComment =
    "UTF-8\n\n\n5 #2\n//!VARIANTS\n//!{Main variant} Qd1-d8[why]\n//!ENDVARIANTS\n"
    "{\n\tFEN: 8/8/8/4k3/8/8/8/3QK3\n}\n";

std::string ContentOf(const fs::path& path) {
    std::ifstream stream(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(stream), std::istreambuf_iterator<char>()};
}

TProblemMap Library() {
    TProblemMap library;
    ReadProblemText(kWithComment, library, [](const ProblemFileError&) {});
    return library;
}

TProblemMap LibraryOf(const fs::path& path, const TProblemFileOptions& options = {}) {
    TProblemMap library;
    ReadProblemFile(
        path, library, [](const ProblemFileError&) {}, options);
    return library;
}

template <class TRun> std::string FailureOf(TRun run) {
    try {
        run();
    } catch (const ChessException& failure) {
        return failure.what();
    }
    return {};
}

using CAnswer = test::CAnsweringNotifier;

TProblemFileOptions Twins() { return {.m_bCommentCompatibility = true, .m_log = {}}; }

TEST(ProblemFileWriter, WritesTheFileAndKeepsTheOldOne) {
    const CTemporaryFolder folder;
    folder.Write("a.cp", "old");
    WriteProblemFile(folder.Path() / "a.cp", Library());
    EXPECT_EQ(ContentOf(folder.Path() / "a.cp"), kWithComment);
    EXPECT_EQ(ContentOf(folder.Path() / "a.cp.BAK"), "old");
}

TEST(ProblemFileWriter, CommentsKeptApartMakeTwoFiles) {
    const CTemporaryFolder folder;
    std::string without(kWithComment);
    without.erase(without.find("[why]"), 5);
    for (const char* name : {"a.cp", "b.cpx"}) {
        folder.Write(name, "old");
        WriteProblemFile(folder.Path() / name, Library(), Twins());
    }
    for (const char* name : {"a.cp", "b.cp"}) {
        EXPECT_EQ(ContentOf(folder.Path() / (name + std::string("x"))), kWithComment);
        EXPECT_EQ(ContentOf(folder.Path() / name), without);
        EXPECT_EQ(LibraryOf(folder.Path() / name, Twins()).at(5)->variants.at("Main variant").moves[0].comment, "why");
        EXPECT_EQ(LibraryOf(folder.Path() / name).at(5)->variants.at("Main variant").moves[0].comment, "");
    }
    EXPECT_TRUE(fs::exists(folder.Path() / "a.cp.BAK"));
    EXPECT_TRUE(fs::exists(folder.Path() / "b.cpx.BAK"));
    EXPECT_FALSE(fs::exists(folder.Path() / "a.cpx.BAK"));
}

TEST(ProblemFileWriter, TwinsThatAreOneFileKeepTheComments) {
    const CTemporaryFolder folder;
    const fs::path with = folder.Path() / "a.cpx", without = folder.Path() / "a.cp";
    fs::create_symlink("a.cpx", without);
    WriteProblemFile(without, Library(), Twins());
    EXPECT_EQ(ContentOf(with), kWithComment);
    WriteProblemFile(without, Library(), Twins()); // now that the file exists
    EXPECT_EQ(ContentOf(with), kWithComment);
    fs::remove(without);
    fs::rename(with, without);
    fs::create_symlink("a.cp", with);
    WriteProblemFile(without, Library(), Twins());
    EXPECT_EQ(ContentOf(without), kWithComment);
}

TEST(ProblemFileWriter, NamesOfTheTwins) {
    EXPECT_EQ(PathWithComments("a.cp"), "a.cpx");
    EXPECT_EQ(PathWithComments("a.cpx"), "a.cpx");
    EXPECT_EQ(PathWithoutComments("a.cpx"), "a.cp");
    EXPECT_EQ(PathWithoutComments("a.cp"), "a.cp");
}

TEST(ProblemFileWriter, WhatCannotBeWrittenIsToldAndTheOldFileStays) {
    const CTemporaryFolder folder;
    EXPECT_EQ(FailureOf([&] { WriteProblemFile("/dev/full", Library()); }),
              "Error saving to file: /dev/full (No space left on device)");
    const fs::path nowhere = folder.Path() / "none" / "a.cp";
    EXPECT_EQ(FailureOf([&] { WriteProblemFile(nowhere, Library()); }),
              "Error opening file: " + nowhere.string() + " (No such file or directory)");

    folder.Write("a.cp", "old");
    const std::string failure = FailureOf([&] {
        const CLoweredLimit small(RLIMIT_FSIZE, 64);
        WriteProblemFile(folder.Path() / "a.cp", Library());
    });
    EXPECT_EQ(failure, "Error saving to file: " + (folder.Path() / "a.cp").string() + " (File too large)");
    EXPECT_EQ(ContentOf(folder.Path() / "a.cp"), "old");
    EXPECT_EQ(std::distance(fs::directory_iterator(folder.Path()), fs::directory_iterator()), 1);
}

TEST(ProblemFileWriter, AFullDiskChangesNeitherTwin) {
    const CTemporaryFolder folder;
    folder.Write("a.cp", "old");
    folder.Write("a.cpx", "old");
    const std::size_t nWithout = FormatProblems(Library(), false).size();
    ASSERT_LT(nWithout, kWithComment.size() - 1);
    const std::string failure = FailureOf([&] {
        const CLoweredLimit small(RLIMIT_FSIZE, nWithout + 1); // enough for the file without comments only
        WriteProblemFile(folder.Path() / "a.cp", Library(), Twins());
    });
    EXPECT_EQ(failure, "Error saving to file: " + (folder.Path() / "a.cpx").string() + " (File too large)");
    EXPECT_EQ(ContentOf(folder.Path() / "a.cp"), "old");
    EXPECT_EQ(ContentOf(folder.Path() / "a.cpx"), "old");
    EXPECT_EQ(std::distance(fs::directory_iterator(folder.Path()), fs::directory_iterator()), 2);
    fs::remove(folder.Path() / "a.cp");
    folder.Write("a.cp/in the way", ""); // now the other one cannot be written
    EXPECT_EQ(FailureOf([&] { WriteProblemFile(folder.Path() / "a.cp", Library(), Twins()); }),
              "Error opening file: " + (folder.Path() / "a.cp").string() + " (Is a directory)");
    EXPECT_EQ(ContentOf(folder.Path() / "a.cpx"), "old");
    EXPECT_EQ(std::distance(fs::directory_iterator(folder.Path()), fs::directory_iterator()), 2);
}

// ---- kills

/// Libraries of different length, each problem of which tells the number of its library in a comment and by its length.
TProblemMap NumberedLibrary(int n) {
    std::string text = "UTF-8\n";
    for (int id = 1; id <= 150 + 60 * n; ++id)
        text += std::to_string(id) + " #" + std::to_string(n + 1) + "\n//!VARIANTS\n//!{v} Qd1-d8[" +
                std::to_string(n) + "]\n//!ENDVARIANTS\n" + std::string(kPlainBody);
    TProblemMap library;
    ReadProblemText(text, library, [](const ProblemFileError&) {});
    return library;
}

/// Which of the texts it is; -1 for none.
int IndexOf(const std::vector<std::string>& texts, const fs::path& file) {
    const auto found = std::find(texts.begin(), texts.end(), ContentOf(file));
    return found == texts.end() ? -1 : static_cast<int>(found - texts.begin());
}

TEST(ProblemFileWriter, KilledAtAnyMomentItLeavesWholeTwinsTheFullOneFirst) {
    constexpr int kLibraries = 4;
    const CTemporaryFolder folder;
    const fs::path file = folder.Path() / "a.cp";
    std::vector<TProblemMap> libraries;
    std::vector<std::string> with, without;
    for (int n = 0; n < kLibraries; ++n) {
        libraries.push_back(NumberedLibrary(n));
        with.push_back(FormatProblems(libraries.back(), true));
        without.push_back(FormatProblems(libraries.back(), false));
    }
    int nChanged = 0, nStrays = 0, fullBefore = -1, bareBefore = -1;
    KillSaves(
        [&](int n) {
            WriteProblemFile(file, libraries[static_cast<std::size_t>(n % kLibraries)], Twins());
            return true;
        },
        [&](int first) {
            const int full = IndexOf(with, PathWithComments(file)), bare = IndexOf(without, file);
            EXPECT_GE(full, 0);
            EXPECT_GE(bare, 0);
            EXPECT_GE(IndexOf(with, folder.Path() / "a.cpx.BAK"), 0);
            EXPECT_GE(IndexOf(without, folder.Path() / "a.cp.BAK"), 0);
            // Where they differ the one with comments is of the save that was killed, the other of the one before.
            const bool bUntouched = full == fullBefore && bare == bareBefore;
            const bool bInFirstSave = full == first % kLibraries && bare == bareBefore;
            EXPECT_TRUE(full == bare || full == (bare + 1) % kLibraries || bInFirstSave || bUntouched)
                << "kill " << first << ": " << full << " and " << bare;
            nChanged += full != fullBefore ? 1 : 0;
            nStrays += RemoveStrays(folder.Path());
            fullBefore = full;
            bareBefore = bare;
        });
    // The kills fell between saves and within them.
    EXPECT_GT(nChanged, 0);
    EXPECT_GT(nStrays, 0);
}

TEST(NewProblemFile, HasOneProblemToChange) {
    const CTemporaryFolder folder;
    CAnswer nobody(false);
    EXPECT_TRUE(CreateNewProblemFile(folder.Path() / "a.cp", nobody, EExistingFile::Ask));
    EXPECT_TRUE(nobody.m_questions.empty());
    EXPECT_EQ(ContentOf(folder.Path() / "a.cp"),
              "UTF-8\n1 #2\n{\n\tDesc: Click here to change problem description\n\tWhite: Ke1\n\tBlack: Ke8\n}\n");
    EXPECT_EQ(LibraryOf(folder.Path() / "a.cp").at(1)->description, "Click here to change problem description");
}

TEST(NewProblemFile, OneThatExistsIsReplacedIfTheUserSaysSo) {
    const CTemporaryFolder folder;
    const fs::path file = folder.Path() / "a.cp";
    folder.Write("a.cp", "old");
    CAnswer no(false), yes(true);
    EXPECT_FALSE(CreateNewProblemFile(file, yes, EExistingFile::Keep));
    EXPECT_TRUE(yes.m_questions.empty());
    EXPECT_FALSE(CreateNewProblemFile(file, no, EExistingFile::Ask));
    EXPECT_EQ(no.m_questions, (std::vector<std::string>{"File " + file.string() + " already exists.\n" +
                                                        "Do you want to replace it with a new file?"}));
    EXPECT_EQ(ContentOf(file), "old");
    EXPECT_TRUE(CreateNewProblemFile(file, yes, EExistingFile::Ask));
    EXPECT_EQ(LibraryOf(file).count(1), 1u);
}

TEST(NewProblemFile, IsMadeInEveryLanguage) {
    const CTemporaryFolder folder;
    CAnswer nobody(false);
    const auto make = [&](ELanguage language) {
        const fs::path file = folder.Path() / std::to_string(static_cast<int>(language));
        static_cast<void>(
            CreateNewProblemFile(file, nobody, EExistingFile::Ask, {.m_language = language, .m_log = {}}));
        return ContentOf(file);
    };
    EXPECT_EQ(ReadOne(make(ELanguage::Polish))->description, "Kliknij tutaj, aby zmienić opis zadania");
    // The description has no line end, so that it swallows the white figures.
    EXPECT_EQ(StrictMessage(make(ELanguage::Ukrainian)), "White figures identifier expected (W, WH or WHITE).");
}

TEST(NewProblemFile, ComesWithItsTwin) {
    const CTemporaryFolder folder;
    CAnswer nobody(false);
    EXPECT_TRUE(CreateNewProblemFile(folder.Path() / "a.cp", nobody, EExistingFile::Ask, Twins()));
    EXPECT_EQ(ContentOf(folder.Path() / "a.cpx"), ContentOf(folder.Path() / "a.cp"));
}

TEST(NewProblemFile, IsMadeForAReaderThatFindsNone) {
    const CTemporaryFolder folder;
    const fs::path file = folder.Path() / "a.cp";
    EXPECT_EQ(FailureOf([&] { static_cast<void>(LibraryOf(file)); }), "Error opening file: " + file.string());
    EXPECT_EQ(LibraryOf(file, {.m_bCreateIfMissing = true, .m_log = {}}).size(), 1u);
    EXPECT_TRUE(fs::exists(file));
    EXPECT_EQ(
        FailureOf([&] { static_cast<void>(LibraryOf(folder.Path(), {.m_bCreateIfMissing = true, .m_log = {}})); }),
        "Error opening file: " + folder.Path().string());
}

TEST(NewProblemFile, DoesNotReplaceATwinThatIsThere) {
    const CTemporaryFolder folder;
    const fs::path file = folder.Path() / "a.cp";
    folder.Write("a.cp", "old");
    TProblemFileOptions options = Twins();
    options.m_bCreateIfMissing = true;
    EXPECT_EQ(FailureOf([&] { static_cast<void>(LibraryOf(file, options)); }),
              "Error opening file: " + file.string() + "x");
    CAnswer no(false);
    EXPECT_FALSE(CreateNewProblemFile(folder.Path() / "a.cpx", no, EExistingFile::Ask, options));
    EXPECT_EQ(no.m_questions.size(), 1u);
    EXPECT_EQ(ContentOf(file), "old");
}

TEST(ProblemFileLog, NamesEachProblemAndRedefinition) {
    const CTemporaryFolder folder;
    folder.Write("a.cp", "1 #2\n" + std::string(kPlainBody) + "1 #3 THREADS x\n" + std::string(kPlainBody));
    std::vector<std::string> lines;
    static_cast<void>(
        LibraryOf(folder.Path() / "a.cp", {.m_log = [&](const std::string& line) { lines.push_back(line); }}));
    EXPECT_EQ(lines, (std::vector<std::string>{
                         "Problem 1 read from file.\n", "Problem 1, line 5: Number expected after THREADS. Found: x\n",
                         "WARINING: Problem id=1 redefinition - overwriting.\n", "Problem 1 read from file.\n"}));
}

TEST(FailureText, TellsAllThatIsKnownOfThePlace) {
    const TReading reading = Read("UTF-8\n7 #2 Foo\n");
    EXPECT_EQ(FailureText("dir/a.cp", reading.m_errors.at(0)),
              "dir/a.cp:2:6: problem 7: Opening bracket expected { or unrecognized option encountered: FOO");
    EXPECT_EQ(FailureText("a.cp", Read("}").m_errors.at(0)), "a.cp:1:1: Alphanumeric identifier expected. Found: }");
}

} // namespace
} // namespace quillon
