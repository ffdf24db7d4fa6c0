#pragma once
// Printing and saving with the desktop's own dialogs.

#include "platform/Effects.h"

namespace platform::qt {

class CompletionGate;

/// A dialog keeps the gate closed while it is open.
class DesktopPrinting final : public Printing {
public:
    explicit DesktopPrinting(CompletionGate& gate) : gate_(gate) {}

    bool print(const PrintedTable& table) override;
    std::string pdf(const PrintedTable& table) override;
    /// Proposes the user's folder of documents.
    std::optional<std::filesystem::path> whereToSave(const std::string& proposedName) override;

private:
    CompletionGate& gate_;
};

} // namespace platform::qt
