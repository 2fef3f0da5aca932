#include "library/problem_model.h"

#include <chrono>
#include <deque>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <string>
#include <vector>

#include "library/problem_reading.h"
#include "platform/temporary_folder.h"

namespace quillon {
namespace {

using namespace quillon::testing;
namespace fs = std::filesystem;
using TTexts = std::vector<std::string>;

const std::string kQueen = "8/8/8/4k3/8/8/8/3QK3", kRook = "8/8/8/4k3/8/8/8/R3K3", kKnight = "8/8/8/4k3/8/8/8/N3K3";

std::string Problem(int id, const std::string& fen, const std::string& stipulation = "#2") {
    return "\n" + std::to_string(id) + " " + stipulation + "\n{\n\tFEN: " + fen + "\n}\n";
}

class CHost : public IProblemHost {
  public:
    void Inform(std::string_view text, std::string_view) override { m_told.emplace_back(text); }
    bool AskYesNo(std::string_view text, std::string_view) override { return Answer(text) == EAnswer::Yes; }
    EAnswer AskYesNoCancel(std::string_view text, std::string_view) override { return Answer(text); }
    [[nodiscard]] bool IsSolving() const override { return m_bSolving; }
    void StopSolving() override { m_bSolving = false; }
    void ShowStatus(std::string_view text) override { m_status = text; }
    void ProblemShown() override { ++m_nShown; }
    void FileChanged() override {}

    EAnswer m_answer = EAnswer::Yes;
    std::deque<EAnswer> m_answers; // before m_answer, one each
    bool m_bSolving = false;
    int m_nShown = 0;
    std::string m_status;
    TTexts m_told, m_asked;

  private:
    EAnswer Answer(std::string_view text) {
        m_asked.emplace_back(text);
        if (m_answers.empty())
            return m_answer;
        const EAnswer answer = m_answers.front();
        m_answers.pop_front();
        return answer;
    }
};

class ProblemModel : public ::testing::Test {
  protected:
    fs::path Given(const std::string& name, const std::string& problems) const {
        m_folder.Write(name, "UTF-8\n\n" + problems);
        return m_folder.Path() / name;
    }
    [[nodiscard]] std::string ContentOf(const fs::path& path) const {
        std::ifstream stream(path, std::ios::binary);
        return {std::istreambuf_iterator<char>(stream), std::istreambuf_iterator<char>()};
    }
    [[nodiscard]] std::vector<int> Ids() const {
        std::vector<int> ids;
        for (const auto& [id, problem] : m_model.Library())
            ids.push_back(id);
        return ids;
    }
    void GivenThree() {
        m_path = Given("a.cp", Problem(3, kQueen) + Problem(5, kRook) + Problem(9, kKnight));
        ASSERT_TRUE(m_model.OpenProblemFile(m_path));
    }

