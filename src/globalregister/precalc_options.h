#pragma once
// How precalculated data are found and loaded; the settings of the same names.

#include "globalregister/precalc_file_name.h"

namespace quillon {

struct TPrecalcOptions {
    TPrecalcFolders m_folders;
    int m_nUseDataPackedForRandomAccess = 2;      // 0, 1: packed tables are unpacked; 2: used as they are
    bool m_bGlobalRegisterForceDiskAccess = true; // packed tables and those on disk before whole ones
    int m_nAskForGlobalRegisterRecompression = 0; // 1 simple, 2 and LZW, 3 and LZ4e is offered
    bool m_bAskIfSaveAfterDecompressAllToMem = false;
    int m_nProcessors = 1; // that packing may use
};

} // namespace quillon
