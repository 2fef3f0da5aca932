#include "globalregister/precalc_loader.h"

#include <algorithm>
#include <array>
#include <new>
#include <optional>
#include <span>
#include <string>
#include <system_error>

#include "globalregister/packed/little_endian.h"
#include "globalregister/packed/packed_block.h"
#include "globalregister/packed/packed_table_header.h"
#include "globalregister/packed/simple_packing.h"
#include "globalregister/precalc_files.h"
#include "globalregister/precalc_read.h"
#include "globalregister/recompression.h"
#include "globalregister/table_conversion.h"
#include "globalregister/unfinished_look.h"
#include "platform/memory_info.h"

namespace quillon {

namespace {

namespace fs = std::filesystem;

std::uint64_t FileSize(const fs::path& path) {
    std::error_code error;
    const std::uint64_t size = fs::file_size(path, error);
    return error ? 0 : size;
}

bool IsFile(const fs::path& path) {
    std::error_code error;
    return !path.empty() && fs::is_regular_file(path, error);
}

bool LooksUnfinished(std::span<const std::uint8_t> table, std::size_t nElementSize) {
    CUnfinishedLook look(nElementSize);
    look.Take(table.data(), 0, table.size() / nElementSize);
    return look.IsUnfinished();
}

/// Of the stream of simple packing, where bytes between 127 and 255 are runs.
TSeenElements SeenInSimple(std::span<const std::uint8_t> simple) {
    TSeenElements bSeen{};
    for (const std::uint8_t byte : simple.subspan(SimpleStreamStart(simple) + 1))
        bSeen[byte] = true;
    std::fill(bSeen.begin() + kFirstUnsettledByte + 1, bSeen.begin() + kUnknownElement, false);
    return bSeen;
}

class CPrecalcLoad {
  public:
    CPrecalcLoad(TGlobalRegister& data, const TPrecalcOptions& options, IPrecalcRoom& room, INotifier& notifier,
                 TLoadMode mode)
        : m_data(data), m_options(options), m_room(room), m_notifier(notifier), m_mode(mode), m_numbering(data) {}

    bool Run() {
        m_bInTheMaking = IsInTheMaking();
        m_data.bCompactUnfinished = m_bInTheMaking;
        m_bDiskWanted = m_options.m_bGlobalRegisterForceDiskAccess && m_mode.m_bAllowDisk;
        if (!m_bDiskWanted && !CheckQuota())
            return false;
        if (m_options.m_nUseDataPackedForRandomAccess < 2)
            return Finish(LoadWhole() || LoadUnpacked() || LoadSimple());
        if (!m_bDiskWanted)
            return Finish(LoadWhole() || LoadPackedOfRoots() || (!IsArchiveInTheWay() && LoadSimple()));
        return Finish(LoadPackedOfRoots() || (!IsArchiveInTheWay() && (LoadWhole() || LoadSimple())));
    }

  private:
    /// A run that makes the table anew may have put its files in their place since the marks were looked at.
    bool Finish(bool bLoaded) {
        m_data.bCompactUnfinished = m_data.bCompactUnfinished || IsInTheMaking();
        m_data.bFullyLoaded = bLoaded;
        return bLoaded;
    }

    // --- files

    [[nodiscard]] fs::path Name(EPrecalcKind kind, bool bSecondRoot, bool bDetails = false) const {
        return GetFileName(m_data, m_options.m_folders, {kind, bDetails, bSecondRoot}, m_data.path);
    }

    /// A packed form of an unfinished table is no more finished than the plain one, in whichever root they are.
    [[nodiscard]] bool IsInTheMaking() const {
        return IsLeftInTheMaking(Name(EPrecalcKind::Plain, false)) ||
               IsLeftInTheMaking(Name(EPrecalcKind::Plain, true)) || IsLeftInTheMaking(m_data.path);
    }

