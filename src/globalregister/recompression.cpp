#include "globalregister/recompression.h"

#include <cstdio>
#include <fstream>
#include <istream>
#include <new>
#include <optional>
#include <streambuf>
#include <vector>

#include "globalregister/packed/packed_block.h"
#include "globalregister/packed/packed_lz4_file.h"
#include "globalregister/packed/simple_packing.h"
#include "globalregister/precalc_read.h"

namespace quillon {

namespace {

namespace fs = std::filesystem;

constexpr std::size_t kSimpleLetters = 3;
constexpr std::size_t kFewestPackedLetters = 3;

/// Bytes in memory as a stream to read.
class CMemoryStream : private std::streambuf, public std::istream {
  public:
    explicit CMemoryStream(const std::vector<std::uint8_t>& bytes) : std::istream(this) {
        char* const first = const_cast<char*>(reinterpret_cast<const char*>(bytes.data())); // only read
        setg(first, first, first + bytes.size());
    }
};

class COffer {
  public:
    COffer(const TGlobalRegister& data, const fs::path& path, const TPrecalcOptions& options, INotifier& notifier)
        : m_data(data), m_path(path), m_options(options), m_notifier(notifier) {
        m_plain = path.string();
        m_plain.resize(m_plain.size() - Extension(KindOfFile(path)).size());
    }

    void OfferSimple() {
        const fs::path target = Target(EPrecalcKind::PackedLz4);
        if (Exists(target) || !Ask("simple"))
            return;
        const std::optional<std::vector<std::uint8_t>> simple = PackSimple(m_data.data);
        if (!simple)
            return Tell(false);
        if (!m_notifier.AskYesNo(SavingQuestion(simple->size(), m_data.GetSize()), kQuestion))
            return;
        std::vector<std::uint8_t> block;
        Tell(PackBlockLong(*simple, block, 1) && WriteWholeFile(target, block));
    }

    void OfferLzw() {
        const fs::path target = Target(EPrecalcKind::PackedLzw);
        if (Exists(target) || !Ask("LZW"))
            return;
        const auto writer = RandomAccessLZWBuffer::MakePackedWriter(m_data.nElementSize);
        const std::uint16_t flags = FlagsOf(m_data, m_data.nElementSize == 2);
        if (m_data.data.empty()) {
            std::ifstream table(m_path, std::ios::binary);
            return Tell(writer->CompressStream(target, table, m_data.GetSize(), flags) == EPackEnd::Packed);
        }
        CMemoryStream table(m_data.data);
        Tell(writer->CompressStream(target, table, m_data.GetSize(), flags) == EPackEnd::Packed);
    }

    void OfferLz4() {
        const fs::path target = Target(EPrecalcKind::PackedLz4);
        if (Exists(target) || !Ask("LZ4e"))
            return;
        std::ifstream table(m_path, std::ios::binary);
        std::ofstream log(fs::path(target) += kPackingLogExtension, std::ios::app);
        const auto write = [&log](std::string_view line) { log << line << std::flush; };
        Tell(table && SavePackedLz4(target, table, m_data.GetSize() * m_data.nElementSize,
                                    FlagsOf(m_data, m_data.nElementSize == 2), write, m_options.m_nProcessors));
    }

  private:
    static constexpr std::string_view kQuestion = "Question";

    static std::string_view Extension(EPrecalcKind kind) { return kPrecalcExtensions[static_cast<std::size_t>(kind)]; }

    [[nodiscard]] fs::path Target(EPrecalcKind kind) const { return m_plain + std::string(Extension(kind)); }

    [[nodiscard]] bool Ask(std::string_view form) {
        return m_notifier.AskYesNo("Should prepare a compressed version (" + std::string(form) +
                                       " for random access) of file " + m_path.string(),
                                   kQuestion);
    }

    void Tell(bool bDone) { m_notifier.Inform(bDone ? "Done" : "An error occurred.", bDone ? "Information" : "Error"); }

    const TGlobalRegister& m_data;
    const fs::path& m_path;
    const TPrecalcOptions& m_options;
    INotifier& m_notifier;
    std::string m_plain; // path of the plain form
};

} // namespace

std::string SavingQuestion(std::uint64_t nPackedSize, std::uint64_t nTableSize) {
    char text[80];
    std::snprintf(text, sizeof text, "Possible mem.save ratio = %0.2f%%. Continue?",
                  100.0 * static_cast<double>(nPackedSize) / static_cast<double>(nTableSize));
    return text;
}

void RecompressOffer(const TGlobalRegister& data, const fs::path& path, EPrecalcKind nKind,
                     const TPrecalcOptions& options, INotifier& notifier) {
    const int nLevel = options.m_nAskForGlobalRegisterRecompression;
    if (nLevel < 1 || data.custom || data.bBitData || data.bCompactUnfinished)
        return;
    try {
        COffer offer(data, path, options, notifier);
        const bool bInMemory = !data.diskStream.is_open();
        if (nKind != EPrecalcKind::Plain && bInMemory && data.nElementSize == 1 &&
            data.typeName.size() == kSimpleLetters)
            offer.OfferSimple();
        if (nLevel >= 2 && data.typeName.size() >= kFewestPackedLetters)
            offer.OfferLzw();
        if (nLevel >= 3 && !bInMemory)
            offer.OfferLz4();
    } catch (const std::bad_alloc&) {
        notifier.Inform("An error occurred.", "Error");
    }
}

} // namespace quillon
