// What the generator makes of four men, element by element against the reference, and its longest mates against
// published ones.

#include <algorithm>
#include <gtest/gtest.h>
#include <string>
#include <vector>

#include "globalregister/generator/generate.h"
#include "globalregister/indexing_reference.h"
#include "globalregister/published_mates.h"
#include "globalregister/reference_comparison.h"
#include "platform/temporary_folder.h"

namespace quillon {
namespace {

// Who wants all tables, and has nothing to answer.
class CSilentHost final : public IGenerateHost {
  public:
    void Inform(std::string_view text, std::string_view title) override { m_boxes.Inform(text, title); }
    bool AskYesNo(std::string_view text, std::string_view title) override { return m_boxes.AskYesNo(text, title); }
    EThreeWay AskYesNoCancel(std::string_view text, std::string_view) override {
        ADD_FAILURE() << text;
        return EThreeWay::Cancel;
    }
    void Progress(const TGenerateProgress&) override {}
    void TypeEnded(const TGenerateReport& report) override {
        EXPECT_EQ(report.m_status, EGenerateStatus::Done) << report.m_typeName;
    }

  private:
    CHeardBoxes m_boxes;
};

class GeneratorReference : public testing::Test {
  protected:
    GeneratorReference() {
        m_precalc.m_folders.m_installation = m_folder.Path();
        m_precalc.m_nUseDataPackedForRandomAccess = 0;
        m_precalc.m_bGlobalRegisterForceDiskAccess = false;
        m_options.m_nThreads = 2;
        m_options.m_bWithSubtypes = true;
        m_options.m_existing = EExistingTable::Leave;
    }
    std::vector<TGenerateReport> Make(const std::vector<std::string>& types) {
        CGlobalRegisters registers(m_precalc, m_host, std::uint64_t{1} << 30);
        TGeneratorControl control;
        return GenerateMany(types, m_options, m_host, registers, control);
    }
    [[nodiscard]] TElements Table(const std::string& type) const {
        return ReadWholeFile(m_folder.Path() / "Precalc" / (PrecalcBaseName(type) + ".precalc")).value_or(TElements{});
    }

    CTemporaryFolder m_folder;
    CSilentHost m_host;
    TPrecalcOptions m_precalc;
    TGenerateOptions m_options;
};

// One after the other with what they share; the reference takes up to half a minute each.
TEST_F(GeneratorReference, EveryElementOfFourMenIsThatOfTheReference) {
    reference::RetrogradeTables tables;
    for (const std::string& type : indexing_reference::TypesOf(2)) {
        (void)Make({type});
        ExpectElementsOfReference(type, Table(type), tables.Of(type));
    }
}

TEST_F(GeneratorReference, LongestMatesAreThePublishedOnes) {
    for (const TPublishedMate& published : kPublishedMates) {
        const std::vector<TGenerateReport> reports = Make({std::string(published.m_type)});
        EXPECT_EQ(reports.back().m_nMate, static_cast<std::uint32_t>(published.m_nMoves)) << published.m_type;
    }
}

} // namespace
} // namespace quillon