    /// The files of a kind that exist, in the order in which they are tried.
    [[nodiscard]] std::array<fs::path, 2> Files(EPrecalcKind kind, bool bSecondRootFirst) const {
        std::array<fs::path, 2> files;
        for (std::size_t i = 0; i < 2; ++i) {
            fs::path file = Name(kind, (i == 0) == bSecondRootFirst);
            if (IsFile(file))
                files[i] = std::move(file);
        }
        return files;
    }

    [[nodiscard]] bool IsArchiveInTheWay() const {
        return m_options.m_nUseDataPackedForRandomAccess > 2 &&
               std::ranges::any_of(Files(EPrecalcKind::PackedLz4, false),
                                   [](const auto& file) { return !file.empty(); });
    }

    /// Tries a file. Where memory is too short for it another one, or the disk, may still do.
    bool Try(const fs::path& file, bool (CPrecalcLoad::*load)(const fs::path&)) {
        try {
            if (!file.empty() && (this->*load)(file)) {
                m_data.loadedFrom = m_saved.empty() ? file : m_saved;
                return true;
            }
        } catch (const std::bad_alloc&) {
            m_room.TellMemoryShort(m_data.nPositionType);
        }
        return !file.empty() && StartAnew();
    }

    bool TryAll(const std::array<fs::path, 2>& files, bool (CPrecalcLoad::*load)(const fs::path&)) {
        return std::ranges::any_of(files, [&](const fs::path& file) { return Try(file, load); });
    }

    // --- room

    /// What the table takes in memory, as far as it is known without its flags.
    [[nodiscard]] std::uint64_t TableBytes() const {
        return UsesBitData(m_data) ? m_data.GetSize() / kPairsOfAByte : m_data.GetSize();
    }

    [[nodiscard]] bool CheckQuota() {
        if (m_mode.m_bVerifying)
            return true;
        if (TableBytes() >= m_room.Quota()) {
            (void)m_room.MakeRoom(m_data.nPositionType, TableBytes()); // the generator is told
            return false;
        }
        m_bDiskWanted = !m_room.MakeRoom(m_data.nPositionType, TableBytes()) && m_mode.m_bAllowDisk;
        return true;
    }

    [[nodiscard]] bool CanHold(std::uint64_t size) {
        return size <= LargestTable(m_room.IsGenerating()) &&
               (m_mode.m_bVerifying || m_room.MakeRoom(m_data.nPositionType, size));
    }

    [[nodiscard]] bool IsLargeForMemory(std::uint64_t nFileSize) const {
        return !m_mode.m_bVerifying && m_mode.m_bAllowDisk && nFileSize > m_room.Quota() / 4;
    }

    // --- whole tables

    bool LoadWhole() {
        return TryAll(Files(EPrecalcKind::Lz4, false), &CPrecalcLoad::ReadLz4File) ||
               TryAll(Files(EPrecalcKind::Plain, true), &CPrecalcLoad::LoadPlain);
    }

    /// What a file that is of no use has left behind is taken back. Always false.
    bool StartAnew() {
        static_cast<TPositionIndexing&>(m_data) = m_numbering;
        m_data.bBitData = m_data.bAllSettled = false;
        m_data.bCompactUnfinished = m_bInTheMaking;
        m_data.detailStream = {};
        m_data.diskStream = {};
        m_data.data = {};
        m_data.nPackedSize = 0;
        m_data.packed.reset();
        m_data.nRandomAccessKind = kPlainAccess;
        m_data.nElementSize = 1;
        if (!m_mode.m_bVerifying)
            (void)m_room.MakeRoom(m_data.nPositionType, 0);
        return false;
    }

    bool ReadLz4File(const fs::path& file) {
        const std::optional<TPackedStart> start = ReadPackedStart(file);
        if (!start) {
            WarnAboutHead(file, TableBytes());
            return false;
        }
        if (!TakeForm(file, start->m_nFirstByte, start->m_nUnpackedSize) || !CanHold(start->m_nUnpackedSize))
            return false;
        if (!UnpackFile(file, start->m_nUnpackedSize, m_data.data)) {
            TellUnreadable(file);
            return false;
        }
        CheckLoadedTable(file, EPrecalcKind::Lz4);
        return true;
    }

