#include "library/tag_scan.h"

#include <gtest/gtest.h>
#include <set>
#include <string>

#include "core/chess_exception.h"
#include "platform/temporary_folder.h"

namespace quillon {
namespace {

std::set<std::string> TagsIn(const std::string& text) {
    const CTemporaryFolder folder;
    folder.Write("a.cp", text);
    std::set<std::string> tags{"known"};
    AppendTagsFromFile(folder.Path() / "a.cp", tags);
    return tags;
}

using TTags = std::set<std::string>;

TEST(TagScan, FindsTheTagsOfEveryProblem) {
    EXPECT_EQ(TagsIn("UTF-8\n1 #2 whatever\n//#TAGS\r\n//#ideal mate\r\n//#TAGS\n//#\n{ broken\n//#no tag\n"
                     "//#tags\n//#wie\xC5\xBC"
                     "a\n//!VARIANTS\n//#neither\n"),
              (TTags{"known", "ideal mate", "TAGS",
                     "wie\xC5\xBC"
                     "a"}));
    EXPECT_EQ(TagsIn("UTF-8\n  //#TAGS\n\t//#one\n\n //#two\n"), (TTags{"known", "one", "two"}));
    EXPECT_EQ(TagsIn(""), (TTags{"known"}));
}

TEST(TagScan, OtherCommentsBetweenTagsMeanNothing) {
    EXPECT_EQ(TagsIn("UTF-8\n1 #2\n//#TAGS\n//#one\n// note\n//#two\n/* a\nb */ //#three\n//@other\n//#four\n"
                     "//!VARIANTS\n//#no\n"),
              (TTags{"known", "one", "two", "three", "four"}));
    EXPECT_EQ(TagsIn("//#TAGS\n//#one\n/* open\n//#TAGS\n//#two"), (TTags{"known", "one", "two"}));
}

TEST(TagScan, AByteOrderMarkAloneMeansUtf8) {
    EXPECT_EQ(TagsIn("\xEF\xBB\xBF"
                     "1 #2\n//#TAGS\n//#wie\xC5\xBC"
                     "a\n"),
              (TTags{"known", "wie\xC5\xBC"
                              "a"}));
}

TEST(TagScan, DecodesALegacyFile) {
    EXPECT_EQ(TagsIn("1 #2\n//#TAGS\n//#wie\xBF"
                     "a\n"),
              (TTags{"known", "wie\xC5\xBC"
                              "a"}));
}

TEST(TagScan, AFileThatCannotBeReadIsTold) {
    TTags tags;
    try {
        AppendTagsFromFile("/nowhere/at all.cp", tags);
        FAIL();
    } catch (const ChessException& failure) {
        EXPECT_STREQ(failure.what(), "Error reading file.");
    }
}

} // namespace
} // namespace quillon
