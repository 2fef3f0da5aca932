#pragma once
// CGlobalRegisters: the data that are loaded, within a quota of memory. What has not been used for longest goes first.
//
// A lookup in data that are loaded takes no lock (register_slot.h). A load runs on the thread that wants the data,
// outside all locks; others that want the same type wait for it in steps of a millisecond. What cannot be had is
// remembered until UnloadAll, so that it is asked for once.
//
// Threads: everything may be called from any thread, but for the constructor, SetOptions and UnloadAll: nobody may hold
//          data then. Locks, in this order: registers, loads; a thread that waits for either holds no data, unless no
//          data are unloaded meanwhile (generator mode).

#include <array>
#include <atomic>
#include <cstdint>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "core/chessboard.h"
#include "core/position_type.h"
#include "globalregister/custom_material.h"
#include "globalregister/global_register.h"
#include "globalregister/precalc_loader.h"
#include "globalregister/precalc_options.h"
#include "globalregister/register_slot.h"

namespace quillon {

/// What the search adds to its question. A shallow node is not to pay for a load that it can do without.
struct TSearchGate {
    bool m_bAllSolutions = false;                       // deep nodes are met less often: a load pays earlier
    bool m_bTightLimits = false;                        // nothing large is loaded for this
    bool (*m_isStopping)(const TChessboard&) = nullptr; // asked while another thread loads; null: never
};

/// True if a search at `b` may load the data of its type.
///   nUsePacked  UseDataPackedForRandomAccess.
///   bFrozenMen  of a custom type, whose table they do not make larger.
[[nodiscard]] bool IsWorthLoading(const TChessboard& b, const TSearchGate& gate, int nUsePacked,
                                  bool bFrozenMen = false);

/// One type that has been asked for, or is loaded.
struct TRegisterStatus {
    std::string m_typeName;
    bool m_bLoaded = false; // false: not to be had
    std::uint64_t m_nBytes = 0;
    std::int32_t m_nRefCount = 0;
    std::uint64_t m_nIdleSeconds = 0; // since the last lookup
};

struct TRegistersStatus {
    std::uint64_t m_nBytes = 0; // of all data, and of loads in progress
    std::vector<TRegisterStatus> m_types;
    int m_nPending = 0; // loads
};

class CGlobalRegisters final : private IPrecalcRoom {
  public:
    /// Reads the folders; loads nothing.
    ///   notifier  hears of files that are of no use and asks the user, one call at a time, on whatever thread loads.
    ///             Not owned.
    ///   nQuota    bytes; 0: no data are used.
    CGlobalRegisters(TPrecalcOptions options, INotifier& notifier, std::uint64_t nQuota);
    ~CGlobalRegisters();
    CGlobalRegisters(const CGlobalRegisters&) = delete;
    CGlobalRegisters& operator=(const CGlobalRegisters&) = delete;

    /// The data of this position's type, loaded if that is worth it here; null if there are none. Release them.
    [[nodiscard]] TGlobalRegister* GetRegister(const TChessboard& b, const TSearchGate& gate);

    /// The data of a custom type that this position is of, to the square: as GetRegister. There may be several.
    ///   next  0 for the first; set behind it for the next call. Null: there is no further one.
    [[nodiscard]] TGlobalRegister* GetCustomRegister(const TChessboard& b, const TSearchGate& gate, std::size_t& next);

    /// The same whatever the load costs.
    ///   type  of a custom type its CustomNumber.
    [[nodiscard]] TGlobalRegister* GetRegisterForTool(TPositionType type);
    [[nodiscard]] TGlobalRegister* GetRegisterForTool(const TChessboard& b) {
        return GetRegisterForTool(GetPositionType(b));
    }

    [[nodiscard]] TGlobalRegister* GetCustomRegisterForTool(TChessboard b, std::size_t& next);

