#include "cli/precalc_data.h"

#include <filesystem>
#include <system_error>

#include "app/memory_limits.h"
#include "cli/option_values.h"
#include "core/chess_exception.h"
#include "globalregister/position_indexing.h"
#include "globalregister/precalc_files.h"
#include "platform/processors.h"

namespace quillon {

namespace {

/// The folder of a problem's data where none is named.
constexpr const char* kDefaultFolder = ".";

} // namespace

void AddPrecalcFolder(CLI::App& command, TPrecalcChoice& choice, const char* group) {
    command
        .add_option("--precalc", choice.m_folder,
                    "Folder with precalculated endgame data, or one that has them in Precalc. Without the option "
                    "Precalc in the working folder, where there is one")
        ->type_name("DIR")
        ->group(group);
}

void AddPrecalcOptions(CLI::App& command, TPrecalcChoice& choice, const char* group) {
    AddPrecalcFolder(command, choice, group);
    command
        .add_option("--precalc-memory", choice.m_memoryMB,
                    "Memory for precalculated data, in MiB; 0: do not use any. Without the option what the problem "
                    "says, else MaxMemRatioForPrecalculatedData in options.ini, else a fifth of the memory of the "
                    "machine. A problem that forbids them gets none")
        ->type_name("MB")
        ->transform(WholeNumber(0, kMostPrecalcMB))
        ->group(group);
}

TPrecalcOptions MakePrecalcOptions(const TSettings& settings, const TPrecalcChoice& choice) {
    TPrecalcOptions options;
    options.m_nUseDataPackedForRandomAccess = settings.m_nUseDataPackedForRandomAccess;
    options.m_bGlobalRegisterForceDiskAccess = settings.m_bGlobalRegisterForceDiskAccess;
    options.m_nAskForGlobalRegisterRecompression = settings.m_nAskForGlobalRegisterRecompression;
    options.m_bAskIfSaveAfterDecompressAllToMem = settings.m_bAskIfSaveAfterDecompressAllToMem;
    options.m_nProcessors = UsableProcessors();
    if (!choice.m_folder) {
        options.m_folders = {kDefaultFolder, settings.m_precalcPath};
        return options;
    }
    std::error_code error;
    if (!std::filesystem::is_directory(*choice.m_folder, error))
        throw ChessException("no folder with precalculated data: " + *choice.m_folder);
    options.m_folders = FoldersOf(*choice.m_folder, settings.m_precalcPath);
    return options;
}

TPositionType TypeToLookUp(const std::string& name) {
    return IsCustomType(name) || name.size() > kMaxTypeMen ? 0 : TPositionIndexing(name).nPositionType;
}

TPositionType AskedType(const std::string& name) {
    const TPositionType type = TypeToLookUp(name);
    if (type == 0)
        throw ChessException("not the letters of one to five men besides the kings: " + name);
    return type;
}

std::uint64_t PrecalcQuota(const TSettings& settings, const TPrecalcChoice& choice, const ChessProblem* problem) {
    constexpr int kMegabyteBits = 20;
    if (problem != nullptr && (problem->flags & kFlagNoGlobReg) != 0)
        return 0;
    if (choice.m_memoryMB)
        return static_cast<std::uint64_t>(*choice.m_memoryMB) << kMegabyteBits;
    if (problem != nullptr && problem->globRegMB != kUnset && problem->globRegMB >= 0)
        return static_cast<std::uint64_t>(problem->globRegMB) << kMegabyteBits;
    return ComputeMemoryLimits(settings).m_nPrecalculatedBytes;
}

} // namespace quillon
