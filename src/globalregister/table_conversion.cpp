#include "globalregister/table_conversion.h"

#include <fstream>
#include <new>
#include <optional>
#include <string>
#include <system_error>
#include <vector>

#include "core/chess_exception.h"
#include "globalregister/disk_access.h"
#include "globalregister/packed/packed_block.h"
#include "globalregister/packed/packed_lz4_file.h"
#include "globalregister/packed/random_access_packed_buffer.h"
#include "globalregister/packed/simple_packing.h"
#include "globalregister/precalc_file_name.h"
#include "globalregister/precalc_files.h"
#include "globalregister/precalc_format.h"
#include "globalregister/precalc_read.h"
#include "platform/save_file.h"

namespace quillon {

namespace {

namespace fs = std::filesystem;
using TBytes = std::vector<std::uint8_t>;

std::string_view Extension(EPrecalcKind kind) { return kPrecalcExtensions[static_cast<std::size_t>(kind)]; }

EPrecalcKind KindOf(ETableForm form) {
    switch (form) {
    case ETableForm::Plain:
        return EPrecalcKind::Plain;
    case ETableForm::Lz4:
        return EPrecalcKind::Lz4;
    case ETableForm::Lzw:
        return EPrecalcKind::PackedLzw;
    default:
        return EPrecalcKind::PackedLz4;
    }
}

[[noreturn]] void Fail(const fs::path& path, const std::string& reason) {
    throw ChessException(path.string() + ": " + reason);
}

[[noreturn]] void FailToRead(const fs::path& path) { throw CDiskFailure(path.string() + ": cannot be read"); }
[[noreturn]] void FailToWrite(const fs::path& path) { throw CDiskFailure(path.string() + ": cannot be written"); }

/// Is there a file that gives nothing away? What is cut or foreign is another matter.
void CheckReadable(const fs::path& path) {
    std::error_code error;
    const std::uint64_t nSize = fs::file_size(path, error);
    if (error || (nSize > 0 && !ReadFlags(path))) // its first byte, whatever stands there
        FailToRead(path);
}

TPositionIndexing IndexingOf(const fs::path& path) {
    const std::optional<std::string> typeName = TypeOfFile(path);
    if (!typeName)
        Fail(path, "not the name of a file of precalculated data");
    return TPositionIndexing(*typeName);
}

/// A name tells what is in a file, so a wrong one would give the content away as other data; and it may be that of the
/// source by another way.
void CheckTarget(const fs::path& source, const fs::path& target, EPrecalcKind kind) {
    std::error_code error;
    if (fs::equivalent(source, target, error))
        Fail(target, "is the file that is to be converted");
    const bool bDetails = HasDetails(source) && kind != EPrecalcKind::PackedLzw;
    if (TypeOfFile(target) != TypeOfFile(source) || KindOfFile(target) != kind || HasDetails(target) != bDetails)
        Fail(target, "not a name for these data in this form");
}

/// A file under a name of its own until it is whole: then it takes the place of the target in one step.
class CNewFile {
  public:
    explicit CNewFile(const fs::path& target) : m_target(target) {
        FailAtFileSizeLimit();
        std::error_code error;
        if (fs::is_symlink(target, error)) // the link stays, the file that it names is replaced
            m_target = fs::weakly_canonical(target, error);
        m_path = UnusedNameBeside(m_target);
    }
    ~CNewFile() {
        std::error_code error;
        fs::remove(m_path, error);
    }
    CNewFile(const CNewFile&) = delete;
    CNewFile& operator=(const CNewFile&) = delete;

    [[nodiscard]] const fs::path& Path() const { return m_path; }
    /// What stands there goes only when the disk has the new content.
    void TakePlace() const {
        std::error_code error = SyncFile(m_path);
        if (!error)
            fs::rename(m_path, m_target, error);
        if (error)
            FailToWrite(m_target);
    }