    /// The number that a custom type has here as long as the folders are not read again; 0: it has no files, or is left
    /// out.
    [[nodiscard]] TPositionType CustomNumber(std::string_view typeName) const;

    /// On the thread that got them. Null does nothing.
    static void ReleaseRegister(TGlobalRegister* data) {
        if (data != nullptr)
            data->pSlot->Release();
    }

    /// Are there data of this type, or files to load them from? Takes no lock, touches no file.
    [[nodiscard]] bool IsTypeAvailable(TPositionType type) const {
        const TRegisterSlot* const slot = FindSlot(type);
        return slot != nullptr && slot->State() == EDataState::Present && Quota() != 0;
    }

    /// Are there files of this type, and has a load of them found no room?
    [[nodiscard]] bool LacksRoom(TPositionType type) const {
        const TRegisterSlot* const slot = FindSlot(type);
        const std::lock_guard lock(m_loadingLock);
        return slot != nullptr && slot->State() == EDataState::NoRoom && slot->m_stateBefore == EDataState::Present;
    }

    [[nodiscard]] bool HasCustomTypes() const { return !m_customs.empty(); }

    /// Are there data of a custom type with these men, wherever they stand? As IsTypeAvailable.
    [[nodiscard]] bool IsCustomMaterialAvailable(const TChessboard& b) const;

    /// Does one of these say yes for any type?
    [[nodiscard]] bool IsAnyAvailable() const { return m_bAnyFile && Quota() != 0; }

    /// Bytes of all data but those of a type, and of all other loads in progress.
    [[nodiscard]] std::uint64_t TotalMemoryInUse(TPositionType leftOut = 0) const;

    /// The same of all types, for those who watch: never waits. While a load or an unload is entered, what it was
    /// before.
    [[nodiscard]] std::uint64_t MemoryShown() const;

    [[nodiscard]] std::uint64_t Quota() const override { return m_nPrecalcQuota.load(std::memory_order_relaxed); }

    /// Unloads what exceeds the new quota; with 0 everything. With more than before, what had no room is tried again.
    void SetQuota(std::uint64_t nBytes);

    /// While tables are made: nothing is unloaded, and a lack of room is told.
    void SetGeneratorMode(bool bOn) { m_bGeneratorMode.store(bOn, std::memory_order_relaxed); }

    /// Deletes the data of a type once nobody uses them.
    ///   type  of a custom type the number that its data have here (nPositionType); the same holds for Discard.
    void Unload(TPositionType type);

    /// The same for data that turned out to be damaged: the user is told, and they are not loaded again.
    void Discard(TPositionType type, std::string_view reason);

    /// Deletes all data, forgets what could not be had, and reads the folders again.
    ///   Result  false: a load is in progress, and nothing was done.
    bool UnloadAll();

    /// UnloadAll, with other folders and options.
    bool SetOptions(TPrecalcOptions options);

    [[nodiscard]] const TPrecalcOptions& Options() const { return m_options; }
    [[nodiscard]] TRegistersStatus Status() const;

  private:
    static constexpr std::size_t kSlots = 8192; // a power of two, more than twice the number of types

    /// Calls of all loading threads, one at a time.
    class CSerialNotifier final : public INotifier {
      public:
        explicit CSerialNotifier(INotifier& notifier) : m_notifier(notifier) {}
        void Inform(std::string_view text, std::string_view title) override {
            const std::lock_guard lock(m_lock);
            m_notifier.Inform(text, title);
        }
        bool AskYesNo(std::string_view text, std::string_view title) override {
            const std::lock_guard lock(m_lock);
            return m_notifier.AskYesNo(text, title);
        }

      private:
        std::mutex m_lock;
        INotifier& m_notifier;
    };

    struct TCandidate {
        TRegisterSlot* m_slot;
        std::uint64_t m_nLastUsedTicks;
        std::uint64_t m_nBytes;
    };

    struct TCustomSlot {
        TPositionIndexing m_indexing;
        TMaterialKey m_material;
        TRegisterSlot& m_slot;
    };

