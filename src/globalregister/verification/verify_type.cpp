#include "globalregister/verification/verify_type.h"

#include <algorithm>
#include <array>
#include <climits>
#include <cstdio>
#include <memory>
#include <new>
#include <optional>
#include <system_error>

#include "core/chess_exception.h"
#include "globalregister/generator/existing_table.h"
#include "globalregister/generator/generate_texts.h"
#include "globalregister/generator/generator_files.h"
#include "globalregister/precalc_file_name.h"
#include "globalregister/precalc_files.h"
#include "globalregister/precalc_read.h"
#include "globalregister/system_failure.h"
#include "globalregister/verification/slow_settings.h"
#include "globalregister/verification/table_update.h"
#include "globalregister/verification/whole_list.h"
#include "platform/file_lock.h"

namespace quillon {

namespace {

namespace fs = std::filesystem;

/// So many corrections are kept for the end of a run; with more the next run goes on.
constexpr std::size_t kMostFixes = 10'000'000;

std::string CountsText(const TVerifyResult& result) {
    return "(" + std::to_string(result.m_nFaults) + " fault(s) found, " + std::to_string(result.m_nFixable) +
           " fixable, " + std::to_string(result.m_nFixed) + " fixed)";
}

bool IsFixable(const TPrecalcFault& fault) {
    return fault.m_nStored == 0 || (fault.m_nComputed >= 1 && fault.m_nComputed < fault.m_nStored);
}

bool HasContent(const fs::path& path) {
    std::error_code error;
    return fs::file_size(path, error) > 0 && !error;
}

class CVerification {
  public:
    CVerification(const TVerifyRequest& request, CGlobalRegisters& registers, IVerificationHost& host)
        : m_request(request), m_registers(registers), m_host(host) {}

    TVerifyResult Run() {
        const CSlowSettings settings(m_registers, m_host);
        if (!settings.MayGoOn())
            return m_result;
        try {
            Verify();
        } catch (const CNoTable& failure) {
            EndByFailure(failure.what(), "Info", false);
        } catch (const ChessException& failure) {
            EndByFailure(failure.what(), "Error", IsOfSystem(failure));
        } catch (const fs::filesystem_error& failure) {
            EndByFailure(failure.what(), "Error", true);
        } catch (const std::bad_alloc&) {
            EndByFailure("Not enough memory", "Error", true);
        }
        if (m_result.m_eEnd != EVerifyEnd::NotBegun)
            Report();
        return m_result;
    }

  private:
    void EndByFailure(std::string_view text, std::string_view title, bool bSystem) {
        m_result.m_bSystemFailure = m_result.m_bSystemFailure || bSystem;
        m_host.Inform(text, title);
        if (!m_bBegun)
            return;
        m_result.m_eEnd = EVerifyEnd::Failed;
        if (!m_fixes.empty())
            TellNotWritten(m_fixes.size(), "the run was not completed.");
    }

    void Verify() {
        const TPositionIndexing indexing(m_request.m_typeName);
        if (m_request.m_bFix && !LockFiles(indexing))
            return;
        const TPositionType type = indexing.nPositionType;
        const CRegisterUse data(m_registers.GetRegisterForTool(type));
        if (!data && m_registers.LacksRoom(type))
            throw CNoRoom(NoRoomText(m_request.m_typeName));
        if (!data) {
            m_host.Inform("No information about positions of this type", "Information");
            return;
        }
        NameFiles(*data);
        const bool bLeft = IsLeftInTheMaking(data->loadedFrom);
        CTableLengths lengths(*data, bLeft || (m_request.m_bPartial && LooksUnfinished(*data)));
        if (lengths.LooksUnfinished())
            m_host.Inform("The data of type " + m_request.m_typeName +
                              " look unfinished: elements that could be marks of the generator are taken for unknown "
                              "ones. If they are not finished, verify them as a partial table.",
                          "Warning");
        if (bLeft || m_request.m_bPartial)
            SetLimit(lengths);
        m_host.ShowStatus("Starting verification of precalculated data for position type " + m_request.m_typeName);
        const COneMoveTables tables(lengths, m_registers);
        AddStamps(m_stamps, lengths.Files());
        AddStamps(m_stamps, tables.OtherFiles());
        ChooseIndexes(*data);
        CFailureLog log(PrepareLog());
        const std::unique_ptr<CTableUpdate> update = m_request.m_bFix ? OpenUpdate(lengths) : nullptr;
        m_bBegun = true;
        Check(tables, log, update.get());
        if (update)
            WriteFixes(*update);
        MarkWholeList(lengths);
    }

