#include "globalregister/generator/generator_run.h"

#include <exception>

#include "core/chess_exception.h"
#include "globalregister/generator/level_work.h"

namespace quillon {

/// The levels of one form of elements.
class CGeneratorRun::CImplementation {
  public:
    virtual ~CImplementation() = default;
    [[nodiscard]] virtual TLevelResult RunLevel(int nLevel) = 0;
    [[nodiscard]] virtual std::uint64_t MemoryInUse() const = 0;
    [[nodiscard]] virtual const std::vector<std::string>& MissingTypes() const = 0;
};

namespace {

constexpr std::uint64_t kChunk = 1 << 14; // indices
constexpr std::uint64_t kChunkOfWords = 16;

template <class TCells, class TBase> class CLevels final : public TBase {
  public:
    CLevels(TGlobalRegister& table, CGlobalRegisters& subMaterial, TGeneratorControl& control,
            TGeneratorOptions options)
        : m_table(table), m_control(control), m_options(std::move(options)), m_materials(table, subMaterial),
          m_work(table, m_materials.Root()) {}

    [[nodiscard]] const std::vector<std::string>& MissingTypes() const override { return m_materials.MissingTypes(); }

    [[nodiscard]] std::uint64_t MemoryInUse() const override { return m_work.BytesOfMarks(); }

    // What the last level has marked helps the next one only, and only if it was done.
    [[nodiscard]] TLevelResult RunLevel(int nLevel) override {
        if (nLevel != m_nLastLevel + 1 || UsesFullSweeps())
            Forget();
        const bool bWhite = nLevel % 2 != 0;
        CLevelThreads threads(m_control, m_options, nLevel, bWhite ? WhitePhases(nLevel == 1) : BlackPhases());
        try {
            if (bWhite)
                WhiteLevel(threads, static_cast<unsigned>(nLevel + 1) / 2, nLevel == 1);
            else
                BlackLevel(threads, static_cast<unsigned>(nLevel) / 2);
        } catch (const std::exception& error) {
            threads.AddError(error);
        }
        if (!FlushBitData(m_table, true))
            threads.AddError(CDetailFileFailure("Error in Generate_MainLoop2 in call to FlushBitData()"));
        const TLevelResult result = threads.Result();
        if (result.m_nResult == kLevelDone)
            threads.ShowEnd();
        m_nLastLevel = nLevel;
        if (result.m_nResult != kLevelDone)
            Forget();
        return result;
    }

  private:
    // How often a level runs its threads.
    [[nodiscard]] unsigned WhitePhases(bool bFirst) const {
        return (bFirst ? 1u : 0u) + (m_materials.Root().HasPawnsOfBothColours() ? 1u : 0u) + 1u +
               (UsesFullSweeps() ? 0u : 1u);
    }
    [[nodiscard]] unsigned BlackPhases() const { return m_bBlackKnown ? 2 : 1; }

    [[nodiscard]] bool UsesFullSweeps() const { return m_options.m_bFullSweeps || m_table.custom.has_value(); }

    void Forget() {
        m_bWhiteKnown = m_bBlackKnown = false;
        m_work.ClearMarks();
    }

    // All indices of the table.
    template <class TVisit> void Sweep(CLevelThreads& threads, const TVisit& visit) {
        threads.Run(m_work.Geometry().Size(), kChunk,
                    [&](TGeneratorThread& thread, std::uint64_t first, std::uint64_t last) {
                        for (std::uint64_t index = first; index < last; ++index)
                            visit(thread, index);
                    });
    }

    // Those that are marked; bTake: the marks go, and visit may set them again.
    template <class TVisit> void Walk(CLevelThreads& threads, CLevelMarks& marks, bool bTake, const TVisit& visit) {
        threads.Run(marks.Words(), kChunkOfWords,
                    [&](TGeneratorThread& thread, std::uint64_t first, std::uint64_t last) {
                        for (std::uint64_t word = first; word < last; ++word)
                            if (const std::uint64_t set = marks.Word(word, bTake); set != 0)
                                marks.ForIndices(word, set, [&](std::uint64_t index) { visit(thread, index); });
                    });
    }

    void WhiteLevel(CLevelThreads& threads, unsigned n, bool bFirst) {
        const bool bQuiet = UsesFullSweeps();
        m_work.SetReadsLengths(!m_bWhiteKnown && !bFirst);
        if (!m_bWhiteKnown)
            m_work.NewLost().Clear(); // all losses are looked at
        const auto conversions = [&](TGeneratorThread& thread, std::uint64_t index) {
            m_work.TryConversions(thread, index, n, bQuiet);
        };
        const auto doubleSteps = [&](TGeneratorThread& thread, std::uint64_t index) {
            m_work.TryDoubleSteps(thread, index, n);
        };
        const auto unmove = [&](TGeneratorThread& thread, std::uint64_t index) {
            m_work.UnmoveWhite(thread, index, n);
        };

        if (bFirst)
            Sweep(threads, [&](TGeneratorThread&, std::uint64_t index) { m_work.TryMated(index); });
        if (m_materials.Root().HasPawnsOfBothColours())
            m_bWhiteKnown ? Walk(threads, m_work.WaitingWhite(), false, doubleSteps) : Sweep(threads, doubleSteps);
        m_bWhiteKnown ? Walk(threads, m_work.WaitingWhite(), true, conversions) : Sweep(threads, conversions);
        if (!bQuiet)
            m_bWhiteKnown || bFirst ? Walk(threads, m_work.NewLost(), true, unmove) : Sweep(threads, unmove);
        for (TGeneratorThread& thread : threads.Threads())
            if (threads.IsDone()) {
                m_work.EnterDoubleSteps(thread, n);
                threads.AddFound(thread);
            }
        m_bWhiteKnown = true;
    }

    void BlackLevel(CLevelThreads& threads, unsigned n) {
        m_work.SetReadsLengths(false); // every mate found is of this level or of one before it
        const auto look = [&](TGeneratorThread& thread, std::uint64_t index) { m_work.TryBlack(thread, index, n); };
        const auto unmove = [&](TGeneratorThread& thread, std::uint64_t index) {
            m_work.UnmoveBlack(thread, index, n);
        };
        if (m_bBlackKnown) {
            Walk(threads, m_work.WaitingBlack(), true, look);
            Walk(threads, m_work.NewWhite(), true, unmove);
        } else {
            Sweep(threads, look);
            m_work.NewWhite().Clear();
        }
        m_bBlackKnown = true;
    }

    TGlobalRegister& m_table;
    TGeneratorControl& m_control;
    const TGeneratorOptions m_options;
    const CMaterials m_materials;
    CLevelWork<TCells> m_work;
    int m_nLastLevel = -1;
    bool m_bWhiteKnown = false, m_bBlackKnown = false; // the marks of a side tell all that its next level needs
};

} // namespace

// --- the control

void PauseGenerator(TGeneratorControl& control) {
    std::uint8_t nState = kGeneratorGoesOn;
    if (control.m_nPause.compare_exchange_strong(nState, kGeneratorPaused))
        control.m_nPausedSince = TickCount64();
}

void ResumeGenerator(TGeneratorControl& control) {
    std::uint8_t nState = kGeneratorPaused;
    if (const std::uint64_t nSince = control.m_nPausedSince.exchange(0); nSince != 0)
        control.m_nPausedMs += TickCount64() - nSince; // before anything goes on
    control.m_nPause.compare_exchange_strong(nState, kGeneratorGoesOn);
}

// --- the run

CGeneratorRun::CGeneratorRun(TGlobalRegister& table, CGlobalRegisters& subMaterial, TGeneratorControl& control,
                             TGeneratorOptions options) {
    if (table.bBitData)
        m_implementation = std::make_unique<CLevels<CBitCells, CImplementation>>(table, subMaterial, control, options);
    else if (table.nElementSize == 2)
        m_implementation = std::make_unique<CLevels<CWordCells, CImplementation>>(table, subMaterial, control, options);
    else
        m_implementation = std::make_unique<CLevels<CByteCells, CImplementation>>(table, subMaterial, control, options);
}

CGeneratorRun::~CGeneratorRun() = default;

TLevelResult CGeneratorRun::RunLevel(int nLevel) { return m_implementation->RunLevel(nLevel); }
const std::vector<std::string>& CGeneratorRun::MissingTypes() const { return m_implementation->MissingTypes(); }
std::uint64_t CGeneratorRun::MemoryInUse() const { return m_implementation->MemoryInUse(); }

} // namespace quillon
