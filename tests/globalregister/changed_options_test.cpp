#include "globalregister/changed_options.h"

#include <memory>

#include "globalregister/table_files.h"
#include "platform/temporary_folder.h"
#include "tempregister/failing_allocation.h"

namespace quillon {
namespace {

TEST(ChangedOptions, AreBackWhateverMemoryIsLeft) {
    const CTemporaryFolder folder;
    WriteElements(folder.Path() / "Precalc/Q.precalc", {0});
    CHeardBoxes boxes;
    TPrecalcOptions options;
    options.m_folders.m_installation = folder.Path();
    for (const bool bMemoryShort : {false, true}) {
        CGlobalRegisters registers(options, boxes, 1 << 20);
        auto changed = std::make_unique<CChangedOptions>(registers);
        TPrecalcOptions others = options;
        others.m_nUseDataPackedForRandomAccess = 0;
        others.m_folders.m_secondRoot = folder.Path() / "a second folder, whose name is a text of its own";
        ASSERT_NE(options.m_nUseDataPackedForRandomAccess, 0);
        EXPECT_TRUE(changed->Change(others));
        EXPECT_EQ(registers.Options().m_nUseDataPackedForRandomAccess, 0);
        if (bMemoryShort) {
            const test::CFailingAllocations failing;
            changed.reset();
        }
        changed.reset();
        EXPECT_EQ(registers.Options().m_nUseDataPackedForRandomAccess, options.m_nUseDataPackedForRandomAccess);
        EXPECT_EQ(registers.Options().m_folders.m_secondRoot, options.m_folders.m_secondRoot);
    }
}

} // namespace
} // namespace quillon