    /// False: the content is damaged or cannot be read.
    ///   Errors  std::bad_alloc.
    static bool UnpackFile(const fs::path& file, std::uint64_t nUnpackedSize, std::vector<std::uint8_t>& unpacked) {
        const std::optional<std::vector<std::uint8_t>> content = ReadWholeFile(file);
        unpacked.reserve(nUnpackedSize + kUnpackSlack); // all that unpacking would ask for
        return content && UnpackBlock(*content, unpacked);
    }

    bool LoadPlain(const fs::path& file) {
        const std::uint64_t size = FileSize(file);
        const std::optional<std::uint8_t> flags = ReadFlags(file);
        if (!flags) {
            WarnAboutHead(file, TableBytes());
            return false;
        }
        if (!TakeForm(file, *flags, size))
            return false;
        if (!m_data.bBitData && IsLargeForMemory(size))
            return OpenOnDisk(file);
        if (CanHold(size)) {
            if (ReadTable(file, size)) {
                CheckLoadedTable(file, EPrecalcKind::Plain);
                return true;
            }
            if (!m_mode.m_bAllowDisk)
                TellUnreadable(file);
        }
        return m_mode.m_bAllowDisk && OpenOnDisk(file);
    }

    ///   Errors  std::bad_alloc: for the combinations.
    void Number(std::uint16_t wFlags) {
        if (!ApplyFlags(m_data, wFlags))
            throw std::bad_alloc();
    }

    /// Numbers the positions as the file does, and finds out what its elements are.
    bool TakeForm(const fs::path& file, std::uint8_t flags, std::uint64_t size) {
        Number(flags);
        m_data.nElementSize = static_cast<std::uint8_t>(ElementSize(m_data, flags));
        switch (PlainFormOf(m_data, flags, size)) {
        case EPlainForm::Elements:
            return true;
        case EPlainForm::BitData:
            if (UsesBitData(m_data))
                return OpenDetails(file);
            break;
        case EPlainForm::Wrong:
            break;
        }
        const bool bPairs = UsesBitData(m_data) && size < m_data.GetSize();
        WarnAboutSize(file, size, bPairs ? m_data.GetSize() / kPairsOfAByte : m_data.GetSize() * m_data.nElementSize);
        return false;
    }

    /// Of bit data: the lengths, which stay on disk beside them. Without them there are no data.
    bool OpenDetails(const fs::path& file) {
        const fs::path details = NameInForm(file, ETableForm::Plain) += kDetailsExtension;
        const std::optional<std::uint8_t> flags = ReadFlags(details);
        m_data.nElementSize = static_cast<std::uint8_t>(ElementSize(m_data, flags.value_or(0)));
        const std::uint64_t expected = m_data.GetSize() * m_data.nElementSize;
        if (IsFile(details) && FileSize(details) != expected) {
            WarnAboutSize(details, FileSize(details), expected);
            return false;
        }
        if (flags)
            m_data.detailStream.open(details, std::ios::binary);
        m_data.bBitData = m_data.detailStream.is_open();
        if (!m_data.bBitData)
            TellUnreadable(details);
        return m_data.bBitData;
    }

    /// Of bit data the lengths alone answer: they are on disk anyhow.
    bool OpenOnDisk(const fs::path& file) {
        if (m_data.bBitData) {
            m_data.diskStream = std::move(m_data.detailStream);
            m_data.detailStream = {};
        } else {
            m_data.diskStream.open(file, std::ios::binary);
        }
        if (!m_data.diskStream.is_open()) {
            TellUnreadable(file);
            return false;
        }
        (void)m_room.MakeRoom(m_data.nPositionType, 0);
        OfferPacking(file, EPrecalcKind::Plain);
        return true;
    }

    /// The machine may have less memory than the quota: without the disk that is the end of it.
    bool ReadTable(const fs::path& file, std::uint64_t size) {
        try {
            std::optional<std::vector<std::uint8_t>> content = ReadWholeFile(file);
            if (!content || content->size() != size)
                return false;
            m_data.data = std::move(*content);
            return true;
        } catch (const std::bad_alloc&) {
            if (!m_mode.m_bAllowDisk)
                throw;
            return false;
        }
    }

