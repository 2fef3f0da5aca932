#include "globalregister/generator/table_making.h"

#include <algorithm>
#include <new>
#include <set>
#include <system_error>

#include "core/chess_exception.h"
#include "globalregister/custom_type.h"
#include "globalregister/generator/generate_texts.h"
#include "globalregister/generator/generator_material.h"
#include "globalregister/generator/reached_types.h"
#include "globalregister/max_mates.h"
#include "globalregister/packed/little_endian.h"
#include "globalregister/precalc_files.h"
#include "globalregister/precalc_loader.h"
#include "globalregister/precalc_read.h"
#include "globalregister/recompression.h"
#include "globalregister/system_failure.h"

namespace quillon {

namespace {

namespace fs = std::filesystem;

constexpr int kTableLevelLimit = 255;
constexpr int kBitDataLevelLimit = static_cast<int>(kHighestLevel);

/// A run as short as this is repeated at no cost.
constexpr double kSecondsWorthSyncing = 1;

constexpr std::size_t kOnePosition = 1; // of the longest mates: their length is all that is wanted

/// In bit data the flags take the pairs of so many indices, which name no position in any type.
constexpr std::uint64_t kPairsOfFlags = 2;
static_assert(kFileFlags < 1 << (2 * kPairsOfFlags));

/// Share of the table that the marks of a run take besides it.
constexpr std::uint64_t kMarksShare = 10;

std::uint64_t FileSize(const fs::path& path) {
    std::error_code error;
    const std::uint64_t nSize = fs::file_size(path, error);
    return error ? 0 : nSize;
}

fs::path PlainFile(const TGlobalRegister& table, const CGlobalRegisters& registers, bool bDetails) {
    if (bDetails && !UsesBitData(table))
        return {};
    return GetFileName(table, registers.Options().m_folders, {EPrecalcKind::Plain, bDetails, false});
}

/// The moves of the mates that are known after a level.
constexpr std::uint32_t MovesOfLevel(std::uint32_t nLevel) { return nLevel / 2 + nLevel % 2; }

std::string Joined(const std::vector<std::string>& texts, std::string_view separator) {
    std::string joined;
    for (const std::string& text : texts)
        joined.append(joined.empty() ? "" : separator).append(text);
    return joined;
}

bool HasMovableBlackPawn(std::string_view customType) { return customType.find("p(") != std::string_view::npos; }

} // namespace

std::uint32_t LastLevelOfConversions(std::string_view typeName, std::uint32_t nLongestNeeded) {
    const std::uint32_t nHalfMoves = nLongestNeeded == 0 ? 0 : 2 * nLongestNeeded - 1;
    const bool bInPassing = !IsCustomType(typeName) && typeName.find('P') != std::string_view::npos;
    const auto nTaken = bInPassing ? std::ranges::count(typeName, 'p') : 0;
    return nHalfMoves + 2 + 2 * static_cast<std::uint32_t>(nTaken);
}

CTableMaking::CTableMaking(std::string_view typeName, const TGenerateOptions& options, IGenerateHost& host,
                           CGlobalRegisters& registers, TGeneratorControl& control, std::uint64_t nMemory,
                           TPlaceInSeries place)
    : m_typeName(typeName), m_options(options), m_host(host), m_registers(registers), m_control(control),
      m_nMemory(nMemory), m_place(place), m_nPausedBefore(control.m_nPausedMs), m_table(typeName),
      m_files({PlainFile(m_table, registers, false), PlainFile(m_table, registers, true)}, options.m_onFileStep),
      m_details(PlainFile(m_table, registers, true)) {
    CheckGeneratedType(typeName);
    m_report.m_typeName = typeName;
    m_report.m_file = m_files.Plain();
}

void CheckGeneratedType(std::string_view typeName) {
    const TPositionIndexing indexing(typeName);
    if (indexing.custom)
        return;
    (void)InitForGenerator(typeName); // refuses letters that stand for no man
    if (typeName.empty() || typeName.size() > static_cast<std::size_t>(kMaxTypeMen))
        throw ChessException("not the letters of one to five men besides the kings: " + std::string(typeName));
}

TGenerateReport CTableMaking::Run() {
    using TPhase = EStep (CTableMaking::*)();
    constexpr TPhase kPhases[] = {&CTableMaking::LookAtFiles,     &CTableMaking::AskAboutPawns,
                                  &CTableMaking::Allocate,        &CTableMaking::ReadOldTable,
                                  &CTableMaking::LoadNeededTypes, &CTableMaking::OpenDetails,
                                  &CTableMaking::RunLevels,       &CTableMaking::Finish};
    try {
        for (const TPhase phase : kPhases)
            if ((this->*phase)() == EStep::End)
                break;
    } catch (const std::bad_alloc&) {
        (void)Fail(kNoMemoryForTable);
    } catch (const ChessException& failure) {
        (void)FailInRun(failure.what(), IsOfSystem(failure));
    } catch (const std::system_error& failure) { // threads, folders
        (void)FailInRun(failure.what(), true);
    }
    m_report.m_seconds = Seconds();
    m_report.m_nBytes = FileSize(m_report.m_file) + (m_details.empty() ? 0 : FileSize(m_details));
    return std::move(m_report);
}

double CTableMaking::Seconds() const {
    const std::uint64_t nNow = TickCount64(), nPassed = nNow - m_nStartTicks;
    const std::uint64_t nSince = m_control.m_nPausedSince.load(); // a stop ends a run in the middle of a pause
    const std::uint64_t nPaused =
        m_control.m_nPausedMs.load() - m_nPausedBefore + (nSince != 0 && nSince < nNow ? nNow - nSince : 0);
    return static_cast<double>(nPassed - std::min(nPassed, nPaused)) / 1000; // a pause may have begun before the start
}

CTableMaking::EStep CTableMaking::Fail(std::string_view text, bool bSystem) {
    m_report.m_status = EGenerateStatus::Failed;
    m_report.m_bSystemFailed = bSystem;
    m_host.Inform(text, kErrorTitle);
    return EStep::End;
}

CTableMaking::EStep CTableMaking::FailInRun(const std::string& text, bool bSystem) {
    return Fail(std::string(kErrorDuringGeneration) + ".\n" + text, bSystem);
}

// --- files of an earlier run

CTableMaking::EStep CTableMaking::LookAtFiles() {
    fs::create_directories(m_files.Plain().parent_path());
    if (!m_files.Lock())
        return Fail(OtherRunText(m_files.LockFile().string()), false);
    if (!m_files.FinishPendingSave())
        return Fail(PendingSaveText(m_files.PendingMark().string()), false);
    if (const fs::path second = NameInSecondRoot(m_table, m_registers.Options().m_folders); IsLeftInTheMaking(second))
        return Fail(SecondRootInTheMakingText(second.string()), false);
    m_files.RemoveStrays();
    const std::optional<std::uint32_t> nLevel = m_files.ReadLevel();
    EStep step = EStep::GoOn;
    TExistingTable table;
    if (nLevel)
        step = AskAboutUnfinished(*nLevel);
    else if (IsLeftInTheMaking(m_files.Plain()))
        step = AskAboutUnreadable();
    else if (table = FindExistingTable(m_table, m_registers.Options().m_folders); table.m_form != EExistingForm::None)
        step = AskAboutFinished(table);
    if (step == EStep::GoOn && m_nRepeated == 0)
        step = StartAnew(table);
    return step;
}

/// One that is made beside a finished table of the second root would spoil that while it is made, and be read by
/// nobody afterwards.
CTableMaking::EStep CTableMaking::StartAnew(const TExistingTable& replaced) {
    const TExistingTable second = FindInSecondRoot(m_table, m_registers.Options().m_folders);
    if (second.m_form == EExistingForm::Whole)
        return Fail(SecondRootTableText(second.m_file.string()), false);
    const bool bFinished = replaced.m_form == EExistingForm::Whole || replaced.m_form == EExistingForm::Archive;
    m_files.KeepOld(bFinished ? replaced.m_file : fs::path());
    return EStep::GoOn;
}

EThreeWay CTableMaking::WhatToDo() const {
    switch (m_options.m_existing) {
    case EExistingTable::Continue:
        return EThreeWay::Yes;
    case EExistingTable::Restart:
        return EThreeWay::No;
    case EExistingTable::Leave:
        return EThreeWay::Cancel;
    case EExistingTable::Ask:
        break;
    }
    return m_host.AskYesNoCancel(kContinueQuestion, kQuestionTitle);
}

/// There is nothing to fill in, so to continue it is to leave it.
CTableMaking::EStep CTableMaking::AskAboutFinished(const TExistingTable& table) {
    m_report.m_found = EFoundTable::Finished;
    const EThreeWay answer = WhatToDo();
    if (answer == EThreeWay::No)
        return EStep::GoOn;
    m_report.m_file = table.m_file;
    if (answer == EThreeWay::Yes || m_options.m_existing == EExistingTable::Leave)
        return LeaveFinished(table);
    m_report.m_status = EGenerateStatus::Cancelled;
    return EStep::End;
}

/// What passes for a table here has to be one for those that need it.
CTableMaking::EStep CTableMaking::LeaveFinished(const TExistingTable& table) {
    if (table.m_form != EExistingForm::Whole)
        return Fail(std::string(kErrorReadingFile) + table.m_file.string() +
                        std::string(table.m_form == EExistingForm::Archive ? kOnlyArchive : kNoTable),
                    false);
    m_report.m_status = EGenerateStatus::Done;
    if (!m_options.m_packForm)
        return EStep::End;
    m_report.m_bPacked = Exists(NameInForm(SourceOfPacking(), *m_options.m_packForm));
    if (!*m_report.m_bPacked && table.m_file == m_files.Plain())
        Pack();
    return EStep::End;
}

CTableMaking::EStep CTableMaking::AskAboutUnfinished(std::uint32_t nLevel) {
    m_report.m_found = EFoundTable::Unfinished;
    m_report.m_nLevels = nLevel;
    m_report.m_nMate = MovesOfLevel(nLevel);
    const EThreeWay answer = WhatToDo();
    if (answer == EThreeWay::Cancel) {
        m_report.m_status = EGenerateStatus::Cancelled;
        return EStep::End;
    }
    if (answer == EThreeWay::No)
        return EStep::GoOn; // from the start
    m_nRepeated = static_cast<int>(nLevel);
    const bool bNext = m_options.m_existing == EExistingTable::Continue ||
                       m_host.AskYesNo(LevelQuestion(MovesOfLevel(nLevel), m_place.m_nTypes > 1), kQuestionTitle);
    m_nFirstLevel = m_nRepeated + (bNext ? 1 : 0);
    return EStep::GoOn;
}

/// The file of the level is cut, or tells no level. How far the table is matters only to those who want to keep it.
CTableMaking::EStep CTableMaking::AskAboutUnreadable() {
    const fs::path level = fs::path(m_files.Plain()) += kIterationExtension;
    m_report.m_found = EFoundTable::Unfinished;
    if (WhatToDo() == EThreeWay::No && Exists(level))
        return EStep::GoOn;
    return Fail(std::string(kErrorReadingFile) + level.string(), !ReadWholeFile(level));
}

/// A pawn that leaves its reach leaves the pattern, and such a position is no mate whatever the answer: an analysis of
/// it, short or not, could only say less.
CTableMaking::EStep CTableMaking::AskAboutPawns() {
    if (m_table.custom && HasMovableBlackPawn(m_typeName))
        (void)m_host.AskYesNo(kPawnAnalysisQuestion, kQuestionTitle);
    return EStep::GoOn;
}

// --- the work table

bool CTableMaking::MakeTable(bool bWideElements) {
    if (!ApplyFlags(m_table, FlagsOf(m_table, false) | kFlagCombinations)) // they make a table of six men much smaller
        return false;
    const std::uint64_t nElementSize = ElementSize(m_table, bWideElements ? kFlagWideElements : 0);
    const std::uint64_t nBytes =
        UsesBitData(m_table) ? m_table.GetSize() / kPairsOfAByte : m_table.GetSize() * nElementSize;
    if (nBytes > std::min(LargestTable(true), m_nMemory))
        return false;
    try {
        return MakeWorkTable(m_table, bWideElements);
    } catch (const std::bad_alloc&) {
        return false;
    }
}

CTableMaking::EStep CTableMaking::Allocate() {
    bool bWideElements = true;
    if (m_nRepeated != 0)
        if (const std::optional<std::uint8_t> flags = ReadFlags(m_files.Plain()))
            bWideElements = (*flags & kFlagWideElements) != 0;
    if (!MakeTable(bWideElements)) {
        (void)m_registers.UnloadAll();
        if (!MakeTable(bWideElements))
            return Fail(kNoMemoryForTable);
    }
    return EStep::GoOn;
}

CTableMaking::EStep CTableMaking::ReadOldTable() {
    if (m_nRepeated == 0)
        return EStep::GoOn;
    const std::size_t nBytes = m_table.data.size();
    const std::uint8_t flags = m_table.data.at(0);
    m_table.data = {}; // two of them may be too much
    try {
        std::optional<std::vector<std::uint8_t>> old = ReadWholeFile(m_files.Plain());
        if (!old || old->size() != nBytes || (old->at(0) & kFileFlags) != flags)
            return Fail(std::string(kErrorReadingFile) + m_files.Plain().string(), !old);
        m_table.data = std::move(*old);
    } catch (const std::bad_alloc&) {
        return Fail(kErrorReadingData);
    }
    return EStep::GoOn;
}

// --- other types

CTableMaking::EStep CTableMaking::LoadNeededTypes() {
    const std::uint64_t nOwn = m_table.data.size() + m_table.data.size() / kMarksShare;
    // Positions that leave the pattern of a custom type are no mate, whatever tables there are of them: it gets none.
    m_registers.SetQuota(m_table.custom ? 0 : m_nMemory - std::min(m_nMemory, nOwn));
    if (m_table.custom)
        return EStep::GoOn;
    std::vector<std::string> lacking; // that cannot be had
    for (const std::string& type : NeededTypes(m_typeName)) {
        if (IsStopped())
            return EndStopped(0);
        m_needed.emplace_back(m_registers.GetRegisterForTool(TPositionIndexing(type).nPositionType));
        CRegisterUse& data = m_needed.back();
        if (!data || data->bCompactUnfinished) { // of the latter nothing says that there is no mate
            lacking.push_back(type);
            continue;
        }
        std::set<std::uint64_t> indexes;
        m_nLongestNeeded = std::max(m_nLongestNeeded, GetMaxMoves(*data, m_registers.Options().m_folders.m_installation,
                                                                  indexes, kOnePosition, /*bUseCache=*/false));
    }
    return lacking.empty() ? EStep::GoOn : TellLackingTypes(lacking);
}

/// Those that are there have no room, or are damaged, of which the user has heard: they need not be made.
CTableMaking::EStep CTableMaking::TellLackingTypes(const std::vector<std::string>& lacking) {
    for (const std::string& type : lacking)
        if (!HasFinishedTable(TPositionIndexing(type), m_registers.Options().m_folders))
            m_report.m_missingTypes.push_back(type);
    if (!m_report.m_missingTypes.empty())
        return Fail(std::string(kNoRegisterFound) + Joined(m_report.m_missingTypes, ", "), false);
    const auto lacksRoom = [this](const std::string& type) {
        return m_registers.LacksRoom(TPositionIndexing(type).nPositionType);
    };
    return Fail(std::string(kErrorReadingData) + ": " + Joined(lacking, ", "), std::ranges::any_of(lacking, lacksRoom));
}

// --- lengths of bit data

std::uint64_t CTableMaking::DetailsBytes() const { return m_table.GetSize() * m_table.nElementSize; }

CTableMaking::EStep CTableMaking::OpenDetails() {
    if (!m_table.bBitData)
        return EStep::GoOn;
    const std::uint16_t flags = FlagsOf(m_table, m_table.nElementSize == 2);
    if (m_nRepeated == 0 &&
        !m_files.CreateDetails(DetailsBytes(), flags, m_table.nElementSize, [this] { return IsStopped(); }))
        return IsStopped() ? EndStopped(0) : Fail(kNoDetailsFile);
    const fs::path file = m_files.DetailsNow();
    const bool bWhole = FileSize(file) == DetailsBytes();
    const std::optional<std::uint8_t> found = ReadFlags(file);
    if (!bWhole || found != static_cast<std::uint8_t>(flags))
        return Fail(std::string(kErrorReadingFile) + file.string(), bWhole && !found);
    m_table.details = std::make_unique<TDetailQueue>();
    m_table.details->detailFile.open(file, std::ios::binary | std::ios::in | std::ios::out);
    return m_table.details->detailFile ? EStep::GoOn : Fail(std::string(kErrorReadingFile) + file.string());
}

// --- levels

int CTableMaking::LevelLimit() const {
    return m_table.bBitData || m_table.nElementSize == 2 ? kBitDataLevelLimit : kTableLevelLimit;
}

/// The lengths that a level finds. In a table those whose bits are all set mean something else.
bool CTableMaking::FitsElements(int nLevel) const {
    const bool bWide = m_table.nElementSize == 2;
    const std::uint32_t nFirstTooLong = m_table.bBitData ? (bWide ? kFirstUnknownWord : kUnknownElement)
                                                         : (bWide ? kFirstUnsettledWord : kFirstUnsettledByte);
    return nLevel <= LevelLimit() && MovesOfLevel(static_cast<std::uint32_t>(nLevel)) < nFirstTooLong;
}

/// A level of this table can make the next find something.
bool CTableMaking::IsFinishedBy(int nLevel, std::uint64_t nFound) const {
    return nFound == 0 && nLevel > m_nRepeated &&
           static_cast<std::uint32_t>(nLevel) > LastLevelOfConversions(m_typeName, m_nLongestNeeded);
}

void CTableMaking::TellProgress(const TGeneratorProgress& level) const {
    m_host.Progress(
        {m_typeName, m_place.m_nType, m_place.m_nTypes, level, m_table.GetSize(), m_nFoundBefore, Seconds()});
}

CTableMaking::EStep CTableMaking::RunLevels() {
    TGeneratorOptions options;
    options.m_nThreads = m_options.m_nThreads;
    options.m_nThreadPriority = m_options.m_nThreadPriority;
    options.m_nLevelLimit = LevelLimit();
    options.m_onProgress = [this](const TGeneratorProgress& level) { TellProgress(level); };
    CGeneratorRun run(m_table, m_registers, m_control, options);
    for (int nLevel = m_nFirstLevel;; ++nLevel) {
        TellProgress({nLevel, options.m_nLevelLimit, 0, 0}); // a short level tells of nothing by itself
        const TLevelResult result = run.RunLevel(nLevel);
        if (result.IsEndedByUser())
            return EndStopped(nLevel);
        if (result.m_bFailed)
            return FailInRun(result.m_errors.empty() ? std::string(kNoMemoryForTable) : Joined(result.m_errors, "\n"),
                             result.m_bSystemFailed);
        if (result.m_nFound > 0 && !FitsElements(nLevel))
            return FailInRun(m_typeName + ": a mate is longer than its table can tell", false);
        m_files.SetDurable(Seconds() >= kSecondsWorthSyncing);
        if (const std::string failure = m_files.Save(m_table.data, static_cast<std::uint32_t>(nLevel));
            !failure.empty())
            return Fail(failure);
        m_nFoundBefore += result.m_nFound;
        m_report.m_nLevels = static_cast<std::uint32_t>(nLevel);
        m_report.m_nMate = MovesOfLevel(m_report.m_nLevels);
        if (IsFinishedBy(nLevel, result.m_nFound))
            return EStep::GoOn;
    }
}

bool CTableMaking::IsStopped() const { return quillon::IsStopped(m_control); }

/// The report is of what stays: the table of this run, of an earlier one that this one was to replace, or none.
///   nLevel  the one under way; 0: none yet.
CTableMaking::EStep CTableMaking::EndStopped(int nLevel) {
    m_report.m_status = EGenerateStatus::Cancelled;
    m_table.details.reset();
    if (m_host.AskYesNo(kRemoveQuestion, kQuestionTitle))
        m_files.RemovePartial();
    else
        m_report.m_nGivenUp = static_cast<std::uint32_t>(nLevel);
    m_report.m_nLevels = m_files.ReadLevel().value_or(0);
    m_report.m_nMate = MovesOfLevel(m_report.m_nLevels);
    return EStep::End;
}

// --- the end

CTableMaking::EStep CTableMaking::Finish() {
    FinishTable(m_table);
    m_table.details.reset();
    std::error_code error; // what is not there need not go
    fs::remove(m_registers.Options().m_folders.m_installation / kMaxMatesFolder /
                   (PrecalcBaseName(m_typeName) + std::string(kMaxMatesExtension)),
               error);
    if (const std::string failure = m_files.Finish(m_table.data); !failure.empty())
        return Fail(failure);
    m_report.m_status = EGenerateStatus::Done;
    m_report.m_bMade = true;
    TryCountMates();
    OfferPacking();
    return EStep::End;
}

/// The table is there whatever comes of it.
void CTableMaking::TryCountMates() {
    try {
        CountMates();
    } catch (const std::bad_alloc&) {
        m_host.Inform(m_typeName + ": not enough memory to count the mates of the finished table", kErrorTitle);
    } catch (const ChessException& failure) {
        m_host.Inform(failure.what(), kErrorTitle);
    }
}

void CTableMaking::CountMates() {
    m_table.loadedFrom = m_files.Plain();
    m_table.bCompactUnfinished = false;
    if (m_table.bBitData)
        m_table.detailStream.open(m_details, std::ios::binary);
    std::set<std::uint64_t> indexes;
    m_report.m_nMate = GetMaxMoves(m_table, m_registers.Options().m_folders.m_installation, indexes, kOnePosition,
                                   /*bUseCache=*/false);
    const std::vector<std::uint8_t>& data = m_table.data;
    if (m_table.bBitData)
        for (std::uint64_t i = kPairsOfFlags; i < m_table.GetSize(); ++i)
            m_report.m_nPositions += BitPair(data.data(), i) & 1;
    else if (m_table.nElementSize == 2)
        for (std::size_t at = 2; at < data.size(); at += 2)
            m_report.m_nPositions += LoadLittleEndian<std::uint16_t>(data.data() + at) != 0;
    else
        m_report.m_nPositions =
            data.size() - 1 - static_cast<std::uint64_t>(std::count(data.begin() + 1, data.end(), 0));
    m_report.m_bCounted = true;
}

void CTableMaking::OfferPacking() {
    if (m_options.m_packForm)
        Pack();
    else if (!IsStopped())
        RecompressOffer(m_table, m_files.Plain(), EPrecalcKind::Plain, m_registers.Options(), m_host);
}

/// Of bit data a packed table that is read as it is has the lengths (table_conversion.h); other forms are those of the
/// file of pairs, beside which the lengths stay as they are.
fs::path CTableMaking::SourceOfPacking() const {
    return !m_details.empty() && *m_options.m_packForm == ETableForm::Lzw ? m_details : m_files.Plain();
}

/// What has this name already, of a table before this one, is kept as that was.
void CTableMaking::Pack() {
    m_report.m_bPacked = false;
    if (IsStopped()) {
        m_report.m_bNotPacked = true;
        return;
    }
    const fs::path source = SourceOfPacking(), target = NameInForm(source, *m_options.m_packForm);
    try {
        if (std::error_code error; fs::is_regular_file(target, error))
            fs::rename(target, fs::path(target) += kReplacedExtension);
        PackTableFile(source, *m_options.m_packForm, target, m_options.m_nThreads);
        m_report.m_bPacked = true;
    } catch (const std::exception& failure) {
        (void)Fail(std::string(kErrorDuringCompression) + ".\n" + failure.what(), IsOfSystem(failure));
    }
}

} // namespace quillon
