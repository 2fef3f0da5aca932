#include "tempregister/register_log.h"

#include <filesystem>
#include <sstream>
#include <string>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

#include "tempregister/chessboard_register.h"
#include "tempregister/numbered_boards.h"
#include "tempregister/register_folder.h"

namespace quillon::test {

TEST(RegisterLog, OptionsHaveTheirDefaults) {
    const TRegisterOptions options;
    EXPECT_TRUE(options.m_bCheckTempRegCoherency);
    EXPECT_FALSE(options.m_bRegisterInfoLog);
    EXPECT_EQ(options.m_registerInfoLog, "registerInfo.log");
    EXPECT_EQ(options.m_solvedProblemsFolder, "SolvedProblemsDB");
}

TEST(RegisterLog, NothingIsWrittenWhileItIsOff) {
    const CRegisterFolder folder;
    AppendRegisterLog({"EmptySomeDataWhenRegisterFull started", 1, 0, 2, 3});
    EXPECT_FALSE(std::filesystem::exists(folder.LogPath()));
}

TEST(RegisterLog, AnEntryIsTwoLinesAndIsAppended) {
    const CRegisterFolder folder;
    RegisterOptions().m_bRegisterInfoLog = true;
    AppendRegisterLog({"EmptySomeDataWhenRegisterFull started", 1, 0, 4294967295u, 17});
    AppendRegisterLog({"TTemporaryChessboardRegister::RemoveNMovers start.", 3, -1, 0, 0});
    EXPECT_EQ(CRegisterFolder::Read(folder.LogPath()),
              "EmptySomeDataWhenRegisterFull started, msg params: 1, 0\n"
              "\t\t\tElementsIn= 4294967295, DoubtfulElementsIn=17\n"
              "TTemporaryChessboardRegister::RemoveNMovers start., msg params: 3, -1\n"
              "\t\t\tElementsIn= 0, DoubtfulElementsIn=0\n");
}

TEST(RegisterLog, ARegisterTellsItsCounts) {
    const CRegisterFolder folder;
    RegisterOptions().m_bRegisterInfoLog = true;
    TChessboardRegister<bool> tree;
    tree.bTemporary = true;
    tree.Insert(5, NumberedBoard(1), true, nullptr, false);
    tree.Insert(5, NumberedBoard(2), true, nullptr, false);
    tree.LogMessage("two", 8, 9);
    EXPECT_EQ(CRegisterFolder::Read(folder.LogPath()),
              "two, msg params: 8, 9\n\t\t\tElementsIn= 2, DoubtfulElementsIn=0\n");
}

TEST(RegisterLog, ALogThatCannotBeWrittenIsNoFailure) {
    const CRegisterFolder folder;
    RegisterOptions().m_bRegisterInfoLog = true;
    RegisterOptions().m_registerInfoLog = folder.Path() / "missing" / "registerInfo.log";
    EXPECT_NO_THROW(AppendRegisterLog({"lost"}));
    EXPECT_FALSE(std::filesystem::exists(folder.Path() / "missing"));
}

TEST(RegisterLog, EntriesOfManyThreadsStayWhole) {
    const CRegisterFolder folder;
    RegisterOptions().m_bRegisterInfoLog = true;
    constexpr int kThreads = 4;
    constexpr int kEntries = 100;
    std::vector<std::thread> threads;
    threads.reserve(kThreads);
    for (int t = 0; t < kThreads; ++t)
        threads.emplace_back([t] {
            for (int i = 0; i < kEntries; ++i)
                AppendRegisterLog({"entry", t, i, static_cast<std::uint32_t>(t), static_cast<std::uint32_t>(i)});
        });
    for (std::thread& thread : threads)
        thread.join();

    std::istringstream log(CRegisterFolder::Read(folder.LogPath()));
    std::vector<int> next(kThreads, 0);
    int entries = 0;
    for (std::string first, second; std::getline(log, first) && std::getline(log, second); ++entries) {
        int t = -1;
        int i = -1;
        ASSERT_EQ(std::sscanf(first.c_str(), "entry, msg params: %d, %d", &t, &i), 2) << first;
        ASSERT_TRUE(t >= 0 && t < kThreads);
        EXPECT_EQ(i, next[static_cast<std::size_t>(t)]++);
        EXPECT_EQ(second, "\t\t\tElementsIn= " + std::to_string(t) + ", DoubtfulElementsIn=" + std::to_string(i));
    }
    EXPECT_EQ(entries, kThreads * kEntries);
}

} // namespace quillon::test
