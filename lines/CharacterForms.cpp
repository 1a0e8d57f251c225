#include "lines/CharacterForms.h"

#include <algorithm>
#include <memory>
#include <unicode/locid.h>
#include <unicode/translit.h>
#include <unicode/unistr.h>

namespace penwick {

namespace {

QString fromIcu(const icu::UnicodeString &units)
{
    return QString(reinterpret_cast<const QChar *>(units.getBuffer()), units.length());
}

icu::UnicodeString toIcu(const QString &units)
{
    return {reinterpret_cast<const char16_t *>(units.utf16()), static_cast<int32_t>(units.size())};
}

/// Converts piece by piece, because the transliterator's time grows with the square of the length.
/// No piece ends inside a cluster, except in one that is longer than a piece: a voicing mark
/// belongs to the character before it.
QString transliterated(const Text &text, const char *id)
{
    constexpr qint64 kPiece = 1000;
    UErrorCode status = U_ZERO_ERROR;
    const std::unique_ptr<icu::Transliterator> transliterator(
        icu::Transliterator::createInstance(id, UTRANS_FORWARD, status));
    if (transliterator == nullptr || U_FAILURE(status) != 0)
        return text.toString();
    QString result;
    for (qint64 start = 0; start < text.size();) {
        qint64 end = text.clusterBoundaryAtOrBefore(std::min(start + kPiece, text.size()));
        if (end <= start)
            end = text.pairStart(std::min(start + kPiece, text.size()));
        icu::UnicodeString piece = toIcu(text.slice(start, end - start));
        transliterator->transliterate(piece);
        result += fromIcu(piece);
        start = end;
    }
    return result;
}

} // namespace

QString withForm(const Text &text, CharacterForm form)
{
    switch (form) {
    case CharacterForm::UpperCase:
        return fromIcu(toIcu(text.toString()).toUpper(icu::Locale::getRoot()));
    case CharacterForm::LowerCase:
        return fromIcu(toIcu(text.toString()).toLower(icu::Locale::getRoot()));
    case CharacterForm::FullWidth:
        return transliterated(text, "Halfwidth-Fullwidth");
    case CharacterForm::HalfWidth:
        return transliterated(text, "Fullwidth-Halfwidth");
    }
    return {};
}

} // namespace penwick
