// Blocks of packed tables: any bytes are decoded or refused, with either dictionary and element, and what was decoded
// from the plain dictionary can be packed and decoded again.

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

#include "fuzz_check.h"
#include "globalregister/packed/lzw_coder.h"
#include "globalregister/packed/lzw_decoder.h"

namespace quillon {

namespace {

constexpr std::size_t kBlockElements = 8192;

template <class T> void CheckBlock(CLzwDecoder<T>& decoder, bool bPlain, std::span<const std::uint8_t> block) {
    std::size_t nDecoded = 0;
    for (const std::size_t nElements : {kBlockElements, kBlockElements / 3, std::size_t{20}, std::size_t{1}}) {
        const std::size_t nMore = decoder.Decode(block, nElements);
        Require(nMore == 0 || (nMore >= nElements && nMore < nElements + kMaxLzwString), "as much as was asked for");
        if (nDecoded == 0)
            nDecoded = nMore == 0 ? 0 : nElements;
        else
            Require(nMore != 0, "the head of what can be decoded can be decoded");
    }
    if (nDecoded == 0 || !bPlain)
        return;
    Require(decoder.Decode(block, nDecoded) != 0, "twice the same");
    const std::vector<T> elements(decoder.Elements(), decoder.Elements() + nDecoded);
    std::vector<std::uint8_t> packed;
    CLzwCoder<T> coder(kBlockElements);
    Require(coder.Code(elements, packed), "what comes from the dictionary is in it");
    const std::size_t size = packed.size();
    packed.resize(size + kLzwReadAhead);
    Require(decoder.Decode(std::span(packed).first(size), nDecoded) == nDecoded, "what is packed can be decoded");
    Require(std::equal(elements.begin(), elements.end(), decoder.Elements()), "and is the same");
}

template <class T> void CheckBoth(std::span<const std::uint8_t> block) {
    static CLzwDecoder<T> plain(kBlockElements, true), rich(kBlockElements, false);
    CheckBlock(plain, true, block);
    CheckBlock(rich, false, block);
}

} // namespace

} // namespace quillon

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace quillon;
    std::vector<std::uint8_t> block(data, data + size);
    block.resize(size + kLzwReadAhead); // and not a byte more
    CheckBoth<std::uint8_t>(std::span(block).first(size));
    CheckBoth<std::uint16_t>(std::span(block).first(size));
    return 0;
}
