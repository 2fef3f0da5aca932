#include "library/embedded_sample_library.h"

#include <fstream>
#include <sstream>

#include <gtest/gtest.h>

namespace quillon {

TEST(EmbeddedSampleLibrary, IsTheFileByteForByte) {
    std::ifstream file(QUILLON_SOURCE_DIR "/data/sample_problems.cp", std::ios::binary);
    ASSERT_TRUE(file);
    std::ostringstream text;
    text << file.rdbuf();
    ASSERT_FALSE(text.str().empty());
    EXPECT_EQ(EmbeddedSampleLibrary(), text.str());
}

} // namespace quillon
