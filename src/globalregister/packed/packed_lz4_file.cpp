#include "globalregister/packed/packed_lz4_file.h"

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <fstream>
#include <future>
#include <new>
#include <system_error>
#include <vector>

#include "globalregister/packed/byte_streams.h"
#include "globalregister/packed/little_endian.h"
#include "globalregister/packed/packed_block.h"

namespace quillon {

namespace {

using TBytes = std::vector<std::uint8_t>;

constexpr std::size_t kMarkAt = 28;
constexpr std::string_view kMark = "LZ4e";
constexpr std::size_t kOffsetBytes = 8;

std::uint64_t BucketsOf(std::uint64_t nElements) { return nElements / kBucketBytes + (nElements % kBucketBytes != 0); }

TBytes PackBucket(TBytes bucket) {
    TBytes body;
    PackBody(bucket, EBlockForm::Long, body);
    return body;
}

class CPackedLz4Writer {
  public:
    CPackedLz4Writer(std::ostream& file, std::istream& source, const TPackedLz4Header& header,
                     const std::function<void(std::string_view)>& log)
        : m_file(file), m_source(source), m_header(header), m_log(log) {}

    [[nodiscard]] bool Write(std::size_t nProcessors) {
        const std::uint64_t nBuckets = BucketsOf(m_header.m_nElements);
        m_offsets.assign(nBuckets, 0);
        const TBytes head(kPackedLz4HeaderBytes + kOffsetBytes * nBuckets);
        if (!WriteBytes(m_file, head.data(), head.size()))
            return false;
        m_header.m_nFileSize = head.size();
        for (std::uint64_t bucket = 0; bucket < nBuckets; bucket += nProcessors)
            if (!WriteBuckets(bucket, std::min<std::uint64_t>(nBuckets, bucket + nProcessors)))
                return false;
        m_file.seekp(0);
        return WriteHead();
    }

  private:
    [[nodiscard]] bool WriteBuckets(std::uint64_t from, std::uint64_t to) {
        std::vector<std::future<TBytes>> bodies;
        for (std::uint64_t bucket = from; bucket < to; ++bucket) {
            TBytes bytes(std::min(kBucketBytes, m_header.m_nElements - bucket * kBucketBytes));
            if (!ReadBytes(m_source, bytes.data(), bytes.size()))
                return false;
            bodies.push_back(std::async(std::launch::async, PackBucket, std::move(bytes)));
        }
        for (std::uint64_t bucket = from; bucket < to; ++bucket) {
            const TBytes body = bodies[bucket - from].get();
            m_offsets[bucket] = m_header.m_nFileSize;
            m_header.m_nFileSize += body.size();
            if (!WriteBytes(m_file, body.data(), body.size()))
                return false;
            Log(bucket, body.size());
        }
        return true;
    }

    void Log(std::uint64_t bucket, std::size_t nPacked) const {
        const std::uint64_t nAll = m_header.m_nElements;
        const std::uint64_t nBefore = bucket * kBucketBytes;
        const std::uint64_t nDone = std::min(nAll, nBefore + kBucketBytes);
        const double ratio = 100.0 * static_cast<double>(nPacked) / static_cast<double>(nDone - nBefore);
        char line[200];
        const int length = std::snprintf(
            line, sizeof line, "Compressed bucket %zd. Packed %llu of %llu (%llu%%). Compression ratio %0.1f%%\n",
            static_cast<std::ptrdiff_t>(bucket), static_cast<unsigned long long>(nDone),
            static_cast<unsigned long long>(nAll), static_cast<unsigned long long>(Percent(nDone, nAll)), ratio);
        m_log({line, static_cast<std::size_t>(length)});
    }

    static std::uint64_t Percent(std::uint64_t part, std::uint64_t all) {
        return static_cast<std::uint64_t>(100.0 * static_cast<double>(part) / static_cast<double>(all));
    }

    [[nodiscard]] bool WriteHead() {
        const TPackedLz4HeaderBytes header = EncodePackedLz4Header(m_header);
        TBytes table(m_offsets.size() * kOffsetBytes);
        for (std::size_t bucket = 0; bucket < m_offsets.size(); ++bucket)
            StoreLittleEndian(table.data() + bucket * kOffsetBytes, m_offsets[bucket]);
        return WriteBytes(m_file, header.data(), header.size()) && WriteBytes(m_file, table.data(), table.size());
    }

    std::ostream& m_file;
    std::istream& m_source;
    TPackedLz4Header m_header;
    const std::function<void(std::string_view)>& m_log;
    std::vector<std::uint64_t> m_offsets;
};

class CPackedLz4Reader {
  public:
    CPackedLz4Reader(std::istream& file, std::uint64_t nFileSize) : m_file(file), m_nFileSize(nFileSize) {}

    [[nodiscard]] bool Unpack(std::ostream& table) {
        if (!ReadHead())
            return false;
        for (std::size_t bucket = 0; bucket + 1 < m_offsets.size(); ++bucket)
            if (!UnpackBucket(bucket, table))
                return false;
        return true;
    }

