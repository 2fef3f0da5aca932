#include "globalregister/precalc_loader.h"

#include <algorithm>
#include <functional>
#include <random>

#include "core/chess_exception.h"
#include "globalregister/table_conversion.h"
#include "globalregister/table_files.h"
#include "platform/lowered_limit.h"
#include "platform/temporary_folder.h"
#include "tempregister/failing_allocation.h"

namespace quillon {
namespace {

namespace fs = std::filesystem;

constexpr std::uint64_t kMegabyte = 1 << 20;

class CRoom final : public IPrecalcRoom {
  public:
    [[nodiscard]] std::uint64_t Quota() const override { return m_nQuota; }
    [[nodiscard]] bool MakeRoom(TPositionType, std::uint64_t size) override {
        const bool bRoom = size == 0 || m_bRoom;
        m_nReserved = bRoom ? size : 0;
        m_nMostAsked = std::max(m_nMostAsked, size);
        if (m_onRoom)
            m_onRoom();
        return bRoom;
    }
    [[nodiscard]] bool IsGenerating() const override { return false; }
    [[nodiscard]] bool MayStayPacked(INotifier& notifier) override {
        return notifier.AskYesNo(kStayPackedQuestion, "Question");
    }
    std::uint64_t m_nQuota = 64 * kMegabyte;
    void TellMemoryShort(TPositionType) override { m_bMemoryShort = true; }
    std::uint64_t m_nReserved = 0;
    std::uint64_t m_nMostAsked = 0; // since the last load began
    bool m_bMemoryShort = false;    // the same
    bool m_bRoom = true;
    std::function<void()> m_onRoom;
};

const TElements& Rooks() {
    static const TElements elements = ThreeMenElements("R");
    return elements;
}

class PrecalcLoader : public testing::Test {
  protected:
    PrecalcLoader() {
        m_options.m_folders = {m_home.Path(), m_second.Path()};
        m_options.m_bGlobalRegisterForceDiskAccess = false;
    }

    fs::path First(const char* extension) const {
        return m_home.Path() / ("Precalc/R.precalc" + std::string(extension));
    }
    fs::path Second(const char* extension) const { return m_second.Path() / ("R.precalc" + std::string(extension)); }

    bool LoadRook(TLoadMode mode = {}, const fs::path& chosen = {}) {
        m_data = std::make_unique<TGlobalRegister>("R");
        m_data->path = chosen;
        m_room.m_nMostAsked = 0;
        m_room.m_bMemoryShort = false;
        return Load(*m_data, m_options, m_room, m_boxes, mode);
    }

    /// Every position has its length.
    void ExpectRookAnswers() {
        std::size_t wrong = 0;
        ForAllThreeMen([&, i = 0](int w, int p, int k) mutable {
            if (i++ % 41 != 0)
                return;
            const int length = ReferenceTable("R").Length(w, p, k);
            const int expected = length == 0 ? 0 : 2 * length - 1;
            const TChessboard b = ThreeMenBoard("R", w, p, k);
            wrong += m_data->IsMate(b) != expected || m_data->ProvedHalfMoves(b) != expected;
        });
        EXPECT_EQ(wrong, 0u);
    }

    /// A table that tells by its last element which file it is.
    static TElements Marked(std::uint8_t mark) {
        TElements elements = Rooks();
        elements.back() = mark;
        return elements;
    }
    int LoadedMark(const fs::path& chosen = {}) {
        if (!LoadRook({}, chosen))
            return -1;
        return (m_data->IsMateByIndex(m_data->GetSize() - 1) + 1) / 2;
    }

    /// A load tells of one file, with a warning that begins so, and uses none.
    void ExpectRefusal(const std::string& beginning, const fs::path& file) {
        m_boxes.m_told.clear();
        EXPECT_FALSE(LoadRook());
        ASSERT_EQ(m_boxes.m_told.size(), 1u) << beginning;
        EXPECT_EQ(m_boxes.m_told[0].find("Warning: " + beginning + ":\n\n" + file.string()), 0u) << m_boxes.m_told[0];
    }

    static constexpr const char* kImproper = "Data file size and/or its header seems improper";
    static constexpr const char* kDamaged = "Data file is missing, damaged or cannot be read";

