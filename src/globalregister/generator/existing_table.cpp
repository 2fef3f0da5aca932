#include "globalregister/generator/existing_table.h"

#include <optional>
#include <system_error>

#include "globalregister/precalc_files.h"
#include "globalregister/precalc_read.h"
#include "globalregister/table_conversion.h"

namespace quillon {

namespace {

namespace fs = std::filesystem;

std::optional<std::uint64_t> SizeOfFile(const fs::path& path) {
    std::error_code error;
    const std::uint64_t nSize = fs::file_size(path, error);
    return error ? std::nullopt : std::optional(nSize);
}

class CExistingTable {
  public:
    CExistingTable(const TPositionIndexing& indexing, const TPrecalcFolders& folders, bool bSecondRoot)
        : m_indexing(indexing), m_folders(folders), m_bSecondRoot(bSecondRoot) {}

    [[nodiscard]] TExistingTable Find() const {
        TExistingTable best;
        for (const EPrecalcKind kind : kPrecalcKinds) {
            const fs::path file = Name(kind, false);
            std::error_code error;
            if (file.empty() || !fs::is_regular_file(file, error))
                continue;
            const EExistingForm form = FormIn(file, kind);
            if (best.m_form == EExistingForm::None || form < best.m_form)
                best = {form, file};
        }
        return best;
    }

  private:
    [[nodiscard]] fs::path Name(EPrecalcKind kind, bool bDetails) const {
        return GetFileName(m_indexing, m_folders, {kind, bDetails, m_bSecondRoot});
    }

    [[nodiscard]] EExistingForm FormIn(const fs::path& file, EPrecalcKind kind) const {
        bool bWhole = false;
        switch (kind) {
        case EPrecalcKind::Plain:
            if (const std::optional<std::uint8_t> flags = ReadFlags(file))
                bWhole = IsWhole(*flags, SizeOfFile(file));
            break;
        case EPrecalcKind::Lz4: // its flags are packed with it
            for (std::uint16_t wFlags = 0; wFlags <= kFileFlags && !bWhole; ++wFlags)
                bWhole = IsWhole(wFlags, ReadUnpackedSize(file));
            break;
        case EPrecalcKind::PackedLzw:
            bWhole = IsWholeLzw(file);
            break;
        case EPrecalcKind::PackedLz4:
            if (FormOf(file) == ETableForm::Archive)
                return EExistingForm::Archive;
            bWhole = FormOf(file) == ETableForm::Simple && !m_indexing.custom && !UsesBitData(m_indexing);
            break;
        }
        return bWhole ? EExistingForm::Whole : EExistingForm::Wrong;
    }

    [[nodiscard]] bool IsWhole(std::uint16_t wFlags, std::optional<std::uint64_t> nSize) const {
        TPositionIndexing numbered = m_indexing;
        if (!nSize || !ApplyFlags(numbered, wFlags))
            return false;
        switch (PlainFormOf(numbered, wFlags, *nSize)) {
        case EPlainForm::Elements:
            return true;
        case EPlainForm::BitData:
            return UsesBitData(numbered) && AreDetailsWhole(numbered);
        case EPlainForm::Wrong:
            break;
        }
        return false;
    }

    /// Without their lengths bit data are no data.
    [[nodiscard]] bool AreDetailsWhole(const TPositionIndexing& numbered) const {
        const fs::path details = Name(EPrecalcKind::Plain, true);
        const std::optional<std::uint8_t> flags = ReadFlags(details);
        return flags && SizeOfFile(details) == numbered.GetSize() * ElementSize(numbered, *flags);
    }

    [[nodiscard]] bool IsWholeLzw(const fs::path& file) const {
        const std::optional<TPackedTableHeader> header = ReadPackedHeader(file);
        TPositionIndexing numbered = m_indexing;
        return header && header->m_nFileSize == SizeOfFile(file) && ApplyFlags(numbered, header->m_wFlags) &&
               header->m_nElements == numbered.GetSize();
    }

    const TPositionIndexing& m_indexing;
    const TPrecalcFolders& m_folders;
    const bool m_bSecondRoot;
};

} // namespace

TExistingTable FindExistingTable(const TPositionIndexing& indexing, const TPrecalcFolders& folders) {
    const TExistingTable first = CExistingTable(indexing, folders, false).Find();
    if (first.m_form == EExistingForm::Whole)
        return first;
    const TExistingTable second = FindInSecondRoot(indexing, folders);
    return second.m_form == EExistingForm::Whole ? second : first;
}

TExistingTable FindInSecondRoot(const TPositionIndexing& indexing, const TPrecalcFolders& folders) {
    if (NameInSecondRoot(indexing, folders).empty())
        return {};
    const TExistingTable second = CExistingTable(indexing, folders, true).Find();
    return second.m_form == EExistingForm::Whole ? second : TExistingTable{};
}

fs::path NameInSecondRoot(const TPositionIndexing& indexing, const TPrecalcFolders& folders) {
    const fs::path first = GetFileName(indexing, folders, {});
    fs::path second = GetFileName(indexing, folders, {.m_bSecondRoot = true});
    std::error_code error;
    return fs::equivalent(first.parent_path(), second.parent_path(), error) ? fs::path() : second;
}

bool HasFinishedTable(const TPositionIndexing& indexing, const TPrecalcFolders& folders) {
    return FindExistingTable(indexing, folders).m_form == EExistingForm::Whole &&
           !IsLeftInTheMaking(GetFileName(indexing, folders, {})) &&
           !IsLeftInTheMaking(GetFileName(indexing, folders, {.m_bSecondRoot = true}));
}

} // namespace quillon