    /// Whoever makes the table anew, or mends it too, would write at once. Before the load: what is in memory is then
    /// what the files hold until the end.
    bool LockFiles(const TPositionIndexing& indexing) {
        const TPrecalcFolders& folders = m_registers.Options().m_folders;
        const std::array files{GetFileName(indexing, folders, {}), NameInSecondRoot(indexing, folders)};
        for (std::size_t i = 0; i < files.size(); ++i)
            if (const fs::path lock = LockFileOf(files[i]); !files[i].empty() && !m_locks[i].Take(lock)) {
                m_host.Inform(OtherRunText(lock.string()), kErrorTitle);
                return false;
            }
        return true;
    }

    /// The search may read another file of the type one day.
    void NameFiles(const TGlobalRegister& data) {
        m_result.m_file = data.loadedFrom;
        std::string others;
        for (const TPrecalcFileFound& found : FindPrecalcFiles(m_registers.Options().m_folders)) {
            if (found.m_typeName != data.typeName || found.m_file.m_bDetails || found.m_path == data.loadedFrom)
                continue;
            m_result.m_otherFiles.push_back(found.m_path);
            others += "\n" + found.m_path.string();
        }
        if (!others.empty())
            m_host.Inform("Verified is " + data.loadedFrom.string() + ". Not looked at:" + others, "Warning");
    }

    /// The level that was being made when the table was saved need not be complete: mates of its length may be missing.
    void SetLimit(const CTableLengths& lengths) {
        const int nLongest = LongestFinished(lengths);
        m_nLimit = std::max(2 * nLongest - 1, 1);
        m_host.Inform("Max. mate in the partially generated file is #" + std::to_string(nLongest), "Information");
    }

    /// Moves. What the generator has written down is not misled by a faulty element.
    [[nodiscard]] static int LongestFinished(const CTableLengths& lengths) {
        const std::optional<std::uint32_t> nLevel = ReadLevelBeside(lengths.Data().loadedFrom);
        return nLevel ? static_cast<int>((*nLevel + 1) / 2) : lengths.LongestMate();
    }

    // --- the log

    [[nodiscard]] fs::path LogPath(bool bSecondPass) const {
        return m_request.m_logFolder / FailureLogName(m_request.m_typeName, bSecondPass);
    }

    void ChooseIndexes(const TGlobalRegister& data) {
        const fs::path log = LogPath(false);
        if (m_request.m_bSecondPassOnly && !fs::is_regular_file(log))
            throw ChessException("Cannot open file " + log.string());
        m_result.m_bSecondPass =
            HasContent(log) ? m_host.AskYesNo(std::string(kLeftoverLogQuestion) + log.string() +
                                                  " already exists\nApply second-pass fixes to data?",
                                              "Question")
                            : m_request.m_bSecondPassOnly; // over a log without faults: nothing is left to check
        if (m_result.m_bSecondPass)
            m_indexes = ReadFailureLog(log, data.GetSize());
        m_nItems = m_result.m_bSecondPass ? m_indexes.size() : data.GetSize();
        m_bWholeTable = !m_result.m_bSecondPass || IsWholeList();
        if (m_nItems == 0 && !m_bWholeTable)
            throw ChessException(
                "The log " + log.string() +
                " names no fault, but it is not of a run over all elements of these files. Verify the whole table.");
    }

    [[nodiscard]] fs::path WholeListMark() const { return LogPath(false).string() + std::string(kWholeListExtension); }

    [[nodiscard]] bool IsWholeList() const {
        const auto mark = ReadWholeFile(WholeListMark());
        return mark && std::string(mark->begin(), mark->end()) == WholeListText(LogPath(false), m_nLimit, m_stamps);
    }

    /// A correction shortens elements that were too long: the list stays whole with regard to those that are too short.
    void MarkWholeList(const CTableLengths& lengths) {
        if (m_result.m_eEnd != EVerifyEnd::AllChecked || !m_bWholeTable)
            return;
        if (!WriteWholeListMark(lengths))
            m_host.Inform("Error writing to file: " + WholeListMark().string(), "Warning");
    }

    /// False: it cannot be written, or there is a file that it has to name and that cannot be looked at any more. The
    /// run is complete all the same.
    [[nodiscard]] bool WriteWholeListMark(const CTableLengths& lengths) {
        try {
            if (m_result.m_nFixed != 0)
                AddStamps(m_stamps, lengths.Files());
            const std::string text = WholeListText(LogPath(false), m_nLimit, m_stamps);
            return WriteWholeFile(WholeListMark(), {reinterpret_cast<const std::uint8_t*>(text.data()), text.size()});
        } catch (const fs::filesystem_error&) {
            return false;
        }
    }

