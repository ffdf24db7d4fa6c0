#pragma once
// Steps that edit a mapping as a whole, look at what differs and keep it.

#include <QString>

namespace tour {

class Tour;

/// The synthesizer that was saved just now, beside its original backup.
QString compare(Tour& tour);
QString chartAsPdf(Tour& tour);
/// These work on the echo that the first of them finds.
QString filterPlugins(Tour& tour);
QString contextMenu(Tour& tour);
QString insertPot(Tour& tour);
QString fill(Tour& tour);
/// Its last page into a reverb.
QString pastePage(Tour& tour);
/// And leaves that for another plug-in and comes back.
QString leaveDraft(Tour& tour);

} // namespace tour
