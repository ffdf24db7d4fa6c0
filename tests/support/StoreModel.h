#pragma once
// A model to test with: the entity "Note" with an attribute of each type, and "Marker" with none.

#include "tests/support/TemporaryFolder.h"

namespace test {

inline void writeStoreModel(const Path& folder)
{
    write(folder / "Model.plist", R"(<?xml version="1.0" encoding="UTF-8"?>
<plist version="1.0"><dict><key>entities</key><dict>
  <key>Note</key><dict>
    <key>title</key><string>string</string>
    <key>count</key><string>integer</string>
    <key>weight</key><string>real</string>
    <key>done</key><string>boolean</string>
    <key>picture</key><string>data</string>
  </dict>
  <key>Marker</key><dict/>
</dict></dict></plist>
)");
}

} // namespace test
