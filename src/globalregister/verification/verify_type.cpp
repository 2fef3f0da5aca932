#include "globalregister/verification/verify_type.h"

#include <algorithm>
#include <cstdio>
#include <memory>
#include <optional>
#include <system_error>

#include "core/chess_exception.h"
#include "globalregister/precalc_file_name.h"
#include "globalregister/precalc_files.h"
#include "globalregister/verification/slow_settings.h"
#include "globalregister/verification/table_update.h"

namespace quillon {

namespace {

namespace fs = std::filesystem;

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
            EndByFailure(failure, "Info");
        } catch (const ChessException& failure) {
            EndByFailure(failure, "Error");
        }
        if (m_result.m_eEnd != EVerifyEnd::NotBegun)
            Report();
        return m_result;
    }

  private:
    void EndByFailure(const ChessException& failure, std::string_view title) {
        m_host.Inform(failure.what(), title);
        if (m_bBegun)
            m_result.m_eEnd = EVerifyEnd::Failed;
    }

    void Verify() {
        const TPositionType type = TPositionIndexing(m_request.m_typeName).nPositionType;
        const CRegisterUse data(m_registers.GetRegisterForTool(type));
        if (!data) {
            m_host.Inform("No information about positions of this type", "Information");
            return;
        }
        const bool bLeft = IsLeftInTheMaking(data->loadedFrom);
        CTableLengths lengths(*data, bLeft || (m_request.m_bPartial && data->bCompactUnfinished));
        if (bLeft || m_request.m_bPartial)
            SetLimit(lengths);
        ChooseIndexes(*data);
        CFailureLog log(PrepareLog());
        const std::unique_ptr<CTableUpdate> update = m_request.m_bFix ? OpenUpdate(lengths) : nullptr;
        m_bBegun = true;
        Check(lengths, log, update.get());
    }

    /// The level that was being made when the table was saved need not be complete: mates of its length may be missing.
    void SetLimit(const CTableLengths& lengths) {
        const int nLongest = lengths.LongestMate();
        m_nLimit = std::max(2 * nLongest - 1, 1);
        m_host.Inform("Max. mate in the partially generated file is #" + std::to_string(nLongest), "Information");
    }

    // --- the log

    [[nodiscard]] fs::path LogPath(bool bSecondPass) const {
        return m_request.m_logFolder / FailureLogName(m_request.m_typeName, bSecondPass);
    }

    void ChooseIndexes(const TGlobalRegister& data) {
        const fs::path log = LogPath(false);
        if (m_request.m_bSecondPassOnly && !HasContent(log))
            throw ChessException("Cannot open file " + log.string());
        m_bSecondPass = HasContent(log) && m_host.AskYesNo("Unempty log file " + log.string() +
                                                               " already exists\nApply second-pass fixes to data?",
                                                           "Question");
        if (m_bSecondPass)
            m_indexes = ReadFailureLog(log, data.GetSize());
        m_nItems = m_bSecondPass ? m_indexes.size() : data.GetSize();
    }

    /// Whoever wants no second pass has not said that the log may go.
    [[nodiscard]] fs::path PrepareLog() {
        m_result.m_log = LogPath(m_bSecondPass);
        std::error_code error;
        if (HasContent(m_result.m_log))
            fs::rename(m_result.m_log, m_result.m_log.string() + std::string(kReplacedExtension), error);
        if (error)
            throw ChessException("Cannot open file " + m_result.m_log.string());
        return m_result.m_log;
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

    void Check(CTableLengths& lengths, CFailureLog& log, CTableUpdate* update) {
        m_host.ShowStatus("Starting verification of precalculated data for position type " + m_request.m_typeName);
        const COneMoveTables tables(lengths, m_registers);
        CCheckLoop loop(tables, m_nLimit, m_request.m_nThreads);
        for (std::uint64_t nFirst = 0; nFirst < m_nItems && !loop.IsBroken(); nFirst += kCheckedAtOnce) {
            const std::uint64_t nLast = std::min(nFirst + kCheckedAtOnce, m_nItems);
            const std::vector<TPrecalcFault> faults =
                loop.Run(nFirst, nLast, m_indexes, [this] { return m_host.RunState(); });
            m_result.m_nChecked = loop.Checked();
            for (const TPrecalcFault& fault : faults)
                Take(fault, log, update);
            loop.RethrowFailure();
            ShowProgress(nLast);
        }
        m_result.m_eEnd = loop.IsBroken() ? EVerifyEnd::Stopped : EVerifyEnd::AllChecked;
    }

    void Take(const TPrecalcFault& fault, CFailureLog& log, CTableUpdate* update) {
        ++m_result.m_nFaults;
        if (fault.m_nStored == 0 && update && !m_bFixAnswer)
            m_bFixAnswer = m_host.AskYesNo(kTryFixQuestion, "Question");
        log.Write(fault);
        if (!IsFixable(fault))
            return;
        ++m_result.m_nFixable;
        if (update && m_bFixAnswer.value_or(true) && update->Write(fault.m_nIndex, fault.m_nComputed / 2 + 1))
            ++m_result.m_nFixed;
    }

    void ShowProgress(std::uint64_t nDone) {
        char percent[16];
        std::snprintf(percent, sizeof percent, "%0.1f%% ",
                      100.0 * static_cast<double>(nDone) / static_cast<double>(m_nItems));
        m_host.ShowStatus(percent + CountsText(m_result));
    }

    // --- the end

    void Report() {
        m_result.m_status = "Verification of precalculated data for position type " + m_request.m_typeName;
        if (m_result.m_eEnd == EVerifyEnd::Stopped)
            m_result.m_status += " but stopped by user.";
        else if (m_result.m_eEnd == EVerifyEnd::Failed)
            m_result.m_status += " could not be completed.";
        else if (m_result.m_nFaults == 0)
            m_result.m_status += " complete - all OK";
        else
            m_result.m_status += " complete: " + std::to_string(m_result.m_nFaults) + " failure(s) detected";
        m_host.Inform("Complete " + CountsText(m_result), "Information");
        m_host.ShowStatus(m_result.m_status);
    }

    const TVerifyRequest& m_request;
    CGlobalRegisters& m_registers;
    IVerificationHost& m_host;
    TVerifyResult m_result;
    int m_nLimit = 0; // half-moves; 0: the table is finished
    bool m_bSecondPass = false;
    std::vector<std::uint64_t> m_indexes; // of a second pass
    std::uint64_t m_nItems = 0;           // indices to check
    bool m_bBegun = false;
    std::optional<bool> m_bFixAnswer; // the user's word on the first fault of a stored "no mate"
};

} // namespace

TVerifyResult VerifyType(const TVerifyRequest& request, CGlobalRegisters& registers, IVerificationHost& host) {
    return CVerification(request, registers, host).Run();
}

} // namespace quillon