    CTemporaryFolder m_folder;
    fs::path m_path;
    CHost m_host;
    CProblemModel m_model{m_host};
};

TEST_F(ProblemModel, BeginsWithOneNewProblem) {
    EXPECT_EQ(Ids(), (std::vector<int>{1}));
    EXPECT_EQ(m_model.Current().plies, 3);
    EXPECT_EQ(m_model.ProblemTitle(), "New Problem");
    EXPECT_EQ(m_model.WindowTitle(), "Quillon");
    EXPECT_FALSE(m_model.IsProblemChanged());
    EXPECT_FALSE(m_model.SaveProblemFile()); // there is no file
}

TEST_F(ProblemModel, OpensAFileAtItsFirstProblem) {
    GivenThree();
    EXPECT_EQ(m_model.Current().id, 3);
    EXPECT_EQ(m_model.WindowTitle(), "Quillon - a.cp");
    EXPECT_EQ(m_host.m_status, "The opened file contains 3 chess problem(s)\nYou can find sample compositions in file "
                               "sample_problems.cp (Ctrl+O or from menu: File->Open file...)");
    std::string many;
    for (int id = 1; id <= 10; ++id)
        many += Problem(id, kQueen);
    ASSERT_TRUE(m_model.OpenProblemFile(Given("b.cp", many)));
    EXPECT_NE(m_host.m_status.find("10 chess problem(s)\nYou can search"), std::string::npos);
}

TEST_F(ProblemModel, AFileThatCannotBeOpenedLeavesTheLibrary) {
    GivenThree();
    const fs::path none = m_folder.Path() / "none.cp";
    EXPECT_FALSE(m_model.OpenProblemFile(none));
    EXPECT_EQ(m_host.m_told, (TTexts{"Error opening file: " + none.string()}));
    EXPECT_EQ(Ids(), (std::vector<int>{3, 5, 9}));
    EXPECT_EQ(m_model.Path(), m_path);
}

TEST_F(ProblemModel, AnEmptyFileLeavesOneNewProblem) {
    GivenThree();
    EXPECT_FALSE(m_model.OpenProblemFile(Given("empty.cp", "")));
    EXPECT_EQ(m_host.m_told, (TTexts{"File cannot be empty."}));
    EXPECT_EQ(Ids(), (std::vector<int>{1}));
    EXPECT_EQ(m_model.ProblemTitle(), "New Problem");
    EXPECT_TRUE(m_model.Path().empty());
}

TEST_F(ProblemModel, AFileWithAFaultLeavesOneNewProblem) {
    GivenThree();
    const fs::path bad = Given("bad.cp", "1 #2 Foo\n");
    EXPECT_FALSE(m_model.OpenProblemFile(bad));
    EXPECT_EQ(m_host.m_told,
              (TTexts{bad.string() + ":3:6: problem 1: Opening bracket expected { or unrecognized option "
                                     "encountered: FOO"}));
    EXPECT_EQ(Ids(), (std::vector<int>{1}));
    EXPECT_TRUE(m_model.Path().empty()); // the file cannot be overwritten with the new problem
}

TEST_F(ProblemModel, ARunningSearchIsStoppedIfTheUserSaysSo) {
    GivenThree();
    m_host.m_bSolving = true;
    m_host.m_answer = EAnswer::No;
    EXPECT_FALSE(m_model.OpenProblemFile(m_path));
    EXPECT_FALSE(m_model.NextProblem());
    EXPECT_TRUE(m_host.m_bSolving);
    EXPECT_EQ(m_host.m_asked, (TTexts{"All pending threads of mate search will be stopped.\nDo you want to continue?",
                                      "Search for mate pending. Do you want to stop this task?"}));
    m_host.m_answer = EAnswer::Yes;
    EXPECT_TRUE(m_model.NextProblem());
    EXPECT_FALSE(m_host.m_bSolving);
}

TEST_F(ProblemModel, ChangesAreSeenAndSaved) {
    GivenThree();
    m_model.Edited().m_description = "new";
    m_model.Edited().m_tags.insert("tag");
    EXPECT_TRUE(m_model.IsProblemChanged());
    EXPECT_TRUE(m_model.SaveProblemFile());
    EXPECT_FALSE(m_model.IsProblemChanged());
    EXPECT_NE(ContentOf(m_path).find("\n3 #2\n//#TAGS\n//#tag\n{\n\tDescription: new\n"), std::string::npos);
    EXPECT_NE(ContentOf(m_path.native() + ".BAK").find(kQueen), std::string::npos);
    EXPECT_EQ(m_model.TagsOfFile(), (std::set<std::string>{"tag"}));
    m_model.Edited().m_description = "";
    m_model.Edited().m_plies = 5;
    EXPECT_TRUE(m_model.IsProblemChanged());
    EXPECT_TRUE(m_model.SaveProblemFile());
    EXPECT_EQ(m_model.Current().originalPosition->m_nMoves, 5);
}

TEST_F(ProblemModel, LeavingAChangedProblemAsks) {
    GivenThree();
    m_model.Edited().m_description = "new";
    m_host.m_answer = EAnswer::Cancel;
    EXPECT_FALSE(m_model.NextProblem());
    EXPECT_TRUE(m_model.IsProblemChanged());
    EXPECT_EQ(m_host.m_asked, (TTexts{"There are changes in the current problem.\nDo you want to save them?"}));
    m_host.m_answer = EAnswer::No;
    EXPECT_TRUE(m_model.NextProblem());
    EXPECT_EQ(m_model.Library().at(3)->description, "");
    m_model.Edited().m_description = "kept";
    m_host.m_answer = EAnswer::Yes;
    EXPECT_TRUE(m_model.NextProblem());
    EXPECT_NE(ContentOf(m_path).find("kept"), std::string::npos);
}

TEST_F(ProblemModel, ChangesThatAreNotSavedGoOnlyWhenAnotherProblemIsShown) {
    GivenThree();
    ASSERT_TRUE(m_model.LastProblem());
    m_model.Edited().m_description = "new";
    m_host.m_answer = EAnswer::No;
    EXPECT_FALSE(m_model.NextProblem()); // no new problem wanted
    EXPECT_FALSE(m_model.OpenProblemFile(m_folder.Path() / "none.cp"));
    EXPECT_FALSE(m_model.AppendProblems(Given("b.cp", Problem(1, "8/8/8/4k3/8/8/8/2B1K3"))));
    EXPECT_TRUE(m_model.AskToSaveChanges()); // as before the window closes, which may be called off
    EXPECT_EQ(m_model.Edited().m_description, "new");
    EXPECT_TRUE(m_model.IsProblemChanged());
    EXPECT_TRUE(m_model.PreviousProblem());
    EXPECT_TRUE(m_model.NextProblem());
    EXPECT_EQ(m_model.Edited().m_description, "");
}

TEST_F(ProblemModel, AppendedProblemsAreSavedWithoutTheChangesThatTheUserHasNotSaved) {
    GivenThree();
    m_model.Edited().m_description = "new";
    m_host.m_answers = {EAnswer::No, EAnswer::Yes}; // save the changes? keep the appended problems?
    EXPECT_TRUE(m_model.AppendProblems(Given("b.cp", Problem(1, "8/8/8/4k3/8/8/8/2B1K3"))));
    EXPECT_EQ(ContentOf(m_path).find("new"), std::string::npos);
    EXPECT_NE(ContentOf(m_path).find("\n10 #2\n"), std::string::npos);
    EXPECT_TRUE(m_model.IsProblemChanged());
}

TEST_F(ProblemModel, ASaveThatFailsKeepsTheChanges) {
    GivenThree();
    m_model.Edited().m_description = "new";
    EXPECT_FALSE(m_model.SaveProblemFileAs("/dev/full/a.cp"));
    EXPECT_EQ(m_host.m_told.size(), 1u);
    EXPECT_TRUE(m_host.m_told[0].starts_with("Error saving to file"));
    EXPECT_TRUE(m_model.IsProblemChanged());
    EXPECT_EQ(m_model.Path(), m_path);
    m_model.Edited().m_board = {}; // no kings
    EXPECT_FALSE(m_model.SaveProblemFile());
    EXPECT_EQ(m_model.Current().originalPosition->m_board[kE1], kWhiteKing);
    EXPECT_TRUE(m_model.IsProblemChanged());
}

TEST_F(ProblemModel, ASaveThatFailsKeepsTheMovesThatWerePlayed) {
    ASSERT_TRUE(m_model.OpenProblemFile(Given("a.cp", "7\n{\nFEN: " + kQueen + "\nMoves: Qd1-d8 Ke5-f5\n}\n")));
    std::swap(m_model.Edited().m_board[kD1], m_model.Edited().m_board[kC1]);
    EXPECT_FALSE(m_model.SaveProblemFileAs("/dev/full/a.cp"));
    EXPECT_EQ(m_model.Current().playedPositions.size(), 2u);
    EXPECT_TRUE(m_model.SaveProblemFile());
    EXPECT_TRUE(m_model.Current().playedPositions.empty()); // they belonged to the other position
}

TEST_F(ProblemModel, APositionThatIsThereAlreadyIsAskedAbout) {
    GivenThree();
    m_model.Edited().m_board = m_model.Library().at(5)->originalPosition->m_board;
    m_host.m_answer = EAnswer::No;
    EXPECT_FALSE(m_model.SaveProblemFile());
    EXPECT_EQ(m_host.m_asked, (TTexts{"The same position already exists in this file as the following problem:\n#n5 "
                                      "\n\nDo you want to save changes anyway?"}));
    m_host.m_answer = EAnswer::Yes;
    EXPECT_TRUE(m_model.SaveProblemFile());
    EXPECT_TRUE(m_model.SaveProblemFile()); // nothing has changed: no question
    EXPECT_EQ(m_host.m_asked.size(), 2u);
}

TEST_F(ProblemModel, SavingAsMakesTheFileTheOpenOne) {
    GivenThree();
    EXPECT_TRUE(m_model.SaveProblemFileAs(m_folder.Path() / "b"));
    EXPECT_EQ(m_model.Path().filename(), "b.cp");
    EXPECT_EQ(ContentOf(m_path), ContentOf(m_folder.Path() / "b.cp"));
}

TEST_F(ProblemModel, NewFilesHaveOneProblem) {
    EXPECT_TRUE(m_model.NewProblemFile(m_folder.Path() / "n.cp"));
    EXPECT_EQ(m_model.Current().description, "Click here to change problem description");
    EXPECT_FALSE(m_model.NewProblemFile(m_folder.Path() / "none" / "n.cp"));
    EXPECT_EQ(m_host.m_told.size(), 1u);
}

TEST_F(ProblemModel, ANewFileIsMadeOnlyWhenTheOpenOneMayBeLeft) {
    GivenThree();
    m_model.Edited().m_description = "new";
    m_host.m_answer = EAnswer::Cancel;
    EXPECT_FALSE(m_model.NewProblemFile(m_folder.Path() / "n.cp"));
    EXPECT_FALSE(fs::exists(m_folder.Path() / "n.cp"));
    m_host.m_answers = {EAnswer::Yes, EAnswer::No}; // save the changes, but do not replace
    EXPECT_FALSE(m_model.NewProblemFile(m_path));
    EXPECT_NE(ContentOf(m_path).find("new"), std::string::npos);
    EXPECT_EQ(Ids(), (std::vector<int>{3, 5, 9}));
    m_host.m_bSolving = true;
    m_host.m_answers = {EAnswer::No};
    EXPECT_FALSE(m_model.NewProblemFile(m_folder.Path() / "n.cp"));
    EXPECT_TRUE(m_host.m_bSolving);
}

TEST_F(ProblemModel, StepsThroughTheProblems) {
    GivenThree();
    EXPECT_FALSE(m_model.PreviousProblem());
    EXPECT_TRUE(m_model.NextProblem());
    EXPECT_EQ(m_model.Current().id, 5);
    EXPECT_TRUE(m_model.LastProblem());
    EXPECT_EQ(m_model.Current().id, 9);
    EXPECT_TRUE(m_model.PreviousProblem());
    EXPECT_TRUE(m_model.FirstProblem());
    EXPECT_EQ(m_model.Current().id, 3);
    EXPECT_FALSE(m_model.GoToProblem(4));
    EXPECT_TRUE(m_model.GoToProblem(9));
    m_host.m_answer = EAnswer::No;
    EXPECT_FALSE(m_model.NextProblem());
    EXPECT_EQ(m_host.m_asked, (TTexts{"This is the last problem.\nDo you want to create a new one?"}));
    m_host.m_answer = EAnswer::Yes;
    EXPECT_TRUE(m_model.NextProblem());
    EXPECT_EQ(m_model.Current().id, 10);
}

TEST_F(ProblemModel, GoesBackToWhatWasViewed) {
    GivenThree();
    EXPECT_FALSE(m_model.PreviouslyViewed());
    m_model.GoToProblem(9);
    m_model.GoToProblem(5);
    EXPECT_TRUE(m_model.PreviouslyViewed());
    EXPECT_EQ(m_model.Current().id, 9);
    EXPECT_TRUE(m_model.PreviouslyViewed());
    EXPECT_EQ(m_model.Current().id, 3);
    EXPECT_FALSE(m_model.PreviouslyViewed());
    EXPECT_TRUE(m_model.ReturnFromPreviouslyViewed());
    EXPECT_TRUE(m_model.ReturnFromPreviouslyViewed());
    EXPECT_EQ(m_model.Current().id, 5);
    EXPECT_FALSE(m_model.ReturnFromPreviouslyViewed());
    EXPECT_TRUE(m_model.PreviouslyViewed());
    m_model.GoToProblem(3); // what was ahead is forgotten
    EXPECT_FALSE(m_model.ReturnFromPreviouslyViewed());
}

TEST_F(ProblemModel, AppendsWhatIsNotThere) {
    GivenThree();
    const fs::path other =
        Given("b.cp", Problem(1, kQueen) + Problem(2, kRook, "#3") + Problem(4, "8/8/8/4k3/8/8/8/2B1K3"));
    EXPECT_TRUE(m_model.AppendProblems(other));
    EXPECT_EQ(m_host.m_asked,
              (TTexts{"Appended problems: 1\nMoreover some problems differ only by stipulation (#n): \n2 vs. #2 #3\n"
                      "\n\nDo you want to save changes? (select 'No' to reject them)"}));
    EXPECT_EQ(Ids(), (std::vector<int>{3, 5, 9, 10}));
    EXPECT_NE(ContentOf(m_path).find("\n10 #2\n"), std::string::npos);
}

TEST_F(ProblemModel, StipulationsOfSelfmatesAreToldAsTheyAre) {
    ASSERT_TRUE(m_model.OpenProblemFile(Given("a.cp", Problem(1, kQueen, "s#2") + Problem(2, kRook, "#2"))));
    EXPECT_TRUE(m_model.AppendProblems(
        Given("b.cp", Problem(7, kQueen, "s#3") + Problem(8, kRook, "s#4") + Problem(9, kQueen, "#5"))));
    EXPECT_NE(m_host.m_asked[0].find("(#n): \n7 vs. s#2 s#3\n8 vs. #2 s#4\n9 vs. s#2 #5\n"), std::string::npos)
        << m_host.m_asked[0];
}

TEST_F(ProblemModel, AppendingAFileToItselfAddsNothing) {
    GivenThree();
    EXPECT_TRUE(m_model.AppendProblems(m_path));
    EXPECT_TRUE(m_host.m_asked[0].starts_with("Appended problems: 0\n\n"));
}

TEST_F(ProblemModel, AppendedAndRemovedProblemsCanBeRejected) {
    GivenThree();
    const fs::path other = Given("b.cp", Problem(1, "8/8/8/4k3/8/8/8/2B1K3") + Problem(2, kRook) + Problem(3, kQueen));
    m_host.m_answer = EAnswer::No;
    EXPECT_FALSE(m_model.AppendProblems(other));
    EXPECT_EQ(Ids(), (std::vector<int>{3, 5, 9}));
    EXPECT_FALSE(m_model.RemoveProblems(other));
    EXPECT_EQ(Ids(), (std::vector<int>{3, 5, 9}));
    m_host.m_answer = EAnswer::Yes;
    EXPECT_TRUE(m_model.RemoveProblems(other));
    EXPECT_EQ(Ids(), (std::vector<int>{3, 9}));
    EXPECT_EQ(m_host.m_asked.back(),
              "Removed problems: 1\nWarning: the current problem cannot be removed.\n\nDo you want to save changes? "
              "(select 'No' to reject them)");
}

TEST_F(ProblemModel, NumbersGoOnWhereTheLastOneIsTaken) {
    ASSERT_TRUE(m_model.OpenProblemFile(Given("a.cp", Problem(1, kQueen) + Problem(2147483647, kRook))));
    EXPECT_TRUE(m_model.NewProblem());
    EXPECT_EQ(m_model.Current().id, 2);
}

TEST_F(ProblemModel, AChangeOfTheFileByOthersIsAskedAbout) {
    GivenThree();
    m_model.FolderChanged(); // of another file
    EXPECT_TRUE(m_host.m_asked.empty());
    Given("a.cp", Problem(7, kQueen));
    fs::last_write_time(m_path, fs::last_write_time(m_path) + std::chrono::seconds(5));
    m_model.FolderChanged();
    ASSERT_EQ(m_host.m_asked.size(), 1u);
    EXPECT_TRUE(m_host.m_asked[0].ends_with("\n\nDo you want to reload the file?"));
    EXPECT_EQ(Ids(), (std::vector<int>{7}));
    m_model.Edited().m_description = "mine";
    fs::last_write_time(m_path, fs::last_write_time(m_path) + std::chrono::seconds(5));
    m_model.FolderChanged();
    ASSERT_EQ(m_host.m_told.size(), 1u);
    EXPECT_NE(m_host.m_told[0].find("Any unsaved changes will be lost."), std::string::npos);
    EXPECT_TRUE(m_model.IsProblemChanged());
}

TEST_F(ProblemModel, AChangeByOthersIsNotWrittenOverUnasked) {
    GivenThree();
    Given("a.cp", Problem(7, kQueen));
    fs::last_write_time(m_path, fs::last_write_time(m_path) + std::chrono::seconds(5));
    const std::string theirs = ContentOf(m_path);
    m_model.Edited().m_description = "mine";
    m_model.FolderChanged(); // tells it, once
    m_model.FolderChanged();
    EXPECT_EQ(m_host.m_told.size(), 1u);
    m_host.m_answer = EAnswer::No;
    EXPECT_FALSE(m_model.SaveProblemFile());
    EXPECT_EQ(m_host.m_asked, (TTexts{"The opened file has been changed by an external application.\n\nDo you want to "
                                      "overwrite it?"}));
    EXPECT_EQ(ContentOf(m_path), theirs);
    EXPECT_TRUE(m_model.IsProblemChanged());
    EXPECT_TRUE(m_model.SaveProblemFileAs(m_folder.Path() / "b.cp")); // to another file without a question
    ASSERT_TRUE(m_model.OpenProblemFile(m_path));

    fs::last_write_time(m_path, fs::last_write_time(m_path) + std::chrono::seconds(5));
    m_host.m_answer = EAnswer::Yes;
    EXPECT_TRUE(m_model.SaveProblemFile());
    EXPECT_EQ(m_host.m_asked.size(), 2u);
    EXPECT_EQ(ContentOf(m_path.native() + ".BAK"), theirs);
    EXPECT_TRUE(m_model.SaveProblemFile());
    EXPECT_EQ(m_host.m_asked.size(), 2u);
}

TEST_F(ProblemModel, AChangeOfEitherTwinIsSeen) {
    TProblemFileOptions options;
    options.m_bCommentCompatibility = true;
    CProblemModel model(m_host, options);
    Given("a.cp", Problem(1, kQueen));
    const fs::path with = Given("a.cpx", Problem(1, kQueen));
    ASSERT_TRUE(model.OpenProblemFile(m_folder.Path() / "a.cp"));
    m_host.m_answer = EAnswer::No;
    for (const fs::path& twin : {with, m_folder.Path() / "a.cp"}) {
        fs::last_write_time(twin, fs::last_write_time(twin) + std::chrono::seconds(5));
        m_host.m_asked.clear();
        model.FolderChanged();
        EXPECT_EQ(m_host.m_asked.size(), 1u) << twin;
    }
}

/// A model that keeps the comments of variants in a file of their own.
class ProblemModelWithTwins : public ProblemModel {
  protected:
    void SetUp() override {
        m_path = Given("a.cp", Problem(1, kQueen));
        Given("a.cpx", Problem(1, kQueen));
        ASSERT_TRUE(m_twins.OpenProblemFile(m_path));
    }
    void ChangeByOthers(const std::string& name) const {
        const fs::path file = m_folder.Path() / name;
        fs::last_write_time(file, fs::last_write_time(file) + std::chrono::seconds(5));
    }
    void RemoveFile(const std::string& name) const { fs::remove(m_folder.Path() / name); }

