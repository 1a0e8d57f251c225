#include "wording/WordingLookup.h"

#include "text/CutText.h"
#include "wording/OwnTexts.h"
#include "wording/WordingTables.h"

#include <utility>

namespace penwick::wording {

namespace {

struct Active
{
    std::optional<QHash<QString, QString>> values;
    QString locale;
};

Active &active()
{
    static Active texts;
    return texts;
}

std::optional<QString> find(const QHash<QString, QString> &texts, const QString &key)
{
    const auto found = texts.constFind(key);
    return found == texts.cend() ? std::nullopt : std::optional(cutText(*found, kLongestShown));
}

std::optional<QString> activeOrBuiltInText(const QString &key)
{
    if (const auto &values = active().values) {
        if (auto found = find(*values, key))
            return found;
    }
    return find(fallbackTable(), key);
}

// The number of the place at this index, 0 if there is none.
std::size_t placeAt(qsizetype index, QStringView text)
{
    if (text[index] != u'%' || index + 1 == text.size())
        return 0;
    const char16_t digit = text[index + 1].unicode();
    return digit >= u'1' && digit <= u'9' ? digit - u'0' : 0;
}

} // namespace

QString text(const QString &forKey)
{
    if (const auto found = activeOrBuiltInText(forKey))
        return *found;
    return ownTexts(active().locale).value(forKey, forKey);
}

QString text(const QString &forKey, const QString &defaultText)
{
    return activeOrBuiltInText(forKey).value_or(defaultText);
}

QString text(const QString &forKey, std::initializer_list<QString> arguments)
{
    const QString unfilled = text(forKey);
    QString filled;
    for (qsizetype i = 0; i < unfilled.size(); ++i) {
        const std::size_t place = placeAt(i, unfilled);
        if (place == 0 || place > arguments.size()) {
            filled += unfilled[i];
        } else {
            filled += arguments.begin()[place - 1];
            ++i; // The digit belongs to the place.
        }
    }
    return filled;
}

QHash<QString, QString> defaultTexts(const QString &locale)
{
    QHash<QString, QString> texts = fallbackTable();
    texts.insert(ownTexts(locale));
    return texts;
}

void setActiveValues(std::optional<QHash<QString, QString>> values, const QString &locale)
{
    active() = {std::move(values), locale};
}

} // namespace penwick::wording