    CTemporaryFolder m_home, m_second;
    TPrecalcOptions m_options;
    CRoom m_room;
    CHeardBoxes m_boxes;
    std::unique_ptr<TGlobalRegister> m_data;
};

TEST(ThreeMenTable, KnowsTheLongestMates) {
    int queens = 0, rooks = 0;
    ForAllThreeMen([&](int w, int p, int k) {
        queens = std::max(queens, ReferenceTable("Q").Length(w, p, k));
        rooks = std::max(rooks, ReferenceTable("R").Length(w, p, k));
    });
    EXPECT_EQ(queens, 10);
    EXPECT_EQ(rooks, 16);
}

TEST_F(PrecalcLoader, EveryFormAnswersAlike) {
    WriteElements(First(""), Rooks());
    ASSERT_TRUE(LoadRook());
    EXPECT_EQ(m_data->data.size(), Rooks().size());
    EXPECT_EQ(m_data->GetMemoryInUse(), Rooks().size());
    EXPECT_TRUE(m_data->bFullyLoaded);
    ExpectRookAnswers();

    m_room.m_nQuota = 2 * Rooks().size(); // more than a quarter of it: read from disk
    ASSERT_TRUE(LoadRook());
    EXPECT_TRUE(m_data->diskStream.is_open());
    EXPECT_EQ(m_data->GetMemoryInUse(), 0u);
    EXPECT_EQ(m_room.m_nReserved, 0u);
    ExpectRookAnswers();
    m_room.m_nQuota = 64 * kMegabyte;

    fs::remove(First(""));
    WriteLz4(First(".lz4"), Rooks());
    ASSERT_TRUE(LoadRook());
    EXPECT_EQ(m_data->nRandomAccessKind, kPlainAccess);
    ExpectRookAnswers();

    fs::remove(First(".lz4"));
    WriteLzw(First(".packed.lzw"), Rooks());
    ASSERT_TRUE(LoadRook());
    EXPECT_EQ(m_data->nRandomAccessKind, kPackedAccess);
    EXPECT_FALSE(m_data->packed->IsStreaming());
    EXPECT_EQ(m_room.m_nReserved, m_data->packed->GetMemorySize());
    ExpectRookAnswers();

    m_options.m_nUseDataPackedForRandomAccess = 1;
    ASSERT_TRUE(LoadRook());
    EXPECT_EQ(m_data->nRandomAccessKind, kPlainAccess);
    EXPECT_EQ(m_data->data, Rooks());
    m_options.m_nUseDataPackedForRandomAccess = 2;

    fs::remove(First(".packed.lzw"));
    WriteSimple(First(".packed.lz4"), Rooks());
    ASSERT_TRUE(LoadRook());
    EXPECT_EQ(m_data->nRandomAccessKind, kSimpleAccess);
    EXPECT_EQ(m_room.m_nReserved, m_data->nPackedSize);
    ExpectRookAnswers();
    EXPECT_EQ(m_boxes.m_told, std::vector<std::string>{});
}

TEST_F(PrecalcLoader, WholeTablesComeFirstIntoMemory) {
    WriteLzw(First(".packed.lzw"), Marked(1));
    EXPECT_EQ(LoadedMark(), 1);
    WriteLzw(Second(".packed.lzw"), Marked(2));
    EXPECT_EQ(LoadedMark(), 2);
    WriteElements(First(""), Marked(3));
    EXPECT_EQ(LoadedMark(), 3);
    WriteElements(Second(""), Marked(4));
    EXPECT_EQ(LoadedMark(), 4);
    WriteLz4(Second(".lz4"), Marked(5));
    EXPECT_EQ(LoadedMark(), 5);
    WriteLz4(First(".lz4"), Marked(6));
    EXPECT_EQ(LoadedMark(), 6);
}

TEST_F(PrecalcLoader, PackedTablesComeFirstWhereTheDiskIsWanted) {
    WriteElements(First(""), Marked(3));
    WriteLzw(First(".packed.lzw"), Marked(1));
    m_options.m_bGlobalRegisterForceDiskAccess = true;
    EXPECT_EQ(LoadedMark(), 1);
    ASSERT_TRUE(LoadRook({.m_bAllowDisk = false}));
    EXPECT_EQ(m_data->IsMateByIndex(m_data->GetSize() - 1), 5) << "the whole table, into memory";
    m_options.m_nUseDataPackedForRandomAccess = 1;
    EXPECT_EQ(LoadedMark(), 3) << "packed ones are not wanted while there is another";
    m_options.m_nUseDataPackedForRandomAccess = 3;
    fs::remove(First(".packed.lzw"));
    EXPECT_EQ(LoadedMark(), 3);
    WriteSimple(First(".packed.lz4"), Marked(7));
    EXPECT_EQ(LoadedMark(), -1) << "an archive in the way";
    m_options.m_bGlobalRegisterForceDiskAccess = false;
    EXPECT_EQ(LoadedMark(), 3);
    fs::remove(First(""));
    EXPECT_EQ(LoadedMark(), -1) << "whatever it holds, it is not read";
    m_options.m_nUseDataPackedForRandomAccess = 2;
    EXPECT_EQ(LoadedMark(), 7);
}

TEST_F(PrecalcLoader, WithoutRoomTheDiskIsRead) {
    WriteElements(First(""), Rooks());
    m_room.m_bRoom = false;
    ASSERT_TRUE(LoadRook());
    EXPECT_TRUE(m_data->diskStream.is_open());
    ExpectRookAnswers();
    EXPECT_FALSE(LoadRook({.m_bAllowDisk = false}));
    m_room.m_bRoom = true;
    m_room.m_nQuota = Rooks().size();
    EXPECT_FALSE(LoadRook()) << "a table as large as the quota";
    EXPECT_TRUE(LoadRook({.m_bAllowDisk = true, .m_bVerifying = true})) << "the quota is not looked at";
}

TEST_F(PrecalcLoader, NoFileIsNoData) {
    EXPECT_FALSE(LoadRook());
    EXPECT_EQ(m_boxes.m_told, std::vector<std::string>{});
}

// Each way in which a file can be wrong, in each form; the data of the good form beside it are taken.
TEST_F(PrecalcLoader, WrongFilesAreToldOfAndNotUsed) {
    TElements cut = Rooks(), larger = Rooks();
    cut.pop_back();
    larger.push_back(0);
    const TElements foreign(98304, 1), flagged(40960 * 2, 4), empty;
    for (const TElements& wrong : {cut, larger, foreign, flagged, empty}) {
        WriteElements(First(""), wrong);
        m_boxes.m_told.clear();
        EXPECT_FALSE(LoadRook());
        ASSERT_EQ(m_boxes.m_told.size(), 1u);
        EXPECT_EQ(m_boxes.m_told[0], "Warning: Data file size and/or its header seems improper:\n\n" +
                                         First("").string() + "\n\nFile size=" + std::to_string(wrong.size()) +
                                         "\nExpected file size=40960");
    }
    WriteElements(Second(""), Rooks());
    EXPECT_TRUE(LoadRook());
    fs::remove(Second(""));
    fs::remove(First(""));
    fs::create_directory(First(""));
    EXPECT_FALSE(LoadRook());
}

TEST_F(PrecalcLoader, WrongPackedFilesAreToldOfAndNotUsed) {
    for (const char* const extension : {".lz4", ".packed.lzw", ".packed.lz4"}) {
        const fs::path file = First(extension);
        const auto write = [&](const TElements& elements) {
            std::string(extension) == ".lz4"          ? WriteLz4(file, elements)
            : std::string(extension) == ".packed.lzw" ? WriteLzw(file, elements)
                                                      : WriteSimple(file, elements);
        };
        write(Rooks());
        ASSERT_TRUE(LoadRook()) << extension;
        const TElements good = ReadWholeFile(file).value();
        TElements cut(good.begin(), good.begin() + static_cast<std::ptrdiff_t>(good.size() / 2)), larger = good;
        larger.resize(good.size() + 100);
        for (const TElements& wrong : {cut, larger}) {
            WriteElements(file, wrong);
            ExpectRefusal(std::string(extension) == ".packed.lzw" ? kImproper : kDamaged, file);
        }
        TElements foreign(98304, 1);
        write(foreign);
        m_boxes.m_told.clear();
        EXPECT_FALSE(LoadRook()) << extension << ": a table of another type";
        EXPECT_EQ(m_boxes.m_told.size(), 1u) << extension;
        fs::remove(file);
    }
}

TEST_F(PrecalcLoader, DamagedBlockIsAnErrorOfTheLookup) {
    WriteLzw(First(".packed.lzw"), Rooks());
    TElements bytes = ReadWholeFile(First(".packed.lzw")).value();
    for (std::size_t i = bytes.size() / 2; i < bytes.size(); ++i)
        bytes[i] = 255;
    WriteElements(First(".packed.lzw"), bytes);
    ASSERT_TRUE(LoadRook());
    EXPECT_THROW((void)m_data->IsMateByIndex(40959), ChessException);
}

TEST_F(PrecalcLoader, UnfinishedTablesAnswerWhatTheyHaveSettled) {
    const TChessboard mate = ThreeMenBoard("R", 42, 7, 56), far = ThreeMenBoard("R", 0, 9, 36);
    const TPositionIndexing indexing("R");
    TElements elements = Rooks();
    const std::uint8_t length = elements[indexing.GetIndex(far)];
    ASSERT_GT(length, 10);
    elements[indexing.GetIndex(mate)] = kUnknownElement;
    WriteElements(First(""), elements);
    ASSERT_TRUE(LoadRook());
    EXPECT_EQ(m_boxes.m_told,
              std::vector<std::string>{"Warning: Dane dla pozycji typu R wyglądają na nie do końca wygenerowane."});
    EXPECT_EQ(m_data->ProvedHalfMoves(mate), kUnknownHalfMoves);
    EXPECT_EQ(m_data->ProvedHalfMoves(far), 2 * length - 1);
    EXPECT_EQ(m_data->ProvedHalfMoves(ThreeMenBoard("R", 0, 63, 63 - 8)), kUnknownHalfMoves)
        << "no mate is not settled in such a table";
}

/// The marks come first, then the files that they are about.
TEST_F(PrecalcLoader, ATableThatIsMadeAnewDuringItsLoadIsInTheMaking) {
    const TChessboard none = ThreeMenBoard("R", 0, 63, 63 - 8);
    WriteElements(First(""), Rooks());
    ASSERT_TRUE(LoadRook());
    ASSERT_EQ(m_data->ProvedHalfMoves(none), 0);
    m_room.m_onRoom = [this] { std::ofstream(First(".iter")) << "1234"; };
    ASSERT_TRUE(LoadRook());
    EXPECT_EQ(m_data->ProvedHalfMoves(none), kUnknownHalfMoves);
}

// A root that fails leaves nothing behind for the next one.
TEST_F(PrecalcLoader, NothingStaysOfAFileThatWasOfNoUse) {
    WriteSimple(First(".packed.lz4"), TElements(98304, 1));
    EXPECT_FALSE(LoadRook());
    EXPECT_EQ(m_room.m_nReserved, 0u);
    EXPECT_EQ(m_data->nPackedSize, 0u);
    EXPECT_TRUE(m_data->data.empty());
}

// What an ".lz4" unpacks to is what it takes: its own head tells, not the type.
TEST_F(PrecalcLoader, PackedBlocksAreCountedAsTheyUnpack) {
    WriteLz4(First(".lz4"), Rooks());
    EXPECT_EQ(ReadUnpackedSize(First(".lz4")), Rooks().size());
    ASSERT_TRUE(LoadRook());
    EXPECT_EQ(m_room.m_nReserved, Rooks().size());
}

// A head is believed if the type has tables of that size: else it would throw out other data for nothing.
TEST_F(PrecalcLoader, NoRoomIsMadeForASizeThatNoTableHas) {
    for (const bool bSimple : {false, true}) {
        const fs::path file = First(bSimple ? ".packed.lz4" : ".lz4");
        bSimple ? WriteSimple(file, Rooks()) : WriteLz4(file, Rooks());
        TElements bytes = ReadWholeFile(file).value();
        bytes[7] = 16; // 256 MB
        WriteElements(file, bytes);
        ExpectRefusal(kImproper, file);
        EXPECT_LT(m_room.m_nMostAsked, 2 * Rooks().size());
        fs::remove(file);
    }
}

TEST_F(PrecalcLoader, DamagedHeadsOfPackedTablesAreToldOf) {
    const fs::path file = First(".packed.lzw");
    WriteLzw(file, Rooks());
    const TElements good = ReadWholeFile(file).value();
    constexpr std::size_t kBlockElementsAt = 17, kSecondOffsetAt = kPackedTableHeaderBytes + kBlockOffsetBytes;
    for (const std::size_t at : {kBlockElementsAt, kSecondOffsetAt, kSecondOffsetAt + 5}) {
        TElements bytes = good;
        bytes[at] = static_cast<std::uint8_t>(bytes[at] ^ 0x1F);
        WriteElements(file, bytes);
        if (at == kSecondOffsetAt) { // the first two blocks change places
            std::copy_n(good.begin() + kSecondOffsetAt - 8, 8, bytes.begin() + kSecondOffsetAt);
            std::copy_n(good.begin() + kSecondOffsetAt, 8, bytes.begin() + kSecondOffsetAt - 8);
            WriteElements(file, bytes);
        }
        ExpectRefusal(kDamaged, file);
        m_options.m_nUseDataPackedForRandomAccess = 1;
        ExpectRefusal(kDamaged, file);
        m_options.m_nUseDataPackedForRandomAccess = 2;
    }
    WriteElements(file, good);
    m_room.m_bRoom = false;
    m_boxes.m_told.clear();
    EXPECT_FALSE(LoadRook());
    EXPECT_EQ(m_boxes.m_told, std::vector<std::string>{}) << "there is only no room";
}

// The size of a file that cannot be opened may be the right one.
TEST_F(PrecalcLoader, OfAFileThatCannotBeOpenedNoSizeIsTold) {
#if defined(__SANITIZE_ADDRESS__)
    GTEST_SKIP() << "the checks of the sanitizer open files themselves; the release build runs this";
#endif
    const std::pair<const char*, void (*)(const fs::path&, const TElements&)> forms[] = {
        {"", WriteElements}, {".lz4", WriteLz4}, {".packed.lzw", WriteLzw}, {".packed.lz4", WriteSimple}};
    for (const auto& [extension, write] : forms) {
        write(First(extension), Rooks());
        {
            const CLoweredLimit none(RLIMIT_NOFILE, 0);
            ExpectRefusal(kDamaged, First(extension));
        }
        EXPECT_TRUE(LoadRook()) << extension;
        fs::remove(First(extension));
    }
}

// Both forms of ".packed.lz4" are known by their marks: what has neither is no archive.
TEST_F(PrecalcLoader, AFileThatIsNeitherSimpleNorAnArchiveIsToldOf) {
    const fs::path file = First(".packed.lz4");
    WriteElements(First(""), Rooks());
    PackTableFile(First(""), ETableForm::Archive, file, 1);
    fs::remove(First(""));
    EXPECT_FALSE(LoadRook());
    EXPECT_EQ(m_boxes.m_told, std::vector<std::string>{}) << "an archive";
    TElements archive = ReadWholeFile(file).value();
    archive.pop_back();
    WriteSimple(file, Rooks());
    const TElements simple = ReadWholeFile(file).value();
    TElements otherMagic = simple;
    otherMagic[0] = 'M';
    for (const TElements& wrong : {archive, otherMagic, TElements(simple.begin(), simple.begin() + 15), TElements{}}) {
        WriteElements(file, wrong);
        EXPECT_EQ(FormOf(file), ETableForm::Unknown);
        ExpectRefusal(kImproper, file);
    }
}

// The machine may have less memory than the quota.
TEST_F(PrecalcLoader, WhereAllocationsFailTheDiskIsRead) {
    constexpr std::size_t kScarce = 9'000; // more than the buffer of a stream, less than a table
    const auto loadScarcely = [&](bool bAllowDisk = true) {
        const test::CFailingAllocations failing(0, kScarce);
        return LoadRook({.m_bAllowDisk = bAllowDisk});
    };
    WriteLz4(First(".lz4"), Rooks());
    EXPECT_FALSE(loadScarcely()) << "it has to be unpacked";
    EXPECT_TRUE(m_room.m_bMemoryShort);
    EXPECT_EQ(m_room.m_nReserved, 0u);
    EXPECT_EQ(m_boxes.m_told, std::vector<std::string>{}) << "nothing is wrong with it";
    WriteElements(First(""), Rooks());
    ASSERT_TRUE(loadScarcely());
    EXPECT_TRUE(m_data->diskStream.is_open());
    EXPECT_EQ(m_data->loadedFrom, First(""));
    EXPECT_EQ(m_room.m_nReserved, 0u);
    ExpectRookAnswers();
    EXPECT_FALSE(loadScarcely(false));
    EXPECT_TRUE(m_room.m_bMemoryShort);
    ASSERT_TRUE(LoadRook({.m_bAllowDisk = false}));

    fs::remove(First(""));
    fs::remove(First(".lz4"));
    TElements elements = Rooks(); // that do not pack as well
    std::mt19937_64 rng(99);
    std::ranges::generate(elements, [&rng] { return static_cast<std::uint8_t>(rng() % 13); });
    elements[0] = 0; // the flags
    WriteLzw(First(".packed.lzw"), elements);
    ASSERT_GT(fs::file_size(First(".packed.lzw")), kScarce);
    ASSERT_TRUE(loadScarcely());
    EXPECT_TRUE(m_data->packed->IsStreaming());
    EXPECT_EQ(m_data->IsMateByIndex(40'000), HalfMovesOfByte(elements[40'000]));
    EXPECT_FALSE(loadScarcely(false));
    EXPECT_TRUE(m_room.m_bMemoryShort);
}

// The names that the other kinds then have are those of no file, whatever lies beside it.
TEST_F(PrecalcLoader, OfAChosenFileNoOtherKindIsLookedAt) {
    const auto chosen = [&](const char* extension) {
        return m_home.Path() / ("Mine/rook.precalc" + std::string(extension));
    };
    WriteElements(First(""), Marked(1));
    WriteElements(chosen(""), Marked(2));
    WriteLz4(chosen(".lz4"), Marked(3));
    WriteLzw(chosen(".packed.lzw"), Marked(4));
    WriteSimple(chosen(".packed.lz4"), Marked(5));
    EXPECT_EQ(LoadedMark(chosen("")), 2);
    EXPECT_EQ(LoadedMark(chosen(".lz4")), 3);
    EXPECT_EQ(LoadedMark(chosen(".packed.lzw")), 4);
    EXPECT_EQ(LoadedMark(chosen(".packed.lz4")), 5);
    EXPECT_EQ(m_data->loadedFrom, chosen(".packed.lz4"));
    for (const char* const missing : {"", ".lz4", ".packed.lzw", ".packed.lz4"}) {
        fs::rename(chosen(missing), chosen(".away"));
        EXPECT_EQ(LoadedMark(chosen(missing)), -1) << missing;
        fs::rename(chosen(".away"), chosen(missing));
    }
    EXPECT_EQ(LoadedMark(), 1);
}

// Of a table that stops after its first level, and has no element that a finished one could not have.
TEST_F(PrecalcLoader, TablesInTheMakingTellOfNoMissingMateInAnyForm) {
    const TPositionIndexing indexing("R");
    const TChessboard mate = ThreeMenBoard("R", 41, 7, 56), far = ThreeMenBoard("R", 0, 9, 36),
                      black = ThreeMenBoard("R", 0, 9, 37), none = ThreeMenBoard("R", 0, 63, 63 - 8);
    TElements elements = Rooks();
    for (std::uint8_t& element : elements)
        element = element > 1 ? kFirstUnsettledByte : element;
    elements[indexing.GetIndex(black)] = 128 + 3;
    ASSERT_EQ(elements[indexing.GetIndex(mate)], 1);
    ASSERT_EQ(elements[indexing.GetIndex(none)], 0);
    const auto expectSilence = [&](const char* form, bool bKnown) {
        for (const bool bMemory : {true, false}) {
            m_room.m_nQuota = bMemory ? 64 * kMegabyte : elements.size() + 1;
            ASSERT_TRUE(LoadRook()) << form;
            EXPECT_EQ(m_data->ProvedHalfMoves(mate), 1) << form;
            EXPECT_EQ(m_data->ProvedHalfMoves(far), kUnknownHalfMoves) << form;
            EXPECT_EQ(m_data->ProvedHalfMoves(black), kUnknownHalfMoves) << form;
            if (bKnown) {
                EXPECT_EQ(m_data->ProvedHalfMoves(none), kUnknownHalfMoves) << form;
            }
        }
    };
    for (const char* const mark : {"", ".iter", ".SAVE_PENDING"}) {
        const std::string markFile = First("").string() + mark;
        const bool bMarked = *mark != '\0';
        if (bMarked)
            WriteElements(markFile, {1, 0, 0, 0});
        WriteElements(First(""), elements);
        expectSilence("plain", bMarked);
        fs::remove(First(""));
        WriteLz4(First(".lz4"), elements);
        expectSilence("lz4", bMarked);
        fs::remove(First(".lz4"));
        WriteLzw(Second(".packed.lzw"), elements);
        expectSilence("lzw of the other root", bMarked);
        m_options.m_nUseDataPackedForRandomAccess = 1;
        expectSilence("lzw, unpacked", bMarked);
        m_options.m_nUseDataPackedForRandomAccess = 2;
        fs::remove(Second(".packed.lzw"));
        elements[indexing.GetIndex(black)] = kFirstUnsettledByte; // simple packing has no marks
        WriteSimple(First(".packed.lz4"), elements);
        expectSilence("simple", bMarked);
        elements[indexing.GetIndex(black)] = 128 + 3;
        fs::remove(First(".packed.lz4"));
        if (bMarked)
            fs::remove(markFile);
    }
}

// Lengths from 127 on are believed of a table that has all the shorter ones.
TEST_F(PrecalcLoader, LongLengthsAreThoseOfTablesLookedThrough) {
    const TPositionIndexing indexing("R");
    const TChessboard far = ThreeMenBoard("R", 0, 9, 36);
    TElements elements(Rooks().size(), 0);
    for (std::size_t i = 1; i < 200; ++i)
        elements[elements.size() - i] = static_cast<std::uint8_t>(i);
    elements[indexing.GetIndex(far)] = 199;
    WriteElements(First(""), elements);
    ASSERT_TRUE(LoadRook());
    EXPECT_EQ(m_data->ProvedHalfMoves(far), 2 * 199 - 1);
    m_room.m_nQuota = elements.size() + 1;
    ASSERT_TRUE(LoadRook());
    EXPECT_TRUE(m_data->diskStream.is_open());
    EXPECT_EQ(m_data->ProvedHalfMoves(far), kUnknownHalfMoves);
    m_room.m_nQuota = 64 * kMegabyte;
    *std::find(elements.begin(), elements.end(), 100) = 0;
    WriteElements(First(""), elements);
    ASSERT_TRUE(LoadRook());
    EXPECT_EQ(m_data->ProvedHalfMoves(far), kUnknownHalfMoves);
    EXPECT_EQ(m_boxes.m_told.size(), 1u);
}

TEST(ProvedHalfMoves, WordsOfATableInTheMakingAreNone) {
    TGlobalRegister data("QQrr");
    data.bBitData = false;
    data.nElementSize = 2;
    const TChessboard b = [&] {
        TChessboard position = EmptyChessboard();
        std::uint64_t index = 1;
        while (!data.GetPositionByIndex(index, position))
            ++index;
        return position;
    }();
    const std::uint64_t index = data.GetIndex(b);
    ASSERT_LT(index, 10'000'000u);
    data.data.resize(2 * index + 2);
    const auto proved = [&](std::uint16_t element) {
        data.SetMateByIndex(index, element);
        return data.ProvedHalfMoves(b);
    };
    EXPECT_EQ(proved(300), 599);
    EXPECT_EQ(proved(32766), 65531);
    for (const std::uint16_t unsettled : {std::uint16_t{32767}, std::uint16_t{32768}, std::uint16_t{32769}})
        EXPECT_EQ(proved(unsettled), kUnknownHalfMoves) << unsettled;
}

TEST_F(PrecalcLoader, SavingWhatWasUnpackedIsAsked) {
    WriteLzw(First(".packed.lzw"), Rooks());
    m_options.m_nUseDataPackedForRandomAccess = 1;
    m_options.m_bAskIfSaveAfterDecompressAllToMem = true;
    ASSERT_TRUE(LoadRook());
    EXPECT_EQ(m_boxes.m_asked,
              std::vector<std::string>{"Save full decompressed data file " + First("").string() + "?"});
    EXPECT_FALSE(fs::exists(First("")));
    m_boxes.m_asked.clear();
    m_boxes.m_answers = {true};
    ASSERT_TRUE(LoadRook());
    EXPECT_EQ(m_boxes.m_told, std::vector<std::string>{"Information: File saved."});
    EXPECT_EQ(ReadWholeFile(First("")), Rooks());

    fs::remove(First(""));
    fs::create_directory(First(""));
    m_boxes = CHeardBoxes();
    m_boxes.m_answers = {true};
    EXPECT_TRUE(LoadRook()) << "they are in memory all the same";
    EXPECT_EQ(m_boxes.m_told, std::vector<std::string>{"Error: Error saving file " + First("").string()});
    EXPECT_EQ(m_data->loadedFrom, First(".packed.lzw"));
}

TEST_F(PrecalcLoader, PackedTablesThatDoNotFitMayStayPacked) {
    WriteLzw(First(".packed.lzw"), Rooks());
    m_options.m_nUseDataPackedForRandomAccess = 0;
    m_options.m_bGlobalRegisterForceDiskAccess = true;
    class CPoorRoom : public IPrecalcRoom {
      public:
        [[nodiscard]] std::uint64_t Quota() const override { return 64 * kMegabyte; }
        [[nodiscard]] bool MakeRoom(TPositionType, std::uint64_t size) override { return size < 1000; }
        [[nodiscard]] bool IsGenerating() const override { return false; }
        [[nodiscard]] bool MayStayPacked(INotifier& notifier) override {
            return notifier.AskYesNo(kStayPackedQuestion, "");
        }
    } poor;
    TGlobalRegister refused("R"), allowed("R");
    EXPECT_FALSE(Load(refused, m_options, poor, m_boxes));
    EXPECT_EQ(m_boxes.m_asked,
              std::vector<std::string>{"Not enough memory to load all the data unpacked.\n\nLet program use some data "
                                       "from disk and decompress?"});
    m_boxes.m_answers = {false, true};
    EXPECT_TRUE(Load(allowed, m_options, poor, m_boxes));
    EXPECT_TRUE(allowed.packed->IsStreaming());
}

// Elements of bit data and of their details: files with holes, of the smallest type that has them.
class BitData : public PrecalcLoader {
  protected:
    static constexpr std::uint64_t kSize = 32 * 64 * 48ull * 48 * 48;

