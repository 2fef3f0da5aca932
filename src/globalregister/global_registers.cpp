#include "globalregister/global_registers.h"

#include <algorithm>
#include <exception>
#include <limits>
#include <new>
#include <set>

#include "core/chess_exception.h"
#include "globalregister/precalc_files.h"
#include "globalregister/table_conversion.h"
#include "platform/memory_info.h"

namespace quillon {

namespace {

constexpr std::string_view kNoRoomForGenerator = "Cannot load subregister: memory quota for data generation exceeded";

/// Of a custom type. The element of the flags is no position of an ordinary type, but may be one of these.
bool HasElement(const TPositionIndexing& indexing, const TChessboard& b) {
    const std::uint64_t index = indexing.GetIndex(b);
    return index != kNoIndex && index != 0;
}

bool IsToBeLoaded(const TRegisterSlot& slot, const TChessboard& b, const TSearchGate& gate,
                  const TPrecalcOptions& options, bool bFrozenMen) {
    return slot.State() == EDataState::Present &&
           IsWorthLoading(b, gate, options.m_nUseDataPackedForRandomAccess, bFrozenMen);
}

constexpr std::size_t PlaceOf(TPositionType type, std::size_t nPlaces) {
    return static_cast<std::size_t>(type * 0x9E3779B97F4A7C15u >> 40) & (nPlaces - 1);
}

} // namespace

CGlobalRegisters::CGlobalRegisters(TPrecalcOptions options, INotifier& notifier, std::uint64_t nQuota)
    : m_options(std::move(options)), m_notifier(notifier), m_nPrecalcQuota(nQuota) {
    ReadFolders();
}

CGlobalRegisters::~CGlobalRegisters() {
    for (const std::unique_ptr<TRegisterSlot>& slot : m_slots)
        delete slot->TakeOut();
}

// --- slots

TRegisterSlot* CGlobalRegisters::FindSlot(TPositionType type) const {
    for (std::size_t place = PlaceOf(type, kSlots);; place = (place + 1) & (kSlots - 1)) {
        TRegisterSlot* const slot = m_places[place].load(std::memory_order_acquire);
        if (slot == nullptr || slot->Type() == type)
            return slot;
    }
}

TRegisterSlot& CGlobalRegisters::SlotOf(TPositionType type) {
    if (TRegisterSlot* const slot = FindSlot(type))
        return *slot;
    const std::lock_guard lock(m_registersLock);
    if (TRegisterSlot* const slot = FindSlot(type)) // of another thread, meanwhile
        return *slot;
    m_slots.push_back(std::make_unique<TRegisterSlot>(type, EDataState::NotAsked));
    std::size_t place = PlaceOf(type, kSlots);
    while (m_places[place].load(std::memory_order_relaxed) != nullptr)
        place = (place + 1) & (kSlots - 1);
    m_places[place].store(m_slots.back().get(), std::memory_order_release);
    return *m_slots.back();
}

/// Details and archives are no data that a search could be answered from.
void CGlobalRegisters::ReadFolders() {
    m_bAnyFile = false;
    m_customs.clear(); // their slots stay, by number
    std::set<std::string> customNames;
    for (const TPrecalcFileFound& found : FindPrecalcFiles(m_options.m_folders)) {
        if (found.m_file.m_bDetails)
            continue;
        if (IsCustomType(found.m_typeName)) {
            customNames.insert(found.m_typeName);
            AddCustomType(found.m_typeName);
            continue;
        }
        const TPositionType type = TPositionIndexing(found.m_typeName).nPositionType;
        if (type == 0 || found.m_typeName.size() > kMaxTypeMen || FormOf(found.m_path) == ETableForm::Archive)
            continue;
        SlotOf(type).SetState(EDataState::Present);
        m_bAnyFile = true;
    }
    if (const std::size_t nLeftOut = customNames.size() - m_customs.size(); nLeftOut != 0)
        m_notifier.Inform("Only " + std::to_string(kMostCustomTypes) +
                              " custom types are used: " + std::to_string(nLeftOut) + " are left out",
                          "Warning");
}

void CGlobalRegisters::AddCustomType(const std::string& typeName) {
    TPositionType number = CustomNumber(typeName);
    if (number == 0) {
        if (m_customs.size() == kMostCustomTypes)
            return;
        number = NumberOfCustom(m_customs.size());
        TPositionIndexing indexing(typeName);
        const TMaterialKey material = MaterialOf(indexing.custom->Type());
        m_customs.push_back({std::move(indexing), material, SlotOf(number)});
    }
    SlotOf(number).SetState(EDataState::Present);
    m_bAnyFile = true;
}

/// Of a type that is looked up: an ordinary one of not too many men, or a custom one of the folders.
bool CGlobalRegisters::HasName(TPositionType type) const {
    return type % 2 != 0 ? type / 2 < m_customs.size() : type != 0 && PositionTypeToString(type).size() <= kMaxTypeMen;
}

std::string CGlobalRegisters::NameOf(TPositionType type) const {
    const bool bCustom = type % 2 != 0;
    return bCustom ? m_customs[static_cast<std::size_t>(type / 2)].m_indexing.typeName : PositionTypeToString(type);
}

// --- data for a position

TGlobalRegister* CGlobalRegisters::GetRegister(const TChessboard& b, const TSearchGate& gate) {
    TRegisterSlot* const slot = FindSlot(GetPositionType(b));
    if (slot == nullptr || Quota() == 0) // data in use stay when the quota goes, but answer no more
        return nullptr;
    return DataOf(*slot, b, gate, false);
}

TGlobalRegister* CGlobalRegisters::DataOf(TRegisterSlot& slot, const TChessboard& b, const TSearchGate& gate,
                                          bool bFrozenMen) {
    if (TGlobalRegister* const data = slot.Acquire()) [[likely]]
        return data;
    if (!IsToBeLoaded(slot, b, gate, m_options, bFrozenMen))
        return nullptr;
    return LoadSlot(slot, &b, gate);
}

TGlobalRegister* CGlobalRegisters::GetCustomRegister(const TChessboard& b, const TSearchGate& gate, std::size_t& next) {
    if (next >= m_customs.size() || Quota() == 0)
        return nullptr;
    const TMaterialKey material = MaterialOf(b);
    while (next < m_customs.size()) {
        const TCustomSlot& type = m_customs[next++];
        if (type.m_material != material)
            continue;
        const bool bFrozenMen = !type.m_indexing.custom->frozenSquares.empty();
        // Before the index, which costs more.
        if (!type.m_slot.IsLoaded() && !IsToBeLoaded(type.m_slot, b, gate, m_options, bFrozenMen))
            continue;
        if (!HasElement(type.m_indexing, b))
            continue;
        if (TGlobalRegister* const data = DataOf(type.m_slot, b, gate, bFrozenMen))
            return data;
    }
    return nullptr;
}

bool CGlobalRegisters::IsCustomMaterialAvailable(const TChessboard& b) const {
    if (m_customs.empty() || Quota() == 0)
        return false;
    const TMaterialKey material = MaterialOf(b);
    return std::ranges::any_of(m_customs, [material](const TCustomSlot& type) {
        return type.m_material == material && type.m_slot.State() == EDataState::Present;
    });
}

TGlobalRegister* CGlobalRegisters::GetRegisterForTool(TPositionType type) {
    if (!HasName(type) || Quota() == 0)
        return nullptr;
    TRegisterSlot& slot = SlotOf(type);
    if (TGlobalRegister* const data = slot.Acquire())
        return data;
    return LoadSlot(slot, nullptr, {});
}

TGlobalRegister* CGlobalRegisters::GetCustomRegisterForTool(TChessboard b, std::size_t& next) {
    b.m_nMoves = std::numeric_limits<decltype(b.m_nMoves)>::max(); // a load pays for any table
    return GetCustomRegister(b, {}, next);
}

TPositionType CGlobalRegisters::CustomNumber(std::string_view typeName) const {
    const auto known =
        std::ranges::find_if(m_customs, [&](const auto& type) { return type.m_indexing.typeName == typeName; });
    return known == m_customs.end() ? 0 : NumberOfCustom(static_cast<std::size_t>(known - m_customs.begin()));
}

TGlobalRegister* CGlobalRegisters::LoadSlot(TRegisterSlot& slot, const TChessboard* b, const TSearchGate& gate) {
    for (;; SleepMs(1)) {
        if (b != nullptr && gate.m_isStopping != nullptr && gate.m_isStopping(*b))
            return nullptr;
        const std::lock_guard lock(m_loadingLock);
        if (TGlobalRegister* const data = slot.Acquire())
            return data;
        if (slot.State() == EDataState::Unavailable || slot.State() == EDataState::NoRoom)
            return nullptr;
        if (!slot.m_bLoading) {
            slot.m_bLoading = true;
            slot.m_nReserved = 0;
            slot.m_bRoomRefused = false;
            slot.m_stateBefore = slot.State();
            break;
        }
    }
    std::unique_ptr<TGlobalRegister> data = LoadData(slot);
    TGlobalRegister* const loaded = data.get();
    EndLoad(slot, std::move(data));
    return loaded;
}

std::unique_ptr<TGlobalRegister> CGlobalRegisters::LoadData(TRegisterSlot& slot) {
    try {
        auto data = std::make_unique<TGlobalRegister>(NameOf(slot.Type()));
        data->nPositionType = slot.Type();
        data->pSlot = &slot;
        if (Load(*data, m_options, *this, m_notifier))
            return data;
    } catch (const std::bad_alloc&) {
        TellMemoryShort(slot.Type());
    } catch (const std::exception&) { // files: the type is not to be had
    }
    return nullptr;
}

void CGlobalRegisters::TellMemoryShort(TPositionType type) {
    TRegisterSlot& slot = SlotOf(type);
    const std::lock_guard lock(m_loadingLock);
    slot.m_bRoomRefused = true;
}

void CGlobalRegisters::EndLoad(TRegisterSlot& slot, std::unique_ptr<TGlobalRegister> data) {
    const std::lock_guard registers(m_registersLock);
    const std::lock_guard loading(m_loadingLock);
    slot.SetState(data ? EDataState::Present : slot.m_bRoomRefused ? EDataState::NoRoom : EDataState::Unavailable);
    if (data)
        slot.Publish(data.release());
    slot.m_bLoading = false;
    slot.m_nReserved = 0;
}

// --- memory

std::uint64_t CGlobalRegisters::MemoryInUseUnderLocks(const TRegisterSlot* leftOut) const {
    std::uint64_t nBytes = 0;
    for (const std::unique_ptr<TRegisterSlot>& slot : m_slots) {
        if (slot.get() == leftOut)
            continue;
        if (const TGlobalRegister* const data = slot->Peek())
            nBytes += data->GetMemoryInUse();
        nBytes += slot->m_nReserved;
    }
    return nBytes;
}

std::uint64_t CGlobalRegisters::TotalMemoryInUse(TPositionType leftOut) const {
    const std::lock_guard registers(m_registersLock);
    const std::lock_guard loading(m_loadingLock);
    return MemoryInUseUnderLocks(leftOut == 0 ? nullptr : FindSlot(leftOut));
}

std::uint64_t CGlobalRegisters::MemoryShown() const {
    if (const std::unique_lock registers(m_registersLock, std::try_to_lock); registers)
        if (const std::unique_lock loading(m_loadingLock, std::try_to_lock); loading)
            m_nMemoryShown.store(MemoryInUseUnderLocks(nullptr), std::memory_order_relaxed);
    return m_nMemoryShown.load(std::memory_order_relaxed);
}

bool CGlobalRegisters::MakeRoom(TPositionType type, std::uint64_t size) {
    const bool bRoom = TryMakeRoom(SlotOf(type), size);
    if (!bRoom && IsGenerating())
        m_notifier.Inform(kNoRoomForGenerator, "Warning");
    return bRoom;
}

bool CGlobalRegisters::TryMakeRoom(TRegisterSlot& slot, std::uint64_t size) {
    const std::lock_guard registers(m_registersLock);
    const std::lock_guard loading(m_loadingLock);
    const std::uint64_t nQuota = Quota();
    slot.m_nReserved = 0;
    if (size >= nQuota) {
        slot.m_bRoomRefused = true;
        return false;
    }
    slot.m_nReserved = size;
    std::uint64_t used = MemoryInUseUnderLocks(&slot);
    const std::uint64_t nMost = nQuota - size;
    if (used <= nMost)
        return true;
    const std::uint64_t resident = ResidentMemory();
    if (resident < used) // of some data not every page has been touched
        used = used / 2 + resident / 2;
    if (used <= nMost || (!IsGenerating() && Evict(used - nMost) == 0))
        return true;
    slot.m_nReserved = 0;
    slot.m_bRoomRefused = true;
    return false;
}

/// Unloads data that nobody uses, the oldest first, until so many bytes are free. Under both locks.
///   Result  bytes that are still needed.
std::uint64_t CGlobalRegisters::Evict(std::uint64_t nNeeded) {
    constexpr int kSweeps = 3;
    std::vector<TCandidate> candidates;
    for (const std::unique_ptr<TRegisterSlot>& slot : m_slots)
        if (const TGlobalRegister* const data = slot->Peek())
            candidates.push_back({slot.get(), slot->LastUsedTicks(), data->GetMemoryInUse()});
    std::ranges::sort(candidates, {}, &TCandidate::m_nLastUsedTicks);
    for (int sweep = 0; sweep < kSweeps && nNeeded > 0; ++sweep)
        for (const TCandidate& candidate : candidates) {
            if (nNeeded == 0)
                break;
            if (candidate.m_nBytes == 0 || candidate.m_slot->RefCount() > 0 || candidate.m_slot->m_bLoading)
                continue;
            const std::unique_ptr<TGlobalRegister> data(candidate.m_slot->TryTakeOut());
            if (data)
                nNeeded -= std::min(nNeeded, candidate.m_nBytes);
        }
    return nNeeded;
}

void CGlobalRegisters::SetQuota(std::uint64_t nBytes) {
    const std::lock_guard registers(m_registersLock);
    const std::lock_guard loading(m_loadingLock);
    const bool bMore = nBytes > m_nPrecalcQuota.exchange(nBytes, std::memory_order_relaxed);
    for (const std::unique_ptr<TRegisterSlot>& slot : m_slots) {
        if (bMore && slot->State() == EDataState::NoRoom)
            slot->SetState(slot->m_stateBefore);
        if (nBytes == 0 && slot->RefCount() == 0) // those on disk, too, which take no memory
            delete slot->TryTakeOut();
    }
    const std::uint64_t used = MemoryInUseUnderLocks(nullptr);
    if (used > nBytes)
        (void)Evict(used - nBytes);
}

bool CGlobalRegisters::MayStayPacked(INotifier& notifier) {
    const std::lock_guard lock(m_answerLock);
    if (m_nStayPacked == kNotAsked)
        m_nStayPacked = notifier.AskYesNo(kStayPackedQuestion, "Question") ? 1 : 0;
    return m_nStayPacked == 1;
}

// --- unloading

void CGlobalRegisters::Unload(TPositionType type) {
    TRegisterSlot* const slot = FindSlot(type);
    if (slot == nullptr)
        return;
    const std::lock_guard lock(m_registersLock);
    delete slot->TakeOut();
}

void CGlobalRegisters::Discard(TPositionType type, std::string_view reason) {
    TRegisterSlot* const slot = FindSlot(type);
    if (slot == nullptr)
        return;
    {
        const std::lock_guard lock(m_registersLock);
        slot->SetState(EDataState::Unavailable);
        const std::unique_ptr<TGlobalRegister> data(slot->TakeOut());
        if (!data) // another thread has met the damage, too
            return;
    }
    m_notifier.Inform(NameOf(type) + ": " + std::string(reason), "Error");
}

bool CGlobalRegisters::UnloadAll() {
    {
        const std::lock_guard registers(m_registersLock);
        const std::lock_guard loading(m_loadingLock);
        if (std::ranges::any_of(m_slots, [](const auto& slot) { return slot->m_bLoading; }))
            return false;
        for (const std::unique_ptr<TRegisterSlot>& slot : m_slots) {
            delete slot->TakeOut();
            slot->SetState(EDataState::NotAsked);
        }
    }
    ReadFolders();
    return true;
}

bool CGlobalRegisters::SetOptions(TPrecalcOptions options) {
    {
        const std::lock_guard lock(m_loadingLock);
        for (const std::unique_ptr<TRegisterSlot>& slot : m_slots)
            if (slot->m_bLoading)
                return false;
        m_options = std::move(options);
    }
    return UnloadAll();
}

// --- status

TRegistersStatus CGlobalRegisters::Status() const {
    const std::lock_guard registers(m_registersLock);
    const std::lock_guard loading(m_loadingLock);
    TRegistersStatus status;
    status.m_nBytes = MemoryInUseUnderLocks(nullptr);
    const std::uint64_t now = CoarseTickCount64();
    for (const std::unique_ptr<TRegisterSlot>& slot : m_slots) {
        const TGlobalRegister* const data = slot->Peek();
        status.m_nPending += slot->m_bLoading;
        if (data == nullptr && slot->State() != EDataState::Unavailable && slot->State() != EDataState::NoRoom)
            continue;
        TRegisterStatus type{NameOf(slot->Type()), data != nullptr};
        if (data != nullptr) {
            type.m_nBytes = data->GetMemoryInUse();
            type.m_nRefCount = slot->RefCount();
            type.m_nIdleSeconds = (now - std::min(now, slot->LastUsedTicks())) / 1000;
        }
        status.m_types.push_back(std::move(type));
    }
    std::ranges::sort(status.m_types, {}, &TRegisterStatus::m_typeName);
    return status;
}

std::string ShowStatus(const TRegistersStatus& status) {
    const auto megabytes = [](std::uint64_t nBytes) { return std::to_string(nBytes >> 20); };
    std::string text = "Current size of global register in memory: " + megabytes(status.m_nBytes) + " MB\n";
    for (const TRegisterStatus& type : status.m_types) {
        if (!type.m_bLoaded) {
            text += type.m_typeName + " unavailable/redundant/not enough memory\n";
            continue;
        }
        text += type.m_typeName + " " + megabytes(type.m_nBytes) + " MB" +
                " AllocCount=" + std::to_string(type.m_nRefCount) + " LastAccess " +
                std::to_string(type.m_nIdleSeconds) + " sec(s). ago\n";
    }
    return text + std::to_string(status.m_nPending) + " register(s) pending.";
}

} // namespace quillon
