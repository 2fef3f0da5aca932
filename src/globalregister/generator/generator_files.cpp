#include "globalregister/generator/generator_files.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <fstream>
#include <system_error>

#include "globalregister/packed/byte_streams.h"
#include "globalregister/packed/little_endian.h"
#include "globalregister/precalc_file_name.h"
#include "globalregister/precalc_read.h"
#include "platform/save_file.h"

namespace quillon {

namespace {

namespace fs = std::filesystem;

constexpr std::string_view kNextExtension = ".NEW";
constexpr std::string_view kLockExtension = ".LOCK";
constexpr std::size_t kZerosBytes = 1 << 20;
constexpr const char* kTaskFormat = "Quillon save 1: level %u, finished %u, keep %u, bytes %llu\n";

fs::path With(const fs::path& path, std::string_view extension) { return fs::path(path) += extension; }

bool IsFile(const fs::path& path) {
    std::error_code error;
    return fs::is_regular_file(path, error);
}

std::error_code RenameTo(const fs::path& from, const fs::path& to) {
    std::error_code error;
    fs::rename(from, to, error);
    return error;
}

std::string_view AsText(std::span<const std::uint8_t> bytes) {
    return {reinterpret_cast<const char*>(bytes.data()), bytes.size()};
}

/// The file at its full size, all zeros but for its flags. False if the disk has no room for it, or after a stop.
bool WriteZeros(const fs::path& path, std::uint64_t nBytes, std::span<const std::uint8_t> flags,
                const std::function<bool()>& isStopped) {
    std::ofstream file(path, std::ios::binary | std::ios::trunc);
    std::vector<std::uint8_t> piece(kZerosBytes, 0);
    std::ranges::copy(flags, piece.begin());
    for (std::uint64_t nDone = 0; file && nDone < nBytes; nDone += kZerosBytes) {
        if (isStopped && isStopped())
            return false;
        (void)WriteBytes(file, piece.data(), std::min<std::uint64_t>(kZerosBytes, nBytes - nDone));
        std::fill_n(piece.begin(), flags.size(), std::uint8_t{0});
    }
    file.close();
    return static_cast<bool>(file);
}

} // namespace

fs::path CGeneratorFiles::PendingMark() const { return With(m_paths.m_plain, kSavePendingExtension); }
fs::path CGeneratorFiles::LockFile() const { return With(m_paths.m_plain, kLockExtension); }
fs::path CGeneratorFiles::LevelFile() const { return With(m_paths.m_plain, kIterationExtension); }
fs::path CGeneratorFiles::Next() const {
    return With(m_paths.m_plain, m_paths.m_details.empty() ? kNextExtension : kBitDataExtension);
}
fs::path CGeneratorFiles::NextDetails() const { return With(m_paths.m_details, kNextExtension); }

fs::path CGeneratorFiles::DetailsNow() const {
    if (m_paths.m_details.empty())
        return {};
    return IsFile(NextDetails()) ? NextDetails() : m_paths.m_details;
}

std::optional<std::uint32_t> CGeneratorFiles::ReadLevel() const {
    std::ifstream file(LevelFile(), std::ios::binary);
    std::array<std::uint8_t, sizeof(std::uint32_t)> bytes{};
    if (!ReadBytes(file, bytes.data(), bytes.size()))
        return std::nullopt;
    return LoadLittleEndian<std::uint32_t>(bytes.data());
}

bool CGeneratorFiles::CreateDetails(std::uint64_t nBytes, std::uint16_t flags, std::size_t nElementSize,
                                    const std::function<bool()>& isStopped) {
    std::array<std::uint8_t, sizeof flags> head{};
    StoreLittleEndian(head.data(), flags);
    Step("details");
    std::error_code error;
    fs::remove(NextDetails(), error);
    if (WriteZeros(NextDetails(), nBytes, std::span(head).first(nElementSize), isStopped))
        return true;
    fs::remove(NextDetails(), error);
    return false;
}

// --- saving

std::string CGeneratorFiles::Save(std::span<const std::uint8_t> table, std::uint32_t nLevel) {
    return Run(table, {nLevel, false, m_keepOld, table.size()});
}

std::string CGeneratorFiles::Finish(std::span<const std::uint8_t> table) {
    m_bDurable = true;
    return Run(table, {0, true, m_keepOld, table.size()});
}

std::string CGeneratorFiles::Run(std::span<const std::uint8_t> table, const TSaveTask& task) {
    const std::string cannotOpen = "Cannot open file to write: ", cannotWrite = "Error writing to file: ";
    if (const fs::path details = DetailsNow(); m_bDurable && !details.empty()) {
        Step("sync");
        if (SyncFile(details))
            return cannotWrite + details.string();
    }
    Step("next");
    if (!std::ofstream(Next(), std::ios::binary | std::ios::app))
        return cannotOpen + Next().string();
    if (WriteToDisk(Next(), AsText(table), m_bDurable))
        return cannotWrite + Next().string();
    if (WriteSmall(PendingMark(), TextOf(task))) {
        (void)Remove(Next());
        return cannotWrite + PendingMark().string();
    }
    if (Carry(task))
        return cannotWrite + m_paths.m_plain.string();
    m_keepOld = EKeepOld::Nothing;
    return {};
}

/// Each step leaves what tells that it has been done: those that have are passed over.
std::error_code CGeneratorFiles::Carry(const TSaveTask& task) {
    if (task.m_keepOld != EKeepOld::Nothing)
        if (const std::error_code error = KeepPackedForms())
            return error;
    if (!m_paths.m_details.empty())
        if (const std::error_code error = TakePlace(NextDetails(), m_paths.m_details, task.m_keepOld))
            return error;
    if (const std::error_code error = TakePlace(Next(), m_paths.m_plain, task.m_keepOld))
        return error;
    std::array<std::uint8_t, sizeof task.m_nLevel> level{};
    StoreLittleEndian(level.data(), task.m_nLevel);
    if (const std::error_code error = task.m_bFinished ? Remove(LevelFile()) : WriteSmall(LevelFile(), AsText(level)))
        return error;
    SyncNames();
    if (const std::error_code error = Remove(PendingMark()))
        return error;
    SyncNames();
    return {};
}

std::error_code CGeneratorFiles::TakePlace(const fs::path& next, const fs::path& file, EKeepOld keepOld) {
    if (!IsFile(next))
        return {};
    const fs::path kept = With(file, kReplacedExtension);
    if (IsFile(file) && (keepOld == EKeepOld::All || (keepOld == EKeepOld::IfFree && !IsFile(kept)))) {
        Step("keep");
        if (const std::error_code error = RenameTo(file, kept))
            return error;
    }
    Step("take place");
    return RenameTo(next, file);
}

std::error_code CGeneratorFiles::KeepPackedForms() {
    for (const fs::path& plain : {m_paths.m_plain, m_paths.m_details})
        for (const EPrecalcKind kind : {EPrecalcKind::Lz4, EPrecalcKind::PackedLzw, EPrecalcKind::PackedLz4}) {
            const fs::path packed = With(plain, kPrecalcExtensions[static_cast<std::size_t>(kind)]);
            if (plain.empty() || !IsFile(packed))
                continue;
            Step("keep packed");
            if (const std::error_code error = RenameTo(packed, With(packed, kReplacedExtension)))
                return error;
        }
    return {};
}

/// So that a kill leaves the old content or the new one, whole.
std::error_code CGeneratorFiles::WriteSmall(const fs::path& file, std::string_view content) {
    const fs::path next = With(file, kNextExtension);
    Step("write small");
    if (const std::error_code error = WriteToDisk(next, content, m_bDurable))
        return error;
    Step("name small");
    return RenameTo(next, file);
}

void CGeneratorFiles::SyncNames() const {
    if (m_bDurable)
        SyncFolder(m_paths.m_plain.parent_path());
}

std::error_code CGeneratorFiles::Remove(const fs::path& file) {
    Step("remove");
    std::error_code error;
    fs::remove(file, error);
    return error;
}

// --- what a run has left

std::string CGeneratorFiles::TextOf(const TSaveTask& task) {
    char text[160];
    std::snprintf(text, sizeof text, kTaskFormat, task.m_nLevel, task.m_bFinished ? 1u : 0u,
                  static_cast<unsigned>(task.m_keepOld), static_cast<unsigned long long>(task.m_nBytes));
    return text;
}

std::optional<CGeneratorFiles::TSaveTask> CGeneratorFiles::ReadTask() const {
    const std::optional<std::vector<std::uint8_t>> content = ReadWholeFile(PendingMark());
    if (!content)
        return std::nullopt;
    const std::string text(AsText(*content));
    unsigned level = 0, finished = 0, keep = 0;
    unsigned long long nBytes = 0;
    if (std::sscanf(text.c_str(), kTaskFormat, &level, &finished, &keep, &nBytes) != 4)
        return std::nullopt;
    const TSaveTask task{level, finished != 0, static_cast<EKeepOld>(keep), nBytes};
    return keep <= static_cast<unsigned>(EKeepOld::IfFree) && TextOf(task) == text ? std::optional(task) : std::nullopt;
}

bool CGeneratorFiles::FinishPendingSave() {
    std::error_code error;
    if (!fs::exists(PendingMark(), error))
        return !error;
    const std::optional<TSaveTask> task = ReadTask();
    if (!task)
        return false;
    const std::uint64_t nBytes = fs::file_size(IsFile(Next()) ? Next() : m_paths.m_plain, error);
    return !error && nBytes == task->m_nBytes && !Carry(*task);
}

void CGeneratorFiles::RemoveStrays() {
    std::error_code error;
    fs::remove(With(m_paths.m_plain, kNextExtension), error);
    fs::remove(Next(), error);
    fs::remove(With(LevelFile(), kNextExtension), error);
    fs::remove(With(PendingMark(), kNextExtension), error);
    if (!m_paths.m_details.empty())
        fs::remove(NextDetails(), error);
    if (!fs::exists(m_paths.m_plain, error) && !error) // it would tell of whatever gets that name next
        fs::remove(LevelFile(), error);
}

// The level goes last: until then what is left of the table is known as unfinished. Lengths without their table would
// not be known as that.
void CGeneratorFiles::RemovePartial() {
    RemoveStrays();
    if (m_keepOld != EKeepOld::Nothing || !IsFile(LevelFile())) // what is there was there before
        return;
    if ((!m_paths.m_details.empty() && Remove(m_paths.m_details)) || Remove(m_paths.m_plain))
        return;
    (void)Remove(LevelFile());
    SyncNames();
}

} // namespace quillon