    void CheckLoadedTable(const fs::path& file, EPrecalcKind kind) {
        if (!m_data.bBitData)
            TakeLook(LooksUnfinished(m_data.data, m_data.nElementSize));
        OfferPacking(file, kind);
    }

    /// The elements have been looked at.
    void TakeLook(bool bUnfinished) {
        m_data.bAllSettled = !bUnfinished;
        if (!bUnfinished)
            return;
        m_data.bCompactUnfinished = true;
        m_notifier.Inform("Dane dla pozycji typu " + m_data.typeName + " wyglądają na nie do końca wygenerowane.",
                          "Warning");
    }

    void OfferPacking(const fs::path& file, EPrecalcKind kind) {
        if (!m_mode.m_bVerifying && !m_room.IsGenerating())
            RecompressOffer(m_data, file, kind, m_options, m_notifier);
    }

    // --- packed tables

    bool LoadPackedOfRoots() { return TryAll(Files(EPrecalcKind::PackedLzw, true), &CPrecalcLoad::LoadAsPacked); }

    bool LoadAsPacked(const fs::path& file) { return LoadPacked(file, false, m_mode.m_bVerifying); }

    bool LoadPacked(const fs::path& file, bool bForceStream, bool bQuotaUnchecked) {
        const std::uint64_t size = FileSize(file);
        const std::optional<TPackedTableHeader> header = ReadPackedHeader(file);
        if (header)
            Number(header->m_wFlags);
        if (!header || header->m_nFileSize != size || header->m_nElements != m_data.GetSize()) {
            WarnAboutHead(file, header ? header->m_nFileSize : kPackedTableHeaderBytes);
            return false;
        }
        m_data.nElementSize = static_cast<std::uint8_t>(ElementSize(m_data, header->m_wFlags));
        const bool bStream = bForceStream || IsLargeForMemory(size);
        m_data.packed = RandomAccessLZWBuffer::MakePackedReader(m_data.nElementSize, header->m_nBlockElements);
        if (!OpenPacked(file, bStream, bQuotaUnchecked) &&
            (bStream || !m_mode.m_bAllowDisk || !OpenPacked(file, true, bQuotaUnchecked))) {
            if (m_data.packed->Load(file, true)) // it was for want of room
                m_room.TellMemoryShort(m_data.nPositionType);
            else
                TellUnreadable(file);
            return false;
        }
        m_data.nRandomAccessKind = kPackedAccess;
        return true;
    }

    bool OpenPacked(const fs::path& file, bool bStream, bool bQuotaUnchecked) {
        if (!m_data.packed->Load(file, bStream))
            return false;
        return bQuotaUnchecked || m_room.MakeRoom(m_data.nPositionType, m_data.packed->GetMemorySize());
    }

    /// Packed tables where packed ones are not wanted.
    bool LoadUnpacked() { return TryAll(Files(EPrecalcKind::PackedLzw, true), &CPrecalcLoad::LoadAndUnpack); }

    bool LoadAndUnpack(const fs::path& file) {
        return LoadPacked(file, true, m_mode.m_bVerifying) && UnpackLoaded(file);
    }

    bool UnpackLoaded(const fs::path& file) {
        const std::uint64_t size = m_data.GetSize() * m_data.nElementSize;
        try {
            if (CanHold(size)) {
                std::optional<std::vector<std::uint8_t>> table = m_data.packed->Unpack(m_notifier);
                if (!table)
                    return false;
                m_data.data = std::move(*table);
                m_data.packed.reset();
                m_data.nRandomAccessKind = kPlainAccess;
                TakeLook(LooksUnfinished(m_data.data, m_data.nElementSize));
                OfferSaving(file);
                return true;
            }
        } catch (const std::bad_alloc&) {
            m_room.TellMemoryShort(m_data.nPositionType);
        }
        if (!m_mode.m_bAllowDisk || !m_room.MayStayPacked(m_notifier))
            return false;
        return m_mode.m_bVerifying || m_room.MakeRoom(m_data.nPositionType, m_data.packed->GetMemorySize());
    }

