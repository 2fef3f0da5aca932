#include "include_rules.h"

#include <iterator>

#include <gtest/gtest.h>

namespace quillon {

namespace {

// The reasons alone, for files of one line.
std::vector<std::string> FaultsOf(const std::string& file, const std::string& text) {
    std::vector<std::string> reasons;
    for (const TIncludeFault& fault : CheckIncludes(file, text))
        reasons.push_back(fault.m_reason);
    return reasons;
}

using TReasons = std::vector<std::string>;

} // namespace

TEST(IncludeRules, DownwardsAndSidewaysIsAllowed) {
    EXPECT_EQ(FaultsOf("core/a.cpp", "#include \"platform/clock.h\"\n"), TReasons{});
    EXPECT_EQ(FaultsOf("search/a.cpp", "#include \"heuristics/b.h\"\n"), TReasons{});
    EXPECT_EQ(FaultsOf("heuristics/a.cpp", "#include \"search/b.h\"\n"), TReasons{});
    EXPECT_EQ(FaultsOf("globalregister/packed/a.cpp", "#include \"globalregister/packed/a.h\"\n"), TReasons{});
    EXPECT_EQ(FaultsOf("cli/a.cpp", "#include \"app/b.h\"\n#include <vector>\n"), TReasons{});
}

TEST(IncludeRules, UpwardsIsAFaultWithItsLine) {
    const std::vector<TIncludeFault> expected{{"core/a.h", 3, "core must not include search"}};
    EXPECT_EQ(CheckIncludes("core/a.h", "#pragma once\n\n  #  include \"search/b.h\" // why\n"), expected);
}

TEST(IncludeRules, EveryFolderIsBelowTheNext) {
    const std::vector<std::string> upwards{"platform",  "core",    "tempregister", "search", "parallel",
                                           "tablebase", "library", "app",          "cli"};
    for (auto lower = upwards.begin(); lower != upwards.end(); ++lower)
        for (auto higher = std::next(lower); higher != upwards.end(); ++higher) {
            EXPECT_EQ(FaultsOf(*lower + "/a.h", "#include \"" + *higher + "/b.h\"").size(), 1u) << *lower << *higher;
            EXPECT_EQ(FaultsOf(*higher + "/a.h", "#include \"" + *lower + "/b.h\"").size(), 0u) << *lower << *higher;
        }
}

TEST(IncludeRules, ProgramsDoNotIncludeEachOther) {
    EXPECT_EQ(FaultsOf("cli/a.cpp", "#include \"ui/b.h\"").size(), 1u);
    EXPECT_EQ(FaultsOf("ui/a.cpp", "#include \"cli/b.h\"").size(), 1u);
    EXPECT_EQ(FaultsOf("ui/a.cpp", "#include \"ui/b.h\"").size(), 0u);
}

TEST(IncludeRules, IncludeWithoutAKnownFolderIsAFault) {
    EXPECT_EQ(FaultsOf("core/a.cpp", "#include \"a.h\""), TReasons{"\"a.h\" does not name its folder"});
    EXPECT_EQ(FaultsOf("core/a.cpp", "#include \"misc/a.h\""), TReasons{"unknown folder of \"misc/a.h\""});
    EXPECT_EQ(FaultsOf("core/a.cpp", "#include \"../core/a.h\""), TReasons{"unknown folder of \"../core/a.h\""});
}

TEST(IncludeRules, FileOutsideTheKnownFoldersIsAFault) {
    EXPECT_EQ(FaultsOf("a.h", ""), TReasons{"is in no known folder"});
    EXPECT_EQ(FaultsOf("misc/a.h", ""), TReasons{"is in no known folder"});
}

TEST(IncludeRules, OnlyTheWindowKnowsQt) {
    for (const char* header : {"<QWidget>", "<QtWidgets/QWidget>", "\"QString\"", "<qglobal.h>"}) {
        EXPECT_EQ(FaultsOf("app/a.cpp", std::string("#include ") + header).size(), 1u) << header;
        EXPECT_EQ(FaultsOf("ui/a.cpp", std::string("#include ") + header).size(), 0u) << header;
    }
    EXPECT_EQ(FaultsOf("app/a.cpp", "#include <queue>"), TReasons{});
}

TEST(IncludeRules, HoldInTheWholeTree) {
    int nFiles = 0;
    for (const TIncludeFault& fault : CheckIncludesUnder(std::filesystem::path(QUILLON_SOURCE_DIR) / "src", nFiles))
        ADD_FAILURE() << "src/" << fault.m_file << ":" << fault.m_nLine << ": " << fault.m_reason;
    EXPECT_GT(nFiles, 30); // it really was the tree of the product
}

} // namespace quillon