  private:
    // Offsets with the end of the file behind the last one.
    [[nodiscard]] bool ReadHead() {
        TPackedLz4HeaderBytes bytes;
        if (!ReadBytes(m_file, bytes.data(), bytes.size()))
            return false;
        const std::optional<TPackedLz4Header> header = DecodePackedLz4Header(bytes);
        if (!header || header->m_nFileSize != m_nFileSize ||
            BucketsOf(header->m_nElements) > (m_nFileSize - kPackedLz4HeaderBytes) / kOffsetBytes)
            return false;
        m_nElements = header->m_nElements;
        TBytes table(BucketsOf(m_nElements) * kOffsetBytes);
        if (!ReadBytes(m_file, table.data(), table.size()))
            return false;
        for (std::size_t at = 0; at < table.size(); at += kOffsetBytes)
            m_offsets.push_back(LoadLittleEndian<std::uint64_t>(table.data() + at));
        m_offsets.push_back(m_nFileSize);
        return m_offsets.front() >= kPackedLz4HeaderBytes + table.size() && std::ranges::is_sorted(m_offsets);
    }

    [[nodiscard]] bool UnpackBucket(std::size_t bucket, std::ostream& table) {
        TBytes body(m_offsets[bucket + 1] - m_offsets[bucket]);
        m_file.seekg(static_cast<std::streamoff>(m_offsets[bucket]));
        if (!ReadBytes(m_file, body.data(), body.size()))
            return false;
        const std::uint64_t size = std::min(kBucketBytes, m_nElements - bucket * kBucketBytes);
        TBytes unpacked(size + kUnpackSlack);
        return UnpackBody(body, EBlockForm::Long, unpacked.data(), size) && WriteBytes(table, unpacked.data(), size);
    }

    std::istream& m_file;
    std::uint64_t m_nFileSize;
    std::uint64_t m_nElements = 0;
    std::vector<std::uint64_t> m_offsets;
};

} // namespace

TPackedLz4HeaderBytes EncodePackedLz4Header(const TPackedLz4Header& header) {
    TPackedLz4HeaderBytes bytes{};
    StoreLittleEndian(bytes.data(), header.m_nFileSize);
    StoreLittleEndian(bytes.data() + 8, header.m_nElements);
    StoreLittleEndian(bytes.data() + 16, header.m_nBucketBytes);
    StoreLittleEndian(bytes.data() + 24, header.m_wFlags);
    std::memcpy(bytes.data() + kMarkAt, kMark.data(), kMark.size());
    return bytes;
}

std::optional<TPackedLz4Header> DecodePackedLz4Header(const TPackedLz4HeaderBytes& bytes) {
    TPackedLz4Header header;
    header.m_nFileSize = LoadLittleEndian<std::uint64_t>(bytes.data());
    header.m_nElements = LoadLittleEndian<std::uint64_t>(bytes.data() + 8);
    header.m_nBucketBytes = LoadLittleEndian<std::uint64_t>(bytes.data() + 16);
    header.m_wFlags = LoadLittleEndian<std::uint16_t>(bytes.data() + 24);
    const bool bMark = std::memcmp(bytes.data() + kMarkAt, kMark.data(), kMark.size()) == 0;
    if (!bMark || header.m_nBucketBytes != kBucketBytes)
        return std::nullopt;
    return header;
}

std::optional<TPackedLz4Header> ReadPackedLz4Header(const std::filesystem::path& path) {
    std::ifstream file(path, std::ios::binary);
    TPackedLz4HeaderBytes bytes;
    return ReadBytes(file, bytes.data(), bytes.size()) ? DecodePackedLz4Header(bytes) : std::nullopt;
}

bool SavePackedLz4(const std::filesystem::path& path, std::istream& source, std::uint64_t nCount, std::uint16_t wFlags,
                   const std::function<void(std::string_view)>& log, int nProcessors) {
    bool bWritten = false;
    try {
        std::ofstream file(path, std::ios::binary);
        const TPackedLz4Header header{0, nCount, kBucketBytes, wFlags};
        bWritten =
            CPackedLz4Writer(file, source, header, log).Write(static_cast<std::size_t>(std::max(nProcessors, 1)));
        file.close();
        bWritten = bWritten && static_cast<bool>(file);
    } catch (const std::bad_alloc&) {
        bWritten = false;
    } catch (const std::system_error&) { // no thread
        bWritten = false;
    }
    std::error_code error;
    if (!bWritten)
        std::filesystem::remove(path, error);
    return bWritten;
}

bool UnpackPackedLz4(const std::filesystem::path& path, std::ostream& table) {
    std::error_code error;
    const std::uint64_t nFileSize = std::filesystem::file_size(path, error);
    std::ifstream file(path, std::ios::binary);
    if (error || !file)
        return false;
    return CPackedLz4Reader(file, nFileSize).Unpack(table);
}

} // namespace quillon
