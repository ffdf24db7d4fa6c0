#pragma once
// What is dragged within the main window. It knows the state of the edit it was taken from, so that nobody drops what
// has become another thing meanwhile.

#include <QtGlobal>

#include <functional>

class QByteArray;
class QMimeData;

namespace interface {

inline constexpr char kParameterDrag[] = "application/x-kv-parameter";
inline constexpr char kPotDrag[] = "application/x-kv-pot";
inline constexpr char kPageDrag[] = "application/x-kv-page";

/// Another number for every state of mapping and parameter list.
using EditState = std::function<quint64()>;

struct DragData {
    enum class Kind { nothing, parameters, pot, page };

    Kind kind = Kind::nothing;
    quint64 state = 0;
    int parameters = 0; ///< how many of the selected rows are more than the blank entry
    int page = 0;       ///< the page, or that of the pot, from 1
    int pot = 0;        ///< 1 to 8

    /// What a drag holds, if it is of the state that there is; else nothing.
    static DragData of(const QMimeData& mime, quint64 state);
    /// Its MIME type, and what it holds under that.
    const char* type() const;
    QByteArray content() const;
    /// The same as an object of its own.
    QMimeData* toMime() const;
};

} // namespace interface
