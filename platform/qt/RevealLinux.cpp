#include "platform/qt/SystemEffects.h"

namespace platform::qt {

void DesktopWorkspace::revealFile(const std::filesystem::path& path)
{
    openFile(path.parent_path()); // to point at the file in it takes a service that not every desktop has
}

} // namespace platform::qt
