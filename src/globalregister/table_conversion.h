#pragma once
// Files of precalculated data from one form into another. What a file holds is told by its name, so both names have to
// be those of the data (precalc_file_name.h).

#include <cstdint>
#include <filesystem>
#include <string_view>

namespace quillon {

enum class ETableForm : std::uint8_t {
    Plain,
    Lz4,     // ".lz4"
    Lzw,     // ".packed.lzw"
    Archive, // ".packed.lz4", in buckets
    Simple,  // the same extension, simple packing
    Unknown, // the same extension, cut or damaged: neither of them
};

/// The form of a file, by its extension and, where that stands for two, by its content.
[[nodiscard]] ETableForm FormOf(const std::filesystem::path& path);

/// The name that the same data have in this form. Lengths of bit data that are packed by LZW are a table of their own,
/// which a load takes before the bits: they get the name of the table.
[[nodiscard]] std::filesystem::path NameInForm(const std::filesystem::path& path, ETableForm form);

/// Packs a plain file, of a table, of bit data or of their details. An archive has a log of its buckets beside it; that
/// stays also where packing has failed. A table that was left in the making is refused: in another form, or folder, it
/// would pass for a finished one.
///   target   replaced once the new file, under a name of its own, is whole. Its name has to be that of the same data
///            in this form.
///   Errors   ChessException: not a plain file of its type, a target of another name, or that is the source, data that
///   this form has no place for. CDiskFailure (disk_access.h): a file cannot be read or written; what there was
///   stays. std::bad_alloc.
void PackTableFile(const std::filesystem::path& source, ETableForm form, const std::filesystem::path& target,
                   int nProcessors);

/// Makes the plain file of a packed one. Errors as above.
void UnpackTableFile(const std::filesystem::path& source, const std::filesystem::path& target);

} // namespace quillon
