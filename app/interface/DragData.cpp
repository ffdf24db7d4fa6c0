#include "app/interface/DragData.h"

#include "mapping/ParameterOrder.h"

#include <QByteArray>
#include <QDataStream>
#include <QIODevice>
#include <QMimeData>
#include <QRandomGenerator>
#include <QString>

namespace interface {

namespace {

bool isWhole(const DragData& drag)
{
    const bool isPot = drag.pot >= 1 && drag.pot <= mapping::kPotsPerPage;
    switch (drag.kind) {
    case DragData::Kind::parameters: return drag.parameters >= 0;
    case DragData::Kind::pot: return isPot && drag.page >= 1;
    case DragData::Kind::page: return drag.page >= 1;
    default: return false;
    }
}

/// Another number in every running program: what was dragged in another one is of another mapping.
quint64 ownNumber()
{
    static const quint64 number = QRandomGenerator::global()->generate64();
    return number;
}

} // namespace

DragData DragData::of(const QMimeData& mime, quint64 state)
{
    for (const Kind kind : {Kind::parameters, Kind::pot, Kind::page}) {
        DragData drag{.kind = kind};
        const QByteArray content = mime.data(QString::fromLatin1(drag.type()));
        QDataStream in(content);
        quint64 number = 0;
        in >> number >> drag.state >> drag.parameters >> drag.page >> drag.pot;
        if (in.status() == QDataStream::Ok && number == ownNumber() && drag.state == state && isWhole(drag))
            return drag;
    }
    return {};
}

const char* DragData::type() const
{
    switch (kind) {
    case Kind::parameters: return kParameterDrag;
    case Kind::pot: return kPotDrag;
    default: return kPageDrag;
    }
}

QByteArray DragData::content() const
{
    QByteArray content;
    QDataStream out(&content, QIODevice::WriteOnly);
    out << ownNumber() << state << parameters << page << pot;
    return content;
}

QMimeData* DragData::toMime() const
{
    auto* mime = new QMimeData;
    mime->setData(QString::fromLatin1(type()), content());
    return mime;
}

} // namespace interface