  private:
    fs::path m_target, m_path;
};

/// Where its content goes nothing tells that it is not all there.
void RefuseUnfinished(const fs::path& path) {
    if (IsLeftInTheMaking(path))
        Fail(path, "its table was left unfinished");
}

TBytes Content(const fs::path& path) {
    std::optional<TBytes> content = ReadWholeFile(path);
    if (!content)
        FailToRead(path);
    return std::move(*content);
}

/// What a plain file turned out to be.
struct TPlainFile {
    std::uint64_t m_nElements = 0;
    std::size_t m_nElementSize = 1;
    std::uint16_t m_wFlags = 0;
    bool m_bBitData = false;
};

TPlainFile Describe(const fs::path& path, std::uint8_t flags, std::uint64_t nSize) {
    TPositionIndexing indexing = IndexingOf(path);
    if (!ApplyFlags(indexing, flags))
        throw std::bad_alloc();
    const EPlainForm form = PlainFormOf(indexing, flags, nSize);
    const bool bBitData = form == EPlainForm::BitData && UsesBitData(indexing);
    if (form != EPlainForm::Elements && !bBitData)
        Fail(path, "has " + std::to_string(nSize) + " bytes, a table of its type has " +
                       std::to_string(indexing.GetSize() * ElementSize(indexing, flags)));
    return {indexing.GetSize(), ElementSize(indexing, flags), flags, bBitData};
}

TPlainFile DescribeFile(const fs::path& path) {
    CheckReadable(path);
    return Describe(path, ReadFlags(path).value_or(0), fs::file_size(path));
}

void Write(const fs::path& path, const TBytes& content) {
    if (!WriteWholeFile(path, content))
        FailToWrite(path);
}

void PackLz4(const fs::path& source, const fs::path& target, int nProcessors) {
    TBytes packed;
    if (!PackBlock(Content(source), packed, nProcessors))
        Fail(source, "cannot be packed in this form");
    Write(target, packed);
}

void PackLzw(const fs::path& source, const TPlainFile& plain, const fs::path& target) {
    if (plain.m_bBitData)
        Fail(source, "bit data have no such form; their details have");
    std::ifstream table(source, std::ios::binary);
    const auto writer = RandomAccessLZWBuffer::MakePackedWriter(plain.m_nElementSize);
    const CNewFile file(target);
    switch (writer->CompressStream(file.Path(), table, plain.m_nElements, plain.m_wFlags)) {
    case EPackEnd::Packed:
        return file.TakePlace();
    case EPackEnd::ElementTooLarge:
        Fail(source, "a table with elements above 1023 has no such form");
    case EPackEnd::NotSmaller:
        Fail(source, "does not become smaller in this form");
    case EPackEnd::StreamFailed:
        table ? FailToWrite(target) : FailToRead(source);
    case EPackEnd::NoMemory:
        break;
    }
    throw std::bad_alloc();
}

void PackArchive(const fs::path& source, const TPlainFile& plain, const fs::path& target, int nProcessors) {
    std::error_code error;
    const std::uint64_t nSize = fs::file_size(source, error);
    std::ifstream table(source, std::ios::binary);
    std::ofstream log(fs::path(target) += kPackingLogExtension, std::ios::app);
    const auto write = [&log](std::string_view line) { log << line << std::flush; };
    const CNewFile file(target);
    if (error || !table)
        FailToRead(source);
    if (!SavePackedLz4(file.Path(), table, nSize, plain.m_wFlags, write, nProcessors))
        throw CDiskFailure(table ? target.string() + ": cannot be written, or memory is short"
                                 : source.string() + ": cannot be read");
    file.TakePlace();
}

void PackSimply(const fs::path& source, const TPlainFile& plain, const fs::path& target, int nProcessors) {
    if (plain.m_bBitData || plain.m_nElementSize != 1)
        Fail(source, "only tables with elements of one byte have a simple form");
    const std::optional<TBytes> simple = PackSimple(Content(source));
    TBytes block;
    if (!simple || !PackBlockLong(*simple, block, nProcessors))
        Fail(source, "a table with elements from 128 to 254 has no simple form");
    Write(target, block);
}

TBytes UnpackSimply(const fs::path& source) {
    TBytes simple;
    if (!UnpackBlock(Content(source), simple))
        Fail(source, "not a whole file of this form");
    const std::optional<std::uint8_t> flags = SimpleFlags(simple);
    TPositionIndexing indexing = IndexingOf(source);
    std::optional<TBytes> table;
    if (flags && ApplyFlags(indexing, *flags))
        table = UnpackSimple(simple, indexing.GetSize());
    if (!table)
        Fail(source, "not a table of its type in simple packing");
    return std::move(*table);
}

/// Of the forms that are one block: the whole table.
TBytes Unpacked(const fs::path& source, ETableForm form) {
    TBytes table;
    if (form == ETableForm::Simple)
        return UnpackSimply(source);
    if (!UnpackBlock(Content(source), table))
        Fail(source, "not a whole file of this form");
    return table;
}

void UnpackLzw(const fs::path& source, std::ostream& table) {
    const std::optional<TPackedTableHeader> header = ReadPackedHeader(source);
    if (!header)
        Fail(source, "not a whole file of this form");
    const std::size_t nElementSize = ElementSize(IndexingOf(source), header->m_wFlags);
    const auto reader = RandomAccessLZWBuffer::MakePackedReader(nElementSize, header->m_nBlockElements);
    if (!reader->Load(source, true))
        Fail(source, "not a whole file of this form");
    try {
        (void)reader->UnpackTo(table); // the stream tells of its failure itself
    } catch (const CDiskFailure&) {
        FailToRead(source);
    } catch (const ChessException& damage) {
        Fail(source, damage.what());
    }
}

void UnpackArchive(const fs::path& source, std::ostream& table) {
    if (!UnpackPackedLz4(source, table) && table)
        Fail(source, "not a whole file of this form");
}

/// Of the forms in pieces, which need not be in memory whole.
void UnpackInPieces(const fs::path& source, ETableForm form, const fs::path& target) {
    const CNewFile file(target);
    std::ofstream table(file.Path(), std::ios::binary);
    form == ETableForm::Lzw ? UnpackLzw(source, table) : UnpackArchive(source, table);
    table.close();
    if (!table)
        FailToWrite(target);
    (void)Describe(source, ReadFlags(file.Path()).value_or(0), fs::file_size(file.Path()));
    file.TakePlace();
}

} // namespace

ETableForm FormOf(const fs::path& path) {
    switch (KindOfFile(path)) {
    case EPrecalcKind::Plain:
        return ETableForm::Plain;
    case EPrecalcKind::Lz4:
        return ETableForm::Lz4;
    case EPrecalcKind::PackedLzw:
        return ETableForm::Lzw;
    case EPrecalcKind::PackedLz4:
        break;
    }
    std::error_code error;
    const std::optional<TPackedLz4Header> header = ReadPackedLz4Header(path);
    if (header && header->m_nFileSize == fs::file_size(path, error) && !error)
        return ETableForm::Archive;
    return ReadUnpackedSize(path) ? ETableForm::Simple : ETableForm::Unknown;
}

fs::path NameInForm(const fs::path& path, ETableForm form) {
    std::string name = path.string();
    name.resize(name.size() - Extension(KindOfFile(path)).size());
    if (form == ETableForm::Lzw && name.ends_with(kDetailsExtension))
        name.resize(name.size() - kDetailsExtension.size());
    return name + std::string(Extension(KindOf(form)));
}

void PackTableFile(const fs::path& source, ETableForm form, const fs::path& target, int nProcessors) {
    RefuseUnfinished(source);
    if (FormOf(source) != ETableForm::Plain)
        Fail(source, "is packed already");
    if (form == ETableForm::Plain || form == ETableForm::Unknown)
        Fail(target, "is no packed form");
    CheckTarget(source, target, KindOf(form));
    const TPlainFile plain = DescribeFile(source);
    switch (form) {
    case ETableForm::Plain:
    case ETableForm::Unknown:
        return;
    case ETableForm::Lz4:
        return PackLz4(source, target, nProcessors);
    case ETableForm::Lzw:
        return PackLzw(source, plain, target);
    case ETableForm::Archive:
        return PackArchive(source, plain, target, nProcessors);
    case ETableForm::Simple:
        return PackSimply(source, plain, target, nProcessors);
    }
}

void UnpackTableFile(const fs::path& source, const fs::path& target) {
    RefuseUnfinished(source);
    CheckTarget(source, target, EPrecalcKind::Plain);
    CheckReadable(source);
    const ETableForm form = FormOf(source);
    if (form == ETableForm::Plain)
        Fail(source, "not a packed file");
    if (form != ETableForm::Lz4 && form != ETableForm::Simple)
        return UnpackInPieces(source, form, target);
    const TBytes table = Unpacked(source, form);
    (void)Describe(source, table.empty() ? 0 : table[0], table.size());
    Write(target, table);
}

} // namespace quillon