    void Write(std::uint64_t nPairs, std::uint64_t nDetails) {
        fs::create_directories(Name("").parent_path());
        std::ofstream(Name("")) << '\1';
        std::ofstream(Name(".details")) << '\1';
        fs::resize_file(Name(""), nPairs);
        fs::resize_file(Name(".details"), nDetails);
    }
    void Set(const char* extension, std::uint64_t at, char byte) {
        std::fstream file(Name(extension), std::ios::binary | std::ios::in | std::ios::out);
        file.seekp(static_cast<std::streamoff>(at));
        file.put(byte);
    }
    fs::path Name(const char* extension) const {
        return m_home.Path() / ("Precalc/PPp_.precalc" + std::string(extension));
    }
    bool LoadPawns() {
        m_data = std::make_unique<TGlobalRegister>("PPp");
        return Load(*m_data, m_options, m_room, m_boxes);
    }
};

TEST_F(BitData, LengthsComeFromTheDetails) {
    m_room.m_nQuota = 1024 * kMegabyte;
    m_options.m_folders.m_secondRoot.clear();
    TChessboard mate = EmptyChessboard(), none = EmptyChessboard(), unknown = EmptyChessboard();
    const TPositionIndexing indexing("PPp");
    const auto place = [&](TChessboard& b, std::uint64_t index) {
        while (!indexing.GetPositionByIndex(index, b))
            ++index;
        return indexing.GetIndex(b);
    };
    const std::uint64_t a = place(mate, 100'000'001), c = place(none, 100'100'000), d = place(unknown, 226'000'002);
    Write(kSize / 4, kSize);
    Set("", a / 4, static_cast<char>(1 << (2 * (a % 4))));
    Set(".details", a, 17);
    Set("", d / 4, static_cast<char>(3 << (2 * (d % 4))));
    ASSERT_TRUE(LoadPawns());
    EXPECT_TRUE(m_data->bBitData);
    EXPECT_EQ(m_data->GetMemoryInUse(), kSize / 4);
    EXPECT_EQ(m_data->IsMateByIndex(a), 1);
    EXPECT_EQ(m_data->IsMateByIndex(c), 0);
    EXPECT_EQ(m_data->IsMateByIndex(d), 3);
    EXPECT_EQ(m_data->ProvedHalfMoves(mate), 33);
    EXPECT_EQ(m_data->ProvedHalfMoves(none), 0);
    EXPECT_EQ(m_data->ProvedHalfMoves(unknown), kUnknownHalfMoves) << "a mate without a length";

    std::ofstream(Name(".iter")) << "1234";
    ASSERT_TRUE(LoadPawns());
    EXPECT_EQ(m_data->ProvedHalfMoves(mate), 33);
    EXPECT_EQ(m_data->ProvedHalfMoves(none), kUnknownHalfMoves) << "the levels are not all there";
    fs::remove(Name(".iter"));

    std::ofstream(Name(".details.SAVE_PENDING")) << "";
    Set(".details", a, 127);
    ASSERT_TRUE(LoadPawns());
    EXPECT_EQ(m_data->ProvedHalfMoves(mate), kUnknownHalfMoves) << "not settled";
    EXPECT_EQ(m_data->ProvedHalfMoves(none), kUnknownHalfMoves);
    Set(".details", a, 17);
    fs::remove(Name(".details.SAVE_PENDING"));

    m_room.m_bRoom = false;
    ASSERT_TRUE(LoadPawns());
    EXPECT_EQ(m_data->GetMemoryInUse(), 0u);
    EXPECT_EQ(m_data->ProvedHalfMoves(mate), 33) << "from the details alone";
    EXPECT_EQ(m_data->ProvedHalfMoves(none), 0);
    m_room.m_bRoom = true;

    for (const std::uint64_t nBytes : {kSize - 1, kSize + 1, std::uint64_t{0}}) {
        fs::resize_file(Name(".details"), nBytes);
        EXPECT_FALSE(LoadPawns());
        EXPECT_EQ(m_boxes.m_told,
                  std::vector<std::string>{"Warning: " + FileSizeWarning(Name(".details"), nBytes, kSize)});
        m_boxes.m_told.clear();
    }
    fs::remove(Name(".details"));
    EXPECT_FALSE(LoadPawns());
    EXPECT_EQ(m_boxes.m_told, std::vector<std::string>{"Warning: " + UnreadableWarning(Name(".details"))});
}

/// Where there is no room for the data nothing is told, unless their details are missing.
TEST_F(BitData, OfAChosenFileTheDetailsLieBesideIt) {
    m_room.m_nQuota = 1024 * kMegabyte;
    m_room.m_bRoom = false;
    Write(kSize / 4, kSize);
    TElements begin(kBlockHeaderBytes, 0); // of a packed block that unpacks to as much
    std::copy_n("LZ4 ", 4, begin.begin());
    for (std::size_t i = 0; i < 4; ++i)
        begin[4 + i] = static_cast<std::uint8_t>(kSize / 4 >> (8 * i));
    begin.insert(begin.end(), {0x10, kFlagPawnRanks48});
    WriteElements(Name(".lz4"), begin);
    for (const bool bDetails : {true, false}) {
        TGlobalRegister pawns("PPp");
        pawns.path = Name(".lz4");
        EXPECT_FALSE(Load(pawns, m_options, m_room, m_boxes));
        EXPECT_EQ(m_boxes.m_told.empty(), bDetails);
        fs::remove(Name(".details"));
    }
    EXPECT_EQ(m_boxes.m_told, std::vector<std::string>{"Warning: " + UnreadableWarning(Name(".details"))});
}

} // namespace
} // namespace quillon
