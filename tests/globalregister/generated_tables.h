#pragma once
// Tables made by the generator, in a folder of their own.

#include <algorithm>
#include <memory>
#include <string>
#include <vector>

#include "core/fen.h"
#include "globalregister/generator/generator_run.h"
#include "globalregister/table_files.h"
#include "platform/temporary_folder.h"

namespace quillon {

class CGeneratedTables {
  public:
    /// Without generating: files by other means, types that this one turns into.
    void Write(const std::string& type, const TElements& elements) {
        WriteElements(m_folder.Path() / "Precalc" / (PrecalcBaseName(type) + ".precalc"), elements);
    }

    /// Generates a table from the files written so far, and writes it.
    TElements Generate(const std::string& type, TGeneratorOptions options = {}) {
        const std::unique_ptr<CGlobalRegisters> registers = Registers();
        TGlobalRegister table(type);
        EXPECT_TRUE(MakeWorkTable(table));
        CGeneratorRun run(table, *registers, m_control, std::move(options));
        int nFruitless = 0;
        for (int level = 1; nFruitless < kFruitlessLevels; ++level) {
            const TLevelResult result = run.RunLevel(level);
            EXPECT_EQ(result.m_nResult, kLevelDone) << type << " " << level;
            EXPECT_TRUE(result.m_errors.empty());
            if (result.m_nResult != kLevelDone)
                break;
            nFruitless = result.m_nFound == 0 ? nFruitless + 1 : 0;
        }
        FinishTable(table);
        Write(type, table.data);
        return table.data;
    }

    /// A manager that sees the files of this moment.
    [[nodiscard]] std::unique_ptr<CGlobalRegisters> Registers() {
        TPrecalcOptions options;
        options.m_folders.m_installation = m_folder.Path();
        options.m_bGlobalRegisterForceDiskAccess = false;
        auto registers = std::make_unique<CGlobalRegisters>(options, m_boxes, std::uint64_t{1} << 30);
        registers->SetGeneratorMode(true);
        return registers;
    }

    [[nodiscard]] TGeneratorControl& Control() { return m_control; }

  private:
    // No three-men type has so long a way between two lengths.
    static constexpr int kFruitlessLevels = 34;

    CTemporaryFolder m_folder;
    CHeardBoxes m_boxes;
    TGeneratorControl m_control;
};

[[nodiscard]] inline unsigned LongestMate(const TElements& elements) {
    return *std::max_element(elements.begin() + 1, elements.end());
}

} // namespace quillon
