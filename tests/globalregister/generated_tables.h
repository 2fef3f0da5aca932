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

/// The tables of Q, R and P, made once a program.
inline CGeneratedTables& TablesOfWinners() {
    static CGeneratedTables tables;
    static const bool bMade = [] {
        for (const char* const type : {"Q", "R", "P"})
            tables.Generate(type);
        return true;
    }();
    static_cast<void>(bMade);
    return tables;
}

/// The work table of a small type in a form that only larger types have.
struct TOtherForm {
    explicit TOtherForm(const std::string& type, std::uint8_t nElementSize, bool bBitData) : m_table(type) {
        EXPECT_TRUE(MakeWorkTable(m_table));
        const std::uint64_t size = m_table.GetSize();
        m_table.nElementSize = nElementSize;
        m_table.bBitData = bBitData;
        m_table.data.assign(bBitData ? size / 4 : size * nElementSize, 0);
        for (std::size_t i = 0; !bBitData && i < m_table.data.size(); ++i)
            m_table.data[i] = i % 2 == 0 ? 0xff : 0x7f;
    }
    TGlobalRegister m_table;
};

[[nodiscard]] inline unsigned LongestMate(const TElements& elements) {
    return *std::max_element(elements.begin() + 1, elements.end());
}

} // namespace quillon
