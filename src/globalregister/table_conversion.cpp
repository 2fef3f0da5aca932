#include "globalregister/table_conversion.h"

#include <fstream>
#include <optional>
#include <sstream>
#include <string>
#include <system_error>
#include <vector>

#include "core/chess_exception.h"
#include "core/notifier.h"
#include "globalregister/packed/packed_block.h"
#include "globalregister/packed/packed_lz4_file.h"
#include "globalregister/packed/random_access_packed_buffer.h"
#include "globalregister/packed/simple_packing.h"
#include "globalregister/precalc_file_name.h"
#include "globalregister/precalc_files.h"
#include "globalregister/precalc_format.h"
#include "globalregister/precalc_read.h"

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
        std::error_code error;
        if (fs::is_symlink(target, error)) // the link stays, the file that it names is replaced
            m_target = fs::weakly_canonical(target, error);
        m_path = m_target;
        m_path += kNewExtension;
    }
    ~CNewFile() {
        std::error_code error;
        fs::remove(m_path, error);
    }
    CNewFile(const CNewFile&) = delete;
    CNewFile& operator=(const CNewFile&) = delete;

    [[nodiscard]] const fs::path& Path() const { return m_path; }
    [[nodiscard]] bool TakePlace() const {
        std::error_code error;
        fs::rename(m_path, m_target, error);
        return !error;
    }

  private:
    static constexpr std::string_view kNewExtension = ".NEW";
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
        Fail(path, "cannot be read");
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
    const std::optional<std::uint8_t> flags = ReadFlags(path);
    std::error_code error;
    const std::uint64_t nSize = fs::file_size(path, error);
    if (error || (nSize > 0 && !flags))
        Fail(path, "cannot be read");
    return Describe(path, flags.value_or(0), nSize);
}

void Write(const fs::path& path, const TBytes& content) {
    if (!WriteWholeFile(path, content))
        Fail(path, "cannot be written");
}

class CSilentNotifier final : public INotifier {
  public:
    void Inform(std::string_view, std::string_view) override {}
    bool AskYesNo(std::string_view, std::string_view) override { return false; }
};

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
    if (!table || !writer->CompressStream(file.Path(), table, plain.m_nElements, plain.m_wFlags) || !file.TakePlace())
        Fail(target, "cannot be written in this form");
}

void PackArchive(const fs::path& source, const TPlainFile& plain, const fs::path& target, int nProcessors) {
    std::error_code error;
    const std::uint64_t nSize = fs::file_size(source, error);
    std::ifstream table(source, std::ios::binary);
    std::ofstream log(fs::path(target) += kPackingLogExtension, std::ios::app);
    const auto write = [&log](std::string_view line) { log << line << std::flush; };
    const CNewFile file(target);
    if (error || !table || !SavePackedLz4(file.Path(), table, nSize, plain.m_wFlags, write, nProcessors) ||
        !file.TakePlace())
        Fail(target, "cannot be written in this form");
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

TBytes UnpackLzw(const fs::path& source) {
    const std::optional<TPackedTableHeader> header = ReadPackedHeader(source);
    if (!header)
        Fail(source, "cannot be read");
    const std::size_t nElementSize = ElementSize(IndexingOf(source), header->m_wFlags);
    const auto reader = RandomAccessLZWBuffer::MakePackedReader(nElementSize, header->m_nBlockElements);
    CSilentNotifier silent;
    if (!reader->Load(source, false))
        Fail(source, "not a whole file of this form");
    std::optional<TBytes> table = reader->Unpack(silent);
    if (!table)
        Fail(source, "Error unpacking LZW data");
    return std::move(*table);
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

TBytes Unpacked(const fs::path& source) {
    TBytes table;
    switch (FormOf(source)) {
    case ETableForm::Plain:
        Fail(source, "not a packed file");
    case ETableForm::Lz4:
        if (!UnpackBlock(Content(source), table))
            Fail(source, "not a whole file of this form");
        return table;
    case ETableForm::Lzw:
        return UnpackLzw(source);
    case ETableForm::Simple:
        return UnpackSimply(source);
    case ETableForm::Archive:
    case ETableForm::Unknown:
        break;
    }
    std::ostringstream content;
    if (!UnpackPackedLz4(source, content))
        Fail(source, "not a whole file of this form");
    const std::string text = std::move(content).str();
    return {text.begin(), text.end()};
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
    const TBytes table = Unpacked(source);
    (void)Describe(source, table.empty() ? 0 : table[0], table.size());
    Write(target, table);
}

} // namespace quillon
