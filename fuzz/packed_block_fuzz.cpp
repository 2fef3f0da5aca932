// Packed blocks: any bytes are unpacked or refused, and what they unpack to survives packing again. The same bytes are
// also taken as data to pack, in both forms.

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

#include "fuzz_check.h"
#include "globalregister/packed/packed_block.h"

namespace quillon {

namespace {

using TBytes = std::vector<std::uint8_t>;

void CheckRoundTrip(const TBytes& source) {
    TBytes packed, unpacked;
    Require(PackBlock(source, packed, 1) && UnpackBlock(packed, unpacked), "what is packed can be unpacked");
    Require(unpacked == source, "and is the same");
    Require(PackBlockLong(source, packed, 1) && UnpackBlock(packed, unpacked), "what is packed long can be unpacked");
    Require(unpacked == source, "and is the same, too");
}

// Few different bytes make many repetitions.
TBytes Coarsened(std::span<const std::uint8_t> bytes) {
    TBytes coarse;
    for (const std::uint8_t byte : bytes)
        coarse.insert(coarse.end(), 1 + byte % 7, static_cast<std::uint8_t>(byte / 64));
    return coarse;
}

} // namespace

} // namespace quillon

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace quillon;
    const TBytes input(data, data + size); // the size of the memory is that of the input
    TBytes unpacked;
    if (UnpackBlock(input, unpacked))
        CheckRoundTrip(unpacked);
    else
        Require(unpacked.empty(), "nothing comes of what is refused");
    CheckRoundTrip(input);
    CheckRoundTrip(Coarsened(input));
    return 0;
}
