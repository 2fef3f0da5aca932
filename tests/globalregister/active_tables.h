#pragma once
// Precalculated data that the search of a test uses while this lives: mates of queen and rook, and of bishop and knight
// that there are none.

#include <initializer_list>
#include <memory>

#include "globalregister/active_registers.h"
#include "globalregister/table_files.h"
#include "platform/temporary_folder.h"

namespace quillon {

class CActiveTables {
  public:
    /// bLoaded: at once, so that shallow nodes are answered too.
    explicit CActiveTables(bool bLoaded = true, std::initializer_list<const char*> types = {"Q", "R", "B", "N"}) {
        for (const char* const type : types)
            Write(type, *type == 'Q' || *type == 'R' ? ThreeMenElements(type)
                                                     : TElements(TPositionIndexing(type).GetSize(), 0));
        TPrecalcOptions options;
        options.m_folders.m_installation = m_folder.Path();
        m_registers = std::make_unique<CGlobalRegisters>(options, m_boxes, std::uint64_t{1} << 30);
        m_active = std::make_unique<CActiveRegisters>(*m_registers);
        for (const char* const type : types)
            if (bLoaded && !IsTypeAvailable(TPositionIndexing(type).nPositionType))
                throw std::runtime_error(type);
    }

    void Write(const std::string& type, const TElements& elements) { WriteElements(PathOf(type), elements); }
    [[nodiscard]] std::filesystem::path PathOf(const std::string& type) const {
        return m_folder.Path() / "Precalc" / (PrecalcBaseName(type) + ".precalc");
    }
    [[nodiscard]] CGlobalRegisters& Registers() { return *m_registers; }
    [[nodiscard]] CHeardBoxes& Boxes() { return m_boxes; }

    /// The search knows of them or not.
    void Activate(bool bOn) { SetActiveRegisters(bOn ? m_registers.get() : nullptr); }

  private:
    CTemporaryFolder m_folder;
    CHeardBoxes m_boxes;
    std::unique_ptr<CGlobalRegisters> m_registers;
    std::unique_ptr<CActiveRegisters> m_active;
};

} // namespace quillon