    void OfferSaving(const fs::path& packed) {
        if (!m_options.m_bAskIfSaveAfterDecompressAllToMem)
            return;
        const std::string name = packed.string();
        const std::string plain =
            name.substr(0, name.size() - kPrecalcExtensions[static_cast<std::size_t>(EPrecalcKind::PackedLzw)].size());
        if (!m_notifier.AskYesNo(std::string(kSaveUnpackedQuestion) + plain + "?", "Question"))
            return;
        if (WriteWholeFile(plain, m_data.data)) {
            m_saved = plain;
            m_notifier.Inform("File saved.", "Information");
        } else {
            m_notifier.Inform("Error saving file " + plain, "Error");
        }
    }

    bool LoadSimple() { return TryAll(Files(EPrecalcKind::PackedLz4, false), &CPrecalcLoad::ReadSimple); }

    /// Archives have the same extension, and are none of this.
    bool ReadSimple(const fs::path& file) {
        const ETableForm form = FormOf(file);
        if (form == ETableForm::Archive || m_data.custom || UsesBitData(m_data))
            return false;
        const std::uint64_t size = form == ETableForm::Simple ? ReadUnpackedSize(file).value_or(0) : 0;
        if (size == 0 || size > MostSimpleBytes(m_data.GetSize())) {
            WarnAboutHead(file, TableBytes());
            return false;
        }
        if (!CanHold(size))
            return false;
        std::vector<std::uint8_t> simple;
        if (!UnpackFile(file, size, simple) || !TakeSimple(std::move(simple))) {
            TellUnreadable(file);
            return false;
        }
        return true;
    }

    bool TakeSimple(std::vector<std::uint8_t> simple) {
        const std::optional<std::uint8_t> flags = SimpleFlags(simple);
        if (flags)
            Number(*flags);
        if (!flags || !IsWholeSimple(simple, m_data.GetSize()))
            return false;
        TakeLook(LookUnfinished(SeenInSimple(simple)));
        m_data.nPackedSize = static_cast<std::uint32_t>(simple.size());
        m_data.data = std::move(simple);
        m_data.nRandomAccessKind = kSimpleAccess;
        return true;
    }

    void WarnAboutSize(const fs::path& file, std::uint64_t size, std::uint64_t expected) {
        m_notifier.Inform(FileSizeWarning(file, size, expected), "Warning");
    }

    /// Of a file that cannot be opened the size says nothing, and may be right.
    void WarnAboutHead(const fs::path& file, std::uint64_t expected) {
        const std::uint64_t size = FileSize(file);
        if (size > 0 && !ReadFlags(file)) // its first byte, whatever stands there
            TellUnreadable(file);
        else
            WarnAboutSize(file, size, expected);
    }

    void TellUnreadable(const fs::path& file) { m_notifier.Inform(UnreadableWarning(file), "Warning"); }

    TGlobalRegister& m_data;
    const TPrecalcOptions& m_options;
    IPrecalcRoom& m_room;
    INotifier& m_notifier;
    const TLoadMode m_mode;
    const TPositionIndexing m_numbering; // as it was before a file had its say
    fs::path m_saved; // the plain file with the elements of the packed one that has been unpacked; empty: none
    bool m_bDiskWanted = false;
    bool m_bInTheMaking = false;
};

} // namespace

std::uint64_t LargestTable(bool bGenerating) {
    const std::uint64_t memory = PhysicalMemory();
    return bGenerating ? memory / 4 * 3 : memory / 2;
}

bool Load(TGlobalRegister& data, const TPrecalcOptions& options, IPrecalcRoom& room, INotifier& notifier,
          TLoadMode mode) {
    return CPrecalcLoad(data, options, room, notifier, mode).Run();
}

} // namespace quillon