    /// Whoever wants no second pass has not said that the log may go.
    [[nodiscard]] fs::path PrepareLog() {
        m_result.m_log = LogPath(m_result.m_bSecondPass);
        std::error_code error;
        if (!m_result.m_bSecondPass)
            fs::remove(WholeListMark(), error);
        if (!error && HasContent(m_result.m_log))
            fs::rename(m_result.m_log, FreeNameBeside(m_result.m_log), error);
        if (error)
            throw CWriteFailure("Cannot open file " + m_result.m_log.string());
        return m_result.m_log;
    }

    /// Logs of earlier runs stay: ".BAK", ".BAK2" and so on.
    [[nodiscard]] static fs::path FreeNameBeside(const fs::path& log) {
        const std::string name = log.string() + std::string(kReplacedExtension);
        fs::path free = name;
        for (int i = 2; fs::exists(free); ++i)
            free = name + std::to_string(i);
        return free;
    }

    // --- the loop

    /// Null, and it is told, if there is none to be had.
    std::unique_ptr<CTableUpdate> OpenUpdate(CTableLengths& lengths) {
        const fs::path plain = PlainFileOf(lengths.Data(), m_registers.Options().m_folders);
        if (lengths.Data().loadedFrom == plain)
            if (auto update = std::make_unique<CTableUpdate>(lengths, plain); update->IsOpen())
                return update;
        m_host.Inform("Cannot open file " + plain.string() +
                          " for update.\nAny detected incoherencies will not be fixed.\n\nUse ini option "
                          "AskIfSaveAfterDecompressAllToMem in order to create updatable uncompressed precalc file.",
                      "Warning");
        return nullptr;
    }

    void Check(const COneMoveTables& tables, CFailureLog& log, CTableUpdate* update) {
        CCheckLoop loop(tables, m_nLimit, m_request.m_nThreads);
        for (std::uint64_t nFirst = 0; nFirst < m_nItems && !loop.IsBroken(); nFirst += kCheckedAtOnce) {
            const std::uint64_t nLast = std::min(nFirst + kCheckedAtOnce, m_nItems);
            const std::vector<TPrecalcFault> faults =
                loop.Run(nFirst, nLast, m_indexes, [this] { return m_host.RunState(); });
            m_result.m_nChecked = loop.Checked();
            for (const TPrecalcFault& fault : faults)
                Take(fault, log, update);
            loop.RethrowFailure();
            if (!loop.IsBroken())
                ShowProgress(nLast);
        }
        m_result.m_eEnd = loop.IsBroken() ? EVerifyEnd::Stopped : EVerifyEnd::AllChecked;
    }

    void Take(const TPrecalcFault& fault, CFailureLog& log, CTableUpdate* update) {
        ++m_result.m_nFaults;
        if (fault.m_nStored == 0 && update && !m_bFixAnswer)
            m_bFixAnswer = m_host.AskYesNo(kTryFixQuestion, "Question");
        log.Write(fault);
        if (!IsFixable(fault)) {
            if (fault.m_nStored > 0)
                m_nShortestDoubtful = std::min(m_nShortestDoubtful, fault.m_nStored);
            return;
        }
        ++m_result.m_nFixable;
        if (!update || !m_bFixAnswer.value_or(true))
            return;
        if (fault.m_nComputed == 1)
            Write(*update, {fault.m_nIndex, fault.m_nComputed});
        else if (m_fixes.size() < kMostFixes)
            m_fixes.push_back({fault.m_nIndex, fault.m_nComputed});
        else
            ++m_nNotKept;
    }

    // --- fixes

    struct TFix {
        std::uint64_t m_nIndex;
        int m_nComputed; // half-moves
    };

    /// Elements with a length below the shortest doubtful one are not too short (verify_type.h), and a length rests on
    /// such that are shorter by two half-moves at least.
    void WriteFixes(CTableUpdate& update) {
        if (m_fixes.empty())
            return;
        if (!m_bWholeTable || m_result.m_eEnd != EVerifyEnd::AllChecked) {
            TellNotWritten(m_fixes.size(),
                           "only a run over the whole table can tell that they are certain. Verify it to "
                           "the end, and change no file before a second pass.");
            return;
        }
        const std::size_t nLeft = WriteCertainFixes(update);
        if (nLeft != 0 && m_result.m_nFixed != 0)
            TellNotWritten(nLeft, "they may rest on elements that are too short. Verify again: what has been written "
                                  "may show that they are not.");
        else if (nLeft != 0)
            TellNotWritten(nLeft, "they may rest on elements that are too short, which cannot be mended. Make the data "
                                  "of type " +
                                      m_request.m_typeName + " anew.");
        m_fixes.clear(); // all of them are written or told
        if (m_nNotKept != 0)
            TellNotWritten(m_nNotKept, "there are too many for one run. Verify again.");
    }

