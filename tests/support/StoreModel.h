#pragma once
// A model to test with, so that there is something to store: the entities "Note" and "Marker".

#include "tests/support/TemporaryFolder.h"

namespace test {

inline void writeStoreModel(const Path& folder)
{
    write(folder / "Model.plist", "<plist><dict><key>entities</key><dict><key>Note</key><dict/><key>Marker</key><dict/>"
                                  "</dict></dict></plist>");
}

} // namespace test
