#include "globalregister/global_register.h"

#include <gtest/gtest.h>
#include <string>

#include "core/chess_exception.h"

namespace quillon {
namespace {

/// What the call throws; empty: nothing.
template <class TCall> std::string FailureOf(TCall call) {
    try {
        call();
    } catch (const ChessException& failure) {
        return failure.what();
    }
    return {};
}

TEST(GlobalRegister, AnUnknownFormIsToldOf) {
    TGlobalRegister data("R");
    data.nRandomAccessKind = 9;
    EXPECT_EQ(FailureOf([&] { (void)data.IsMateByIndex(1); }),
              "Unknown random access buffer in TGlobalRegister::IsMateByIndex()");
}

TEST(GlobalRegister, PackedDataCannotBeWritten) {
    TGlobalRegister data("R");
    data.nRandomAccessKind = kPackedAccess;
    data.packed = RandomAccessLZWBuffer::MakePackedReader(1, 16384);
    EXPECT_EQ(FailureOf([&] { data.SetMateByIndex(1, 5); }),
              "Error (no mem.) in call to CRandomAccessPackedBufferBase::Update in TGlobalRegister::SetMateByIndex()");
}

} // namespace
} // namespace quillon
