#pragma once
// TChessboardRegister<bool>: solved subpositions as a map of maps, by plies left and then by board. It is the small,
// persistent form: each entry keeps the key move or the best defence, and a position's entries are saved in a file.
// It is also the base of the registers of a running analysis.
//
// All lengths are plies left: odd with White to move (mate in n is 2n - 1), even with Black to move.
//
// Threads: look-ups take the shared side of `lock`, changes the exclusive one. Counters are atomic and may be read
//          without it. Files are the business of one thread.

#include <array>
#include <atomic>
#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <iosfwd>
#include <limits>
#include <map>
#include <string_view>
#include <vector>

#include "core/chessboard_id.h"
#include "tempregister/register_item.h"
#include "tempregister/register_lock.h"

namespace quillon {

/// Marks the words of a file that stand beside packed moves.
inline constexpr std::uint16_t kMoveMarker = 986;

/// The value of an entry.
template <typename TValue> struct TSubproblemRegisterInfo {
    std::uint16_t nMoves = 0; // same as the outer key
    std::uint16_t nMarker = kMoveMarker;
    std::uint32_t nMove = 0; // packed TMove: key move or defence; 0 where the caller gave none
    TValue bValue{};         // odd nMoves: White mates within them. Even: Black has a defence that lasts them
};
static_assert(sizeof(TSubproblemRegisterInfo<bool>) == 12);

/// The answers of FindMate and FindDefence.
inline constexpr std::uint8_t kTreeNo = 0;
inline constexpr std::uint8_t kTreeYes = 1;
inline constexpr std::uint8_t kTreeUnknown = 254;

/// Entries of fewer plies are the first that memory pressure gives up; then none are taken any more.
inline constexpr int kShortestKept = 4;

/// Part of its memory that a register fills with elements, in percent: the rest is for what the counting of elements
/// does not see, the array of buckets and the slack of allocators.
inline constexpr std::uint64_t kPercentForElements = 73;

/// Bytes an element is counted for: 68 of data and its share of the bucket around it.
inline constexpr std::uint64_t kBytesPerElement = 96;

/// The budget of a register that nothing but physical memory bounds.
inline constexpr std::uint64_t kNoBudget = std::numeric_limits<std::uint64_t>::max();

/// Head of a position's counters file, 48 bytes there.
struct TProblemHeader {
    std::uint16_t m_nMarkerWhite = kMoveMarker;
    std::uint16_t m_nMarkerBlack = kMoveMarker;
    std::array<std::uint32_t, 11> m_counters{};
};
static_assert(sizeof(TProblemHeader) == 48);

/// Notes that a position's files are still to be read: for a caller that sets many positions and looks at few.
struct TDeferredLoad {
    bool m_bPending = false; // LoadSubproblems has still to be called
};

template <typename TValue> class TChessboardRegister;

template <>
class TChessboardRegister<bool>
    : public std::map<unsigned short, std::map<TChessboardRegisterItem, TSubproblemRegisterInfo<bool>>> {
  public:
    /// An empty register of no position.
    ///   budget  bytes the register may take; physical memory if that is less.
    explicit TChessboardRegister(std::uint64_t budget = kNoBudget);
    TChessboardRegister(const TChessboardRegister&) = delete;
    TChessboardRegister& operator=(const TChessboardRegister&) = delete;

    /// Elements held, doubtful ones included.
    [[nodiscard]] virtual std::uint32_t GetElementsCount() const { return nElements.load(std::memory_order_relaxed); }
    [[nodiscard]] virtual std::uint32_t GetDoubtfulCount() const {
        return nDoubtfulInTree.load(std::memory_order_relaxed);
    }
    /// Drops doubtful elements that no run needs any more; returns how many.
    virtual std::uint32_t RemoveUnusedDoubtful() { return 0; }
    virtual ~TChessboardRegister() = default;

    /// Makes room when the budget is reached or memory has run out. A register by itself has nothing to give up. Called
    /// without any lock of this register.
    ///   bEarly  a periodic call: only while little room is left.
    virtual void EmptySomeDataWhenRegisterFull([[maybe_unused]] bool bEarly) {}

    /// Writes to the register log, if that is on.
    virtual void LogMessage(std::string_view text, int nParam1, int nParam2);

    /// Stores that White, to move with nMoves plies left, mates (true) or does not (false), and drops the entries this
    /// makes redundant. What is implied already is not stored; what finds no room is lost.
    ///   pMove        packed key move, or null
    ///   bSaveToFile  saves the register afterwards
    ///   Errors       ChessException for a contradiction with what is stored; nothing changes then.
    void Insert(std::uint16_t nMoves, const TBoardBytes& key, bool bValue, const std::uint32_t* pMove,
                bool bSaveToFile);

    /// Stores that Black, to move with nMoves plies left, has a defence that lasts them (true) or none (false). As
    /// Insert, but defences are not counted as elements, and a failure to find memory reaches the caller.
    void InsertDefence(std::uint16_t nMoves, const TBoardBytes& key, bool bValue, const std::uint32_t* pMove,
                       bool bSaveToFile);

    /// kTreeYes: White mates within nMoves. kTreeNo: not within nMoves. kTreeUnknown.
    [[nodiscard]] std::uint8_t FindMate(std::uint16_t nMoves, const TBoardBytes& key) const;

    /// kTreeYes: Black has a defence that lasts nMoves. kTreeNo: none. kTreeUnknown.
    ///   pMove  takes the move of the entry that answered, if not null; else it is left alone.
    [[nodiscard]] std::uint8_t FindDefence(std::uint16_t nMoves, const TBoardBytes& key, std::uint32_t* pMove) const;

    /// Makes this the register of a position. A new board empties it and, unless it is temporary, loads the position's
    /// entries; a missing file is no fault.
    ///   pDeferred  if not null, nothing is read: it notes whether LoadSubproblems has to be called.
    ///   Errors     ChessException for a board with unknown figure codes; nothing changes then.
    void SetPosition(const TBoardBytes& position, TDeferredLoad* pDeferred = nullptr);

    /// Empties the tree, sets the counters to zero and takes short entries again.
    void Clear();

    /// Writes all entries to subproblemsPath. A file already there becomes the backup, in place of an older one.
    /// False if that cannot be done, if the entries reach kMaxSavedSubproblems, of which the file then has the first,
    /// and for a temporary register, which touches no file.
    bool SaveSubproblems();

    /// Empties the register and reads subproblemsPath. False for a file that cannot be opened (the register is as it
    /// was), for one that is cut or damaged (the entries before the damage are kept), and for a temporary register.
    bool LoadSubproblems();

    TBoardBytes board{};                 // of the position this register belongs to
    bool bRemoveSubsumed = true;         // false while a file is read
    bool bTemporary = false;             // no file is ever touched
    std::atomic<bool> bKeepShort = true; // false: entries below kShortestKept are not taken
    TChessboardId id;                    // of the position; names its files
    TProblemHeader problemHeader;        // of the position's counters file
    std::vector<std::uint32_t> moves;    // packed moves of that file
    std::filesystem::path subproblemsPath;
    std::filesystem::path problemPath;
    std::atomic<std::uint32_t> nElements = 0;       // entries with White to move
    std::atomic<std::uint32_t> nDoubtfulInTree = 0; // reset with nElements
    mutable TRegisterLock lock;
    std::uint64_t nMemoryLimit;            // bytes
    std::uint64_t nMemoryForElements;      // bytes
    std::uint32_t nMaxElements;            // 0: nothing is stored
    TChessboardRegister* parent = nullptr; // the aggregate that a register of doubtful results belongs to, else null

  protected:
    /// Who counts the elements, makes room and keeps the log.
    [[nodiscard]] TChessboardRegister& Owner() { return parent != nullptr ? *parent : *this; }

  private:
    struct TEntry;

    [[nodiscard]] bool HasRoom();
    [[nodiscard]] const TSubproblemRegisterInfo<bool>* FindEntry(bool bMates, std::uint16_t nMoves,
                                                                 const TBoardBytes& key) const;
    [[nodiscard]] bool IsImplied(const TEntry& entry) const;
    void InsertCounted(const TEntry& entry);
    [[nodiscard]] bool Store(const TEntry& entry);
    [[nodiscard]] std::uint32_t RemoveSubsumed(const TEntry& entry);
    [[nodiscard]] bool ReadRecords(std::istream& file);
};

} // namespace quillon