    static constexpr std::size_t kMostCustomTypes = 256; // each is looked at in every node of its material

    /// Custom types have no number of their own. Those of ordinary types are even.
    [[nodiscard]] static constexpr TPositionType NumberOfCustom(std::size_t i) { return 2 * i + 1; }
    [[nodiscard]] bool HasName(TPositionType type) const;
    [[nodiscard]] std::string NameOf(TPositionType type) const;
    void AddCustomType(const std::string& typeName);

    [[nodiscard]] TRegisterSlot* FindSlot(TPositionType type) const;
    [[nodiscard]] TRegisterSlot& SlotOf(TPositionType type);
    void ReadFolders();

    [[nodiscard]] TGlobalRegister* DataOf(TRegisterSlot& slot, const TChessboard& b, const TSearchGate& gate,
                                          bool bFrozenMen);
    [[nodiscard]] TGlobalRegister* LoadSlot(TRegisterSlot& slot, const TChessboard* b, const TSearchGate& gate);
    [[nodiscard]] std::unique_ptr<TGlobalRegister> LoadData(TRegisterSlot& slot);
    void EndLoad(TRegisterSlot& slot, std::unique_ptr<TGlobalRegister> data);

    [[nodiscard]] bool MakeRoom(TPositionType type, std::uint64_t size) override;
    void TellMemoryShort(TPositionType type) override;
    [[nodiscard]] bool TryMakeRoom(TRegisterSlot& slot, std::uint64_t size);
    [[nodiscard]] std::uint64_t Evict(std::uint64_t nNeeded);
    [[nodiscard]] std::uint64_t MemoryInUseUnderLocks(const TRegisterSlot* leftOut) const;
    [[nodiscard]] bool IsGenerating() const override { return m_bGeneratorMode.load(std::memory_order_relaxed); }
    [[nodiscard]] bool MayStayPacked(INotifier& notifier) override;

    TPrecalcOptions m_options;
    CSerialNotifier m_notifier;
    std::atomic<std::uint64_t> m_nPrecalcQuota;
    std::atomic<bool> m_bGeneratorMode{false};
    bool m_bAnyFile = false;

    std::array<std::atomic<TRegisterSlot*>, kSlots> m_places{}; // by type, behind others of the same place
    std::vector<std::unique_ptr<TRegisterSlot>> m_slots;        // of m_places; under the lock of registers
    std::vector<TCustomSlot> m_customs;                         // by number; changed by ReadFolders alone
    mutable std::mutex m_registersLock;                         // adding slots, and showing and taking out data
    mutable std::mutex m_loadingLock;                           // loads in progress: m_bLoading, m_nReserved
    mutable std::atomic<std::uint64_t> m_nMemoryShown{0};       // bytes, as MemoryShown has last seen them
    std::mutex m_answerLock;
    std::uint8_t m_nStayPacked = kNotAsked; // the user's word, under m_answerLock: 0, 1

    static constexpr std::uint8_t kNotAsked = 255;
};

/// Data in use, released when this goes.
class CRegisterUse {
  public:
    explicit CRegisterUse(TGlobalRegister* data) : m_data(data) {}
    ~CRegisterUse() { CGlobalRegisters::ReleaseRegister(m_data); }
    CRegisterUse(const CRegisterUse&) = delete;
    CRegisterUse& operator=(const CRegisterUse&) = delete;

    [[nodiscard]] explicit operator bool() const { return m_data != nullptr; }
    [[nodiscard]] TGlobalRegister* operator->() const { return m_data; }
    [[nodiscard]] TGlobalRegister& operator*() const { return *m_data; }

  private:
    TGlobalRegister* const m_data;
};

/// The text of the status: size, one line a type, loads in progress.
[[nodiscard]] std::string ShowStatus(const TRegistersStatus& status);

} // namespace quillon
