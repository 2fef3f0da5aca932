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

/// Of the files that were there: four of the table, by kind, then as many of its lengths.
constexpr std::size_t kKinds = kPrecalcKinds.size(), kTable = 0, kLengths = kKinds;
constexpr std::size_t kFormsOfBits = 2; // plain and ".lz4": finished if the lengths beside them are

/// Tells a save that keeps none of them from one that is not the first.
constexpr unsigned kReplaces = 1u << (2 * kKinds);

constexpr bool IsPacked(std::size_t oldFile) { return oldFile % kKinds != 0; }
constexpr bool IsKept(unsigned nKeep, std::size_t oldFile) { return (nKeep >> oldFile & 1) != 0; }

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

fs::path LockFileOf(const fs::path& plain) { return With(plain, kLockExtension); }

fs::path CGeneratorFiles::PendingMark() const { return With(m_paths.m_plain, kSavePendingExtension); }
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

std::optional<std::uint32_t> ReadLevelBeside(const fs::path& plain) {
    std::ifstream file(With(plain, kIterationExtension), std::ios::binary);
    std::array<std::uint8_t, sizeof(std::uint32_t)> bytes{};
    if (!ReadBytes(file, bytes.data(), bytes.size()))
        return std::nullopt;
    const auto nLevel = LoadLittleEndian<std::uint32_t>(bytes.data());
    return nLevel >= 1 && nLevel <= kHighestLevel ? std::optional(nLevel) : std::nullopt;
}

std::optional<std::uint32_t> CGeneratorFiles::ReadLevel() const { return ReadLevelBeside(m_paths.m_plain); }

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
    return Run(table, {nLevel, false, FilesToKeep(), table.size()});
}

std::string CGeneratorFiles::Finish(std::span<const std::uint8_t> table) {
    m_bDurable = true;
    return Run(table, {0, true, FilesToKeep(), table.size()});
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
    m_bReplaces = false;
    return {};
}

/// Each step leaves what tells that it has been done: those that have are passed over.
std::error_code CGeneratorFiles::Carry(const TSaveTask& task) {
    if (task.m_nKeep != 0)
        if (const std::error_code error = ClearPackedForms(task.m_nKeep))
            return error;
    if (!m_paths.m_details.empty())
        if (const std::error_code error = TakePlace(NextDetails(), m_paths.m_details, IsKept(task.m_nKeep, kLengths)))
            return error;
    if (const std::error_code error = TakePlace(Next(), m_paths.m_plain, IsKept(task.m_nKeep, kTable)))
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

std::error_code CGeneratorFiles::TakePlace(const fs::path& next, const fs::path& file, bool bKeep) {
    if (!IsFile(next))
        return {};
    if (bKeep && IsFile(file))
        if (const std::error_code error = Keep(file))
            return error;
    Step("take place");
    return RenameTo(next, file);
}

std::error_code CGeneratorFiles::Keep(const fs::path& file) {
    Step("keep");
    return RenameTo(file, With(file, kReplacedExtension));
}

std::vector<fs::path> CGeneratorFiles::OldFiles() const {
    std::vector<fs::path> files;
    for (const fs::path& plain : {m_paths.m_plain, m_paths.m_details})
        for (const std::string_view extension : kPrecalcExtensions)
            if (!plain.empty())
                files.push_back(With(plain, extension));
    return files;
}

/// Settled before the save, for what it keeps is a ".BAK" as those before it are.
unsigned CGeneratorFiles::FilesToKeep() const {
    if (!m_bReplaces)
        return 0;
    const std::vector<fs::path> files = OldFiles();
    const auto isFree = [](const fs::path& file) { return !IsFile(With(file, kReplacedExtension)); };
    const bool bAllFree = std::ranges::all_of(files, isFree);
    const auto finished = static_cast<std::size_t>(std::ranges::find(files, m_finished) - files.begin());
    unsigned nKeep = kReplaces;
    for (std::size_t i = 0; i < files.size(); ++i) {
        const bool bFinished = i == finished || (i == kLengths && finished < kFormsOfBits);
        if (bFinished || (IsPacked(i) ? isFree(files[i]) : bAllFree))
            nKeep |= 1u << i;
    }
    return nKeep;
}

/// Those that are not kept go.
std::error_code CGeneratorFiles::ClearPackedForms(unsigned nKeep) {
    const std::vector<fs::path> files = OldFiles();
    for (std::size_t i = 0; i < files.size(); ++i)
        if (IsPacked(i) && IsFile(files[i]))
            if (const std::error_code error = IsKept(nKeep, i) ? Keep(files[i]) : Remove(files[i]))
                return error;
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
    std::snprintf(text, sizeof text, kTaskFormat, task.m_nLevel, task.m_bFinished ? 1u : 0u, task.m_nKeep,
                  static_cast<unsigned long long>(task.m_nBytes));
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
    const TSaveTask task{level, finished != 0, keep, nBytes};
    const bool bKnown = keep == 0 || (keep & ~(kReplaces - 1)) == kReplaces;
    return bKnown && TextOf(task) == text ? std::optional(task) : std::nullopt;
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
    if (m_bReplaces || !IsFile(LevelFile())) // what is there was there before
        return;
    if ((!m_paths.m_details.empty() && Remove(m_paths.m_details)) || Remove(m_paths.m_plain))
        return;
    (void)Remove(LevelFile());
    SyncNames();
}

} // namespace quillon