    CProblemModel m_twins{m_host, {.m_bCommentCompatibility = true, .m_log = {}}};
};

TEST_F(ProblemModel, SavingAsAsksAboutAFileThatWasNotNamed) {
    GivenThree();
    const fs::path other = Given("b.cp", Problem(1, kQueen));
    m_host.m_answer = EAnswer::No;
    EXPECT_FALSE(m_model.SaveProblemFileAs(m_folder.Path() / "b"));
    EXPECT_EQ(m_host.m_asked, (TTexts{"File " + other.string() + " already exists.\nDo you want to replace it?"}));
    EXPECT_EQ(m_model.Path(), m_path);
    EXPECT_TRUE(m_model.SaveProblemFileAs(m_folder.Path() / "a")); // the open file
    EXPECT_TRUE(m_model.SaveProblemFileAs(other));                 // named as it is: the dialog has asked
    EXPECT_EQ(m_host.m_asked.size(), 1u);
}

TEST_F(ProblemModelWithTwins, SavingAsAsksAboutTheOtherTwin) {
    const fs::path twin = Given("b.cpx", Problem(1, kQueen));
    Given("b.cp", Problem(1, kQueen));
    m_host.m_answer = EAnswer::No;
    EXPECT_FALSE(m_twins.SaveProblemFileAs(m_folder.Path() / "b.cp"));
    EXPECT_EQ(m_host.m_asked, (TTexts{"File " + twin.string() + " already exists.\nDo you want to replace it?"}));
    EXPECT_TRUE(m_twins.SaveProblemFileAs(m_folder.Path() / "a.cpx")); // of the open library
    EXPECT_EQ(m_host.m_asked.size(), 1u);
}

TEST_F(ProblemModelWithTwins, AChangeByOthersIsSeenWhateverTheTwinIsCalled) {
    ChangeByOthers("a.cpx");
    fs::create_symlink("a.cpx", m_folder.Path() / "c.cpx");
    m_host.m_answer = EAnswer::No;
    for (const fs::path& name : {m_folder.Path() / "." / "a.cpx", m_folder.Path() / "c.cpx"})
        EXPECT_FALSE(m_twins.SaveProblemFileAs(name)) << name;
    ASSERT_EQ(m_host.m_asked.size(), 2u);
    for (const std::string& asked : m_host.m_asked)
        EXPECT_TRUE(asked.ends_with("Do you want to overwrite it?")) << asked;
}

TEST_F(ProblemModelWithTwins, ASaveThatFailsDoesNotTakeAChangeByOthersForItsOwn) {
    ChangeByOthers("a.cpx");
    RemoveFile("a.cp");
    fs::create_symlink("/dev/full", m_folder.Path() / "a.cp");
    EXPECT_FALSE(m_twins.SaveProblemFile()); // overwrite: yes
    ASSERT_FALSE(m_host.m_asked.empty());
    m_host.m_asked.clear();
    EXPECT_FALSE(m_twins.SaveProblemFile());
    EXPECT_FALSE(m_host.m_asked.empty()); // it is theirs still
    EXPECT_FALSE(fs::exists(m_folder.Path() / "a.cpx.BAK"));
}

TEST_F(ProblemModel, ALibraryIsSavedWhenTheFileThatHasAllOfItIs) {
    CProblemModel twins(m_host, {.m_bCommentCompatibility = true, .m_log = {}});
    Given("a.cpx", Problem(1, kQueen));
    ASSERT_TRUE(twins.OpenProblemFile(m_folder.Path() / "a.cp"));
    twins.Edited().m_description = "new";
    fs::create_symlink("/dev/null", m_folder.Path() / "b.cpx");
    fs::create_symlink("/dev/full", m_folder.Path() / "b.cp");
    const fs::path file = m_folder.Path() / "b.cp";
    EXPECT_TRUE(twins.SaveProblemFileAs(file));
    EXPECT_EQ(m_host.m_told, (TTexts{"Error saving to file\nError saving to file: " + file.string() +
                                     " (No space left on device)\n" + file.string() + "x is saved."}));
    EXPECT_EQ(twins.Path(), file);
    EXPECT_FALSE(twins.IsProblemChanged());
    EXPECT_EQ(twins.Current().description, "new");
}

TEST_F(ProblemModel, WhatIsOddInAFileIsTold) {
    std::string odd;
    for (int id = 1; id <= 7; ++id)
        odd += Problem(id, kQueen, "#2 THREADS x");
    const fs::path file = Given("a.cp", odd);
    ASSERT_TRUE(m_model.OpenProblemFile(file));
    ASSERT_EQ(m_host.m_told.size(), 1u);
    EXPECT_TRUE(m_host.m_told[0].starts_with("Warnings: 7\n" + file.string() +
                                             ":4:14: problem 1: warning: Number expected after THREADS. Found: x\n" +
                                             file.string() + ":9:14: problem 2: "))
        << m_host.m_told[0];
    EXPECT_TRUE(m_host.m_told[0].ends_with("\n..."));
    m_host.m_answer = EAnswer::No;
    EXPECT_FALSE(m_model.AppendProblems(Given("b.cp", Problem(1, kRook) + Problem(1, kRook))));
    ASSERT_EQ(m_host.m_told.size(), 2u);
    EXPECT_NE(m_host.m_told[1].find("Problem id=1 redefinition"), std::string::npos) << m_host.m_told[1];

    std::vector<std::string> log;
    CProblemModel logging(m_host, {.m_log = [&](const std::string& line) { log.push_back(line); }});
    EXPECT_TRUE(logging.OpenProblemFile(file));
    EXPECT_EQ(m_host.m_told.size(), 2u);
    EXPECT_EQ(log.size(), 14u); // a line for each problem too
}

} // namespace
} // namespace quillon
