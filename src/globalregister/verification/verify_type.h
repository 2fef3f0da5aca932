#pragma once
// VerifyType: is every element of a table what it must be by the rules of chess and the elements one move ahead? A
// table that is right in that sense, and whose mates in one are, is right altogether: a length is stored only where it
// can be played, and none is left out.
//
//   log      "PrecalcFailures<type>.txt": the faults of a run. One that is left over, and not empty, is the list of a
//            second pass, if the user wants that; if not, it is kept as ".BAK".
//   fixable  a fault where no mate is stored, or a longer one than there is. Others are only told: what such an element
//            hides can be a fault elsewhere, and "no mate" cannot be proved by one ply.
//   fixing   elements are corrected in the plain file and in memory. A mate on the move is certain, and written at
//            once. A longer one may rest on an element that is too short, or tells a mate where there is none. The
//            shortest of those cannot be explained by one ply: it is a fault that is not fixable. So after all elements
//            have been looked at no element is too short whose length is below those of all such faults, and what
//            rests on these alone is certain: it is written at the end. The rest is not. All that holds if the tables
//            of the other types are right: one element of those that is too short makes right ones of this type look
//            too long without any fault that is not fixable. So they are to be verified first.
//
//   second   a pass over a list mends longer mates only while that is a whole one for the files as they are
//   pass     (whole_list.h): an element that is too short and not in the list would make right ones look too long.
//
// Threads: VerifyType is called while nobody else uses the data; the host is called on the thread of VerifyType.

#include <cstdint>
#include <filesystem>
#include <string>
#include <string_view>

#include "core/notifier.h"
#include "globalregister/global_registers.h"
#include "globalregister/verification/check_index.h"

namespace quillon {

/// The answer about a setting that makes lookups slow.
enum class ESlowSetting : std::uint8_t {
    GoOn,    // "yes": with the setting as it is
    End,     // "no"
    TurnOff, // "cancel": without it, until the end of the run
};

class IVerificationHost : public INotifier {
  public:
    [[nodiscard]] virtual ESlowSetting AskAboutSlowSetting(std::string_view text) = 0;

    /// For a status line: the beginning, how far it has come, the end.
    virtual void ShowStatus(std::string_view text) = 0;

    /// Asked many times a second.
    [[nodiscard]] virtual ERunState RunState() = 0;
};

/// What commands of a window that run for long ask before they verify on the side. On the command line there is nothing
/// to ask: verifying is a command of its own there.
inline constexpr std::string_view kShouldVerifyQuestion =
    "Should correctness of data be verified?\n\n(it would slow down significantly - in case of error detection, error "
    "logs will be created)";

/// Asked at the first element that wrongly says "no mate", where fixing is wanted.
inline constexpr std::string_view kTryFixQuestion = "Error encountered. Try fix?";

/// Begins the question whether the log of an earlier run is to be the list of this one.
inline constexpr std::string_view kLeftoverLogQuestion = "Unempty log file ";

/// Indices between two reports of how far a run has come.
inline constexpr std::uint64_t kCheckedAtOnce = 500'000;

struct TVerifyRequest {
    std::string m_typeName;              // of an ordinary type
    bool m_bPartial = false;             // the levels of the table are not done, whatever its files say
    bool m_bFix = false;                 // correct what is fixable
    bool m_bSecondPassOnly = false;      // do not begin without the log of an earlier run
    int m_nThreads = 1;                  // at least 1
    std::filesystem::path m_logFolder{}; // empty: the working folder
};

enum class EVerifyEnd : std::uint8_t {
    AllChecked,
    Stopped,  // by the user
    NotBegun, // no data, no room for them, no log, or the user did not want to go on; it has been told
    Failed,   // data are missing or damaged, memory or disk were full; it has been told
};

struct TVerifyResult {
    EVerifyEnd m_eEnd = EVerifyEnd::NotBegun;
    std::size_t m_nFaults = 0;
    std::size_t m_nFixable = 0;
    std::size_t m_nFixed = 0;
    std::uint64_t m_nChecked = 0;                    // indices
    bool m_bSecondPass = false;                      // only what a log of an earlier run names
    bool m_bAllRight = false;                        // no element of the whole table is faulty
    bool m_bSystemFailure = false;                   // memory was short, or a file could not be read or written
    std::filesystem::path m_file;                    // that was verified; empty: none
    std::vector<std::filesystem::path> m_otherFiles; // of the same type, not looked at
    std::filesystem::path m_log;                     // empty: none was written
    std::string m_status;                            // the last line of ShowStatus
};

///   Errors  std::system_error when there is no thread. Everything else is told through the host.
[[nodiscard]] TVerifyResult VerifyType(const TVerifyRequest& request, CGlobalRegisters& registers,
                                       IVerificationHost& host);

} // namespace quillon
