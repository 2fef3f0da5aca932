#pragma once
// Tables made in a folder of their own, and the answers to what a run asks.

#include <gtest/gtest.h>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "globalregister/generator/generate.h"
#include "globalregister/precalc_format.h"
#include "globalregister/table_files.h"
#include "platform/temporary_folder.h"

namespace quillon {

namespace fs = std::filesystem;
using TTexts = std::vector<std::string>;

struct TRunKilled {};

/// Gives answers of lists, and what remains unanswered: no, cancel.
class CListedHost final : public IGenerateHost {
  public:
    void Inform(std::string_view text, std::string_view title) override { m_boxes.Inform(text, title); }
    bool AskYesNo(std::string_view text, std::string_view title) override { return m_boxes.AskYesNo(text, title); }
    EThreeWay AskYesNoCancel(std::string_view text, std::string_view) override {
        m_asked.emplace_back(text);
        return m_asked.size() <= m_answers.size() ? m_answers[m_asked.size() - 1] : EThreeWay::Cancel;
    }
    void Progress(const TGenerateProgress&) override {}
    void TypeEnded(const TGenerateReport& report) override { m_ended.push_back(report.m_typeName); }
    void LimitTemporaryRegister(std::size_t nBuckets, int nMostPercent) override {
        m_limits.push_back({nBuckets, nMostPercent});
    }
    void RestoreTemporaryRegister() override { m_limits.clear(); }

    CHeardBoxes m_boxes;
    TTexts m_asked, m_ended;
    std::vector<EThreeWay> m_answers;
    std::vector<std::pair<std::size_t, int>> m_limits;
};

class GenerateTables : public testing::Test {
  protected:
    GenerateTables() {
        m_precalc.m_folders.m_installation = m_folder.Path();
        m_precalc.m_nUseDataPackedForRandomAccess = 0;
        m_precalc.m_bGlobalRegisterForceDiskAccess = false;
        m_options.m_nThreads = 2;
    }
    [[nodiscard]] fs::path Plain(const std::string& type) const {
        return m_folder.Path() / "Precalc" / (PrecalcBaseName(type) + ".precalc");
    }
    [[nodiscard]] fs::path Beside(const std::string& type, const char* extension) const {
        return Plain(type) += extension;
    }
    TGenerateReport Make(const std::string& type) {
        m_host.m_boxes.m_told.clear();
        CGlobalRegisters registers(m_precalc, m_host, m_nQuota);
        TGeneratorControl control;
        m_control = &control;
        const TGenerateReport report = Generate(type, m_options, m_host, registers, control);
        EXPECT_EQ(registers.Quota(), m_nQuota);
        EXPECT_EQ(registers.Options().m_nUseDataPackedForRandomAccess, m_precalc.m_nUseDataPackedForRandomAccess);
        EXPECT_EQ(registers.Options().m_bGlobalRegisterForceDiskAccess, m_precalc.m_bGlobalRegisterForceDiskAccess);
        EXPECT_EQ(m_host.m_limits.size(), 0u);
        return report;
    }
    /// The run is stopped when the level behind this one is about to be saved.
    TGenerateReport MakeUpTo(const std::string& type, int nLevel) {
        m_options.m_onFileStep = [this, nLevel, nSaves = 0](std::string_view step) mutable {
            if (step == "next" && ++nSaves == nLevel)
                m_control->m_nPause.store(kGeneratorBreaks);
        };
        const TGenerateReport report = Make(type);
        m_options.m_onFileStep = {};
        return report;
    }
    [[nodiscard]] TElements Table(const std::string& type) const {
        return ReadWholeFile(Plain(type)).value_or(TElements{});
    }
    /// As the rules have it, by a slow helper; the flags of a type without pawns are 0.
    static const TElements& Expected(const std::string& type) {
        static const TElements queen = ThreeMenElements("Q"), rook = ThreeMenElements("R");
        return type == "Q" ? queen : rook;
    }
    /// A table by its size, which says that it is not of this run.
    static TElements Old(std::uint8_t mark = 1) {
        TElements table(40960, mark);
        table[0] = 0;
        return table;
    }
    void ExpectWhole(const std::string& type) const {
        EXPECT_TRUE(Table(type) == Expected(type)) << type;
        for (const char* extension : {".iter", ".SAVE_PENDING", ".NEW", ".LOCK"})
            EXPECT_FALSE(fs::exists(Beside(type, extension))) << extension;
    }

    CTemporaryFolder m_folder;
    CListedHost m_host;
    TPrecalcOptions m_precalc;
    TGenerateOptions m_options;
    TGeneratorControl* m_control = nullptr;
    std::uint64_t m_nQuota = 12345;
};

} // namespace quillon
