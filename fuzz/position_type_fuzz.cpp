// Names of types and of their files: any text is a type or refused with a ChessException. The indices of a type name
// positions whose own index names the same board, and its file name gives the type back.

#include <cstdint>
#include <optional>
#include <string>

#include "core/chess_exception.h"
#include "fuzz_check.h"
#include "globalregister/position_indexing.h"
#include "globalregister/precalc_file_name.h"

namespace quillon {

namespace {

std::optional<TPositionIndexing> Read(std::string_view text) {
    try {
        return TPositionIndexing(text);
    } catch (const ChessException&) {
        return std::nullopt;
    }
}

// Equal pieces in another order have another index of the same board.
void CheckIndex(const TPositionIndexing& indexing, std::uint64_t index) {
    TChessboard b = EmptyChessboard(), again = EmptyChessboard();
    if (!indexing.GetPositionByIndex(index, b))
        return;
    const std::uint64_t back = indexing.GetIndex(b);
    Require(back < indexing.GetSize(), "an index is within the table");
    Require(indexing.GetPositionByIndex(back, again), "the index of a position names one");
    Require(again.m_board == b.m_board, "and the same");
    Require(indexing.GetIndex(again) == back, "a board has one index of its own");
}

void CheckType(const TPositionIndexing& indexing) {
    const std::uint64_t size = indexing.GetSize();
    Require(size > 0, "no table is empty");
    for (std::uint64_t i = 0; i < 50; ++i)
        CheckIndex(indexing, i * 0x9e3779b97f4a7c15u % size);
    const TPrecalcFolders folders{"home", ""};
    Require(TypeOfFile(GetFileName(indexing, folders, {EPrecalcKind::PackedLzw})) == indexing.typeName,
            "the file name tells the type");
}

} // namespace

} // namespace quillon

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace quillon;
    const std::string_view text = AsText(data, size);
    if (const std::optional<TPositionIndexing> indexing = Read(text))
        CheckType(*indexing);
    static_cast<void>(TypeOfFile(std::string(text)));
    return 0;
}
