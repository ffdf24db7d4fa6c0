#include "platform/qt/RecordSort.h"

#include "platform/qt/Text.h"

#include <QCollator>
#include <QLocale>

#include <algorithm>
#include <memory>
#include <numeric>
#include <optional>
#include <utility>

namespace platform::qt {

namespace {

using Rows = std::vector<std::size_t>;

QCollator personsCollator()
{
    // The "C" locale compares code points and knows neither case nor numbers.
    const QLocale locale = QLocale().language() == QLocale::C ? QLocale(QLocale::English) : QLocale();
    QCollator collator(locale);
    collator.setNumericMode(true);
    collator.setCaseSensitivity(Qt::CaseInsensitive);
    return collator;
}

/// What one key's texts are ordered by, made when it is asked for: the later keys of rows seldom are.
class SortKeys {
public:
    SortKeys(const std::vector<Record>& content, const std::string& key)
        : content_(content), key_(key), made_(content.size())
    {}

    const QCollatorSortKey& of(std::size_t row)
    {
        if (!made_[row])
            made_[row] = collator_.sortKey(toQt(content_[row].text(key_)));
        return *made_[row];
    }

private:
    const std::vector<Record>& content_;
    const std::string& key_;
    QCollator collator_ = personsCollator();
    std::vector<std::optional<QCollatorSortKey>> made_;
};

/// What somebody types for a letter that has its accent built in.
QString withoutStroke(QChar letter)
{
    switch (letter.unicode()) {
    case u'\u00e6': return QStringLiteral("ae");
    case u'\u00f0':
    case u'\u0111': return QStringLiteral("d");
    case u'\u00f8': return QStringLiteral("o");
    case u'\u0127': return QStringLiteral("h");
    case u'\u0131': return QStringLiteral("i");
    case u'\u0142': return QStringLiteral("l");
    case u'\u0153': return QStringLiteral("oe");
    case u'\u00df': return QStringLiteral("ss");
    default: return letter;
    }
}

/// The folded texts of the content a filter last saw, so that a keystroke does not fold them all again.
class FoldedTexts {
public:
    explicit FoldedTexts(std::vector<std::string> keys) : keys_(std::move(keys)) {}

    const std::vector<std::vector<QString>>& of(const ArrayController& controller)
    {
        if (std::exchange(revision_, controller.contentRevision()) != controller.contentRevision()) {
            texts_.clear();
            for (const Record& record : controller.content())
                texts_.push_back(fold(record));
        }
        return texts_;
    }

private:
    std::vector<QString> fold(const Record& record) const
    {
        std::vector<QString> folded;
        for (const std::string& key : keys_)
            folded.push_back(foldedForSearch(toQt(record.text(key))));
        return folded;
    }

    std::vector<std::string> keys_;
    std::uint64_t revision_ = 0;
    std::vector<std::vector<QString>> texts_;
};

} // namespace

ArrayController::Arrangement sortedBy(std::vector<std::string> keys, Qt::SortOrder order)
{
    return [keys = std::move(keys), order](const ArrayController& controller) {
        std::vector<SortKeys> sortKeys;
        for (const std::string& key : keys)
            sortKeys.emplace_back(controller.content(), key);
        Rows rows(controller.content().size());
        std::iota(rows.begin(), rows.end(), std::size_t{0});
        std::stable_sort(rows.begin(), rows.end(), [&](std::size_t a, std::size_t b) {
            for (std::size_t k = 0; k < keys.size(); ++k) {
                const int comparison = sortKeys[k].of(a).compare(sortKeys[k].of(b));
                if (comparison != 0)
                    return (comparison < 0) == (k > 0 || order == Qt::AscendingOrder);
            }
            return false;
        });
        return rows;
    };
}

ArrayController::Arrangement matchingAny(std::vector<std::string> keys)
{
    const auto cache = std::make_shared<FoldedTexts>(std::move(keys));
    return [cache](const ArrayController& controller) {
        Rows rows(controller.content().size());
        std::iota(rows.begin(), rows.end(), std::size_t{0});
        if (controller.filterText.get().empty() || rows.empty())
            return rows;
        const QString needle = foldedForSearch(toQt(controller.filterText.get()));
        const auto& texts = cache->of(controller);
        const auto misses = [&](std::size_t row) {
            const auto holds = [&](const QString& text) { return text.contains(needle); };
            return std::none_of(texts[row].begin(), texts[row].end(), holds);
        };
        rows.erase(std::remove_if(rows.begin() + 1, rows.end(), misses), rows.end());
        return rows;
    };
}

QString foldedForSearch(const QString& text)
{
    const bool plain = std::all_of(text.begin(), text.end(), [](QChar c) { return c.unicode() < 0x80; });
    if (plain)
        return text.toLower();
    const QString decomposed = text.normalized(QString::NormalizationForm_KD);
    QString folded;
    folded.reserve(decomposed.size());
    for (const QChar c : decomposed.toCaseFolded()) {
        if (!c.isMark())
            folded += withoutStroke(c);
    }
    return folded;
}

} // namespace platform::qt
