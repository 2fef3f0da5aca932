#pragma once
// Packing a table from a stream into a file, piece by piece.

#include <filesystem>
#include <istream>

#include "globalregister/packed/lzw_table_packer.h"
#include "globalregister/packed/packed_table_header.h"

namespace quillon {

/// Writes a ".packed.lzw" file of header.m_nElements elements of type T read from `source`, packed from the plain
/// dictionary. The size in the header is found here. A head of zeros is written first: a file that was left unfinished
/// is none of this form.
/// Unless it is packed, the file is gone.
template <class T>
[[nodiscard]] EPackEnd WritePackedTableFile(const std::filesystem::path& path, std::istream& source,
                                            TPackedTableHeader header);

} // namespace quillon