    /// Drops each once it is written: a failure in the middle tells how many are not.
    ///   Result  those that are left, which are not certain.
    std::size_t WriteCertainFixes(CTableUpdate& update) {
        const auto isDoubtful = [this](const TFix& fix) { return fix.m_nComputed > m_nShortestDoubtful; };
        const auto certain = std::ranges::stable_partition(m_fixes, isDoubtful);
        std::ranges::reverse(certain); // the first goes from the end
        const std::size_t nLeft = m_fixes.size() - certain.size();
        for (; m_fixes.size() > nLeft; m_fixes.pop_back())
            Write(update, m_fixes.back());
        return nLeft;
    }

    void TellNotWritten(std::size_t nFixes, const std::string& reason) {
        m_host.Inform(std::to_string(nFixes) + " correction(s) not written: " + reason, "Warning");
    }

    void Write(CTableUpdate& update, const TFix& fix) {
        const EElementWrite written = update.Write(fix.m_nIndex, fix.m_nComputed / 2 + 1);
        const std::string element = " (element " + std::to_string(fix.m_nIndex) + ")";
        if (written == EElementWrite::Done)
            ++m_result.m_nFixed;
        else if (written == EElementWrite::NoRoom)
            TellNotWritten(1, "an element has no room for so long a mate" + element + ".");
        else if (!m_result.m_bSystemFailure)
            m_host.Inform("Error writing to file: " + update.FileAtFault().string() + element, "Error");
        m_result.m_bSystemFailure = m_result.m_bSystemFailure || written == EElementWrite::Failed;
    }

    void ShowProgress(std::uint64_t nDone) {
        char percent[16];
        std::snprintf(percent, sizeof percent, "%0.1f%% ",
                      100.0 * static_cast<double>(nDone) / static_cast<double>(m_nItems));
        m_host.ShowStatus(percent + CountsText(m_result));
    }

    // --- the end

    /// What a correction has made faulty is not in the list of a second pass: only an empty list has nothing to add.
    [[nodiscard]] bool IsAllRight() const {
        return m_result.m_eEnd == EVerifyEnd::AllChecked && m_result.m_nFaults == 0 &&
               (!m_result.m_bSecondPass || m_nItems == 0);
    }

    void Report() {
        m_result.m_bAllRight = IsAllRight();
        m_result.m_status = "Verification of precalculated data for position type " + m_request.m_typeName;
        if (m_result.m_eEnd == EVerifyEnd::Stopped)
            m_result.m_status += " but stopped by user.";
        else if (m_result.m_eEnd == EVerifyEnd::Failed)
            m_result.m_status += " could not be completed.";
        else if (m_result.m_bAllRight)
            m_result.m_status += " complete - all OK";
        else
            m_result.m_status += " complete: " + std::to_string(m_result.m_nFaults) + " failure(s) detected";
        if (m_result.m_eEnd == EVerifyEnd::AllChecked && m_result.m_nFaults == 0 && !m_result.m_bAllRight)
            m_host.Inform("Only what the log names was looked at. Verify the whole table.", "Information");
        m_host.Inform("Complete " + CountsText(m_result), "Information");
        m_host.ShowStatus(m_result.m_status);
    }

    const TVerifyRequest& m_request;
    CGlobalRegisters& m_registers;
    IVerificationHost& m_host;
    TVerifyResult m_result;
    std::array<CFileLock, 2> m_locks;     // of the table in either root, while it is mended
    int m_nLimit = 0;                     // half-moves; 0: the table is finished
    std::vector<std::uint64_t> m_indexes; // of a second pass
    std::uint64_t m_nItems = 0;           // indices to check
    TFileStamps m_stamps;                 // of the files of all tables, as they were loaded
    bool m_bBegun = false;
    bool m_bWholeTable = true;         // the indices are all that can be faulty
    int m_nShortestDoubtful = INT_MAX; // half-moves stored where more, or no mate, is computed
    std::vector<TFix> m_fixes;         // not written yet
    std::size_t m_nNotKept = 0;        // corrections beyond kMostFixes
    std::optional<bool> m_bFixAnswer;  // the user's word on the first fault of a stored "no mate"
};

} // namespace

TVerifyResult VerifyType(const TVerifyRequest& request, CGlobalRegisters& registers, IVerificationHost& host) {
    return CVerification(request, registers, host).Run();
}

} // namespace quillon
