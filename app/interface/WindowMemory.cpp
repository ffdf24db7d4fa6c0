#include "app/interface/WindowMemory.h"

#include "app/interface/Interface.h"
#include "platform/Effects.h"

#include <QByteArray>
#include <QSplitter>

namespace interface {

namespace {

constexpr char kKey[] = "mainWindow";
const char* const kSplitters[] = {"listsSplitter", "viewsSplitter"};

} // namespace

WindowMemory::WindowMemory(platform::Preferences& preferences, const Interface& loaded)
    : preferences_(preferences), loaded_(loaded)
{
    const QByteArray stored = QByteArray::fromStdString(preferences_.text(kKey).value_or(std::string()));
    const QList<QByteArray> parts = stored.split(' ');
    before_ = state();
    if (parts.size() != 1 + std::ssize(kSplitters))
        return;
    loaded_.mainWindow()->restoreGeometry(QByteArray::fromBase64(parts[0]));
    for (qsizetype i = 0; i < std::ssize(kSplitters); ++i)
        loaded_.find<QSplitter>(kSplitters[i])->restoreState(QByteArray::fromBase64(parts[i + 1]));
    before_ = state();
}

WindowMemory::~WindowMemory()
{
    const std::string now = state();
    if (now != before_)
        preferences_.setTexts({{kKey, now}});
}

std::string WindowMemory::state() const
{
    QByteArray text = loaded_.mainWindow()->saveGeometry().toBase64();
    for (const char* name : kSplitters)
        text += ' ' + loaded_.find<QSplitter>(name)->saveState().toBase64();
    return text.toStdString();
}

} // namespace interface
