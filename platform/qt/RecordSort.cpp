#include "platform/qt/RecordSort.h"

#include "platform/qt/Text.h"

#include <QCollator>
#include <QLocale>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <functional>
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

std::vector<QString> foldedTexts(const Record& record, const std::vector<std::string>& keys)
{
    std::vector<QString> folded;
    for (const std::string& key : keys)
        folded.push_back(foldedForSearch(toQt(record.text(key))));
    return folded;
}

bool holds(const std::vector<QString>& texts, const QString& word)
{
    return std::ranges::any_of(texts, [&](const QString& text) { return text.contains(word); });
}

/// What was made of the content when it was last looked at, so that a keystroke does not make it all again.
template <typename T>
class MadeOfContent {
public:
    template <typename Make>
    const T& of(const ArrayController& controller, const Make& make)
    {
        if (std::exchange(revision_, controller.contentRevision()) != controller.contentRevision() || !made_)
            made_ = make(controller.content());
        return *made_;
    }

private:
    std::uint64_t revision_ = 0;
    std::optional<T> made_;
};

Rows sorted(const std::vector<Record>& content, const std::vector<std::string>& keys, Qt::SortOrder order)
{
    std::vector<SortKeys> sortKeys;
    for (const std::string& key : keys)
        sortKeys.emplace_back(content, key);
    Rows rows(content.size());
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
}

} // namespace

ArrayController::Arrangement sortedBy(std::vector<std::string> keys, Qt::SortOrder order)
{
    const auto cache = std::make_shared<MadeOfContent<Rows>>();
    return [cache, keys = std::move(keys), order](const ArrayController& controller) {
        return cache->of(controller, [&](const auto& content) { return sorted(content, keys, order); });
    };
}

ArrayController::Arrangement searching(Search search)
{
    using Texts = std::vector<std::vector<QString>>;
    const auto cache = std::make_shared<MadeOfContent<Texts>>();
    return [cache, search = std::move(search)](const ArrayController& controller) {
        const std::vector<Record>& content = controller.content();
        Rows rows;
        if (search.order) {
            rows = search.order(controller);
        } else {
            rows.resize(content.size());
            std::iota(rows.begin(), rows.end(), std::size_t{0});
        }
        const QStringList words = searchWords(controller.filterText.get());
        if (words.isEmpty())
            return rows;
        const Texts& texts = cache->of(controller, [&](const auto& records) {
            Texts folded;
            for (const Record& record : records)
                folded.push_back(foldedTexts(record, search.keys));
            return folded;
        });
        std::vector<std::function<bool(const Record&)>> others;
        for (const QString& word : words)
            others.push_back(search.findsToo ? search.findsToo(word) : nullptr);
        const auto isFound = [&](std::size_t row) {
            for (std::size_t i = 0; i < others.size(); ++i) {
                if (!holds(texts[row], words[static_cast<qsizetype>(i)]) && !(others[i] && others[i](content[row])))
                    return false;
            }
            return true;
        };
        const auto isLeftOut = [&](std::size_t row) {
            return !isFound(row) && !(search.stays && search.stays(controller, row));
        };
        std::erase_if(rows, isLeftOut);
        return rows;
    };
}

QStringList searchWords(const std::string& filterText)
{
    return foldedForSearch(toQt(filterText)).simplified().split(QLatin1Char(' '), Qt::SkipEmptyParts);
}

bool holdsWords(const Record& record, const std::vector<std::string>& keys, const QStringList& words)
{
    const auto texts = foldedTexts(record, keys);
    return std::all_of(words.begin(), words.end(), [&](const QString& word) { return holds(texts, word); });
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
