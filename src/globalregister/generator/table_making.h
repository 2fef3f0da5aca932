#pragma once
// CTableMaking: one table from its files of an earlier run, or from nothing, to its finished file.
//
// A level that is broken off leaves a part of its findings in the work table, which a run that repeats the level before
// would take for that one's. So it is given up: the files have the state after the level before, and what it has found
// is found again.
//
// Threads: Run on one thread, which makes its own.

#include <cstdint>
#include <deque>
#include <optional>
#include <string>
#include <string_view>

#include "globalregister/generator/existing_table.h"
#include "globalregister/generator/generate.h"
#include "platform/clock.h"

namespace quillon {

/// Is there a table for this type?
///   Errors  ChessException: there is none.
void CheckGeneratedType(std::string_view typeName);

/// The last level that can find something because of another type's mate alone: at the length of that, and behind the
/// move that leads there and its answer. A double step there that only a capture in passing answers has no element in
/// any table, so each black pawn that may be taken so adds a move of both sides.
///   nLongestNeeded  moves of the longest mate of the needed types; 0: they have none.
[[nodiscard]] std::uint32_t LastLevelOfConversions(std::string_view typeName, std::uint32_t nLongestNeeded);

struct TPlaceInSeries {
    int m_nType = 1, m_nTypes = 1;
};

class CTableMaking {
  public:
    /// The settings of the run are in force: generator mode, what data may take.
    ///   nMemory  bytes that all data and the table may take.
    ///   Errors   ChessException: no type that tables are made of.
    CTableMaking(std::string_view typeName, const TGenerateOptions& options, IGenerateHost& host,
                 CGlobalRegisters& registers, TGeneratorControl& control, std::uint64_t nMemory, TPlaceInSeries place);

    /// What goes wrong is told to the host.
    [[nodiscard]] TGenerateReport Run();

  private:
    enum class EStep { GoOn, End }; // the latter with the status of the report

    [[nodiscard]] EStep LookAtFiles();
    [[nodiscard]] EStep StartAnew(const TExistingTable& replaced);
    [[nodiscard]] EStep AskAboutFinished(const TExistingTable& table);
    [[nodiscard]] EStep LeaveFinished(const TExistingTable& table);
    [[nodiscard]] EStep AskAboutUnfinished(std::uint32_t nLevel);
    [[nodiscard]] EStep AskAboutUnreadable();
    [[nodiscard]] EStep AskAboutPawns();
    [[nodiscard]] EStep Allocate();
    [[nodiscard]] EStep ReadOldTable();
    [[nodiscard]] EStep LoadNeededTypes();
    [[nodiscard]] EStep TellLackingTypes(const std::vector<std::string>& lacking);
    [[nodiscard]] EStep OpenDetails();
    [[nodiscard]] EStep RunLevels();
    [[nodiscard]] EStep EndStopped(int nLevel);
    [[nodiscard]] EStep Finish();
    void TryCountMates();
    void OfferPacking();
    void Pack();
    [[nodiscard]] std::filesystem::path SourceOfPacking() const;

    [[nodiscard]] bool IsStopped() const;
    [[nodiscard]] double Seconds() const; // since the start, without pauses
    [[nodiscard]] EThreeWay WhatToDo() const;
    [[nodiscard]] bool MakeTable(bool bWideElements);
    [[nodiscard]] bool IsFinishedBy(int nLevel, std::uint64_t nFound) const;
    [[nodiscard]] bool FitsElements(int nLevel) const;
    [[nodiscard]] int LevelLimit() const;
    [[nodiscard]] std::uint64_t DetailsBytes() const;
    void TellProgress(const TGeneratorProgress& level) const;
    void CountMates();
    /// bSystem  memory or the disk, rather than what was asked for or files that contradict themselves.
    EStep Fail(std::string_view text, bool bSystem = true);
    EStep FailInRun(const std::string& text, bool bSystem);

    const std::string m_typeName;
    const TGenerateOptions& m_options;
    IGenerateHost& m_host;
    CGlobalRegisters& m_registers;
    TGeneratorControl& m_control;
    const std::uint64_t m_nMemory;
    const TPlaceInSeries m_place;

    const std::uint64_t m_nStartTicks = TickCount64();
    const std::uint64_t m_nPausedBefore; // ms
    TGlobalRegister m_table;
    CGeneratorFiles m_files;
    std::filesystem::path m_details; // empty: no bit data
    std::deque<CRegisterUse> m_needed;
    std::uint32_t m_nLongestNeeded = 0; // mate, in moves, of the needed types
    std::uint64_t m_nFoundBefore = 0;   // by the levels of this run
    int m_nFirstLevel = 1;
    int m_nRepeated = 0; // the level that an earlier run has finished
    TGenerateReport m_report;
};

} // namespace quillon
