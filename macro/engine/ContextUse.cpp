#include "macro/engine/ContextUse.h"

#include "macro/script/SharedTexts.h"

#include <algorithm>
#include <vector>

using namespace Qt::StringLiterals;

namespace penwick {

namespace {

constexpr QStringView kContext = u"context";

/// The texts that the code reads, as entries of the context.
using ReadTexts = std::vector<const ContextEntry *>;

bool isIdentifierPart(QChar unit)
{
    return unit.isLetterOrNumber() || unit == u'_' || unit == u'$' || unit.unicode() >= 0x80;
}

/// Takes ".name" off the start of `rest` and returns the name; empty when there is none.
QStringView takeMember(QStringView &rest)
{
    if (!rest.startsWith(u'.'))
        return {};
    const auto end = std::find_if_not(rest.begin() + 1, rest.end(), isIdentifierPart);
    const QStringView name = rest.sliced(1, end - rest.begin() - 1);
    rest = rest.sliced(1 + name.size());
    return name;
}

void addAll(const ContextDictionary &dictionary, ReadTexts &read)
{
    for (const ContextEntry &entry : dictionary)
        if (std::holds_alternative<Text>(entry.value))
            read.push_back(&entry);
        else if (const auto *inner = std::get_if<ContextDictionary>(&entry.value))
            addAll(*inner, read);
}

/// Adds the texts of an object that the code can reach where it names the object.
/// \param rest what follows the name.
void addReachable(const ContextDictionary &object, QStringView rest, ReadTexts &read)
{
    const QStringView name = takeMember(rest);
    const auto entry = std::find_if(
        object.begin(), object.end(), [name](const auto &member) { return member.key == name; });
    // The object is passed on, or a method that it inherits is.
    if (entry == object.end())
        return addAll(object, read);
    if (std::holds_alternative<Text>(entry->value))
        read.push_back(&*entry);
    else if (const auto *inner = std::get_if<ContextDictionary>(&entry->value))
        addReachable(*inner, rest, read);
}

/// True if the code may use `context` where the word does not stand: in a string that it evaluates,
/// with an escape in the name, or in a getter that replaces a deleted member.
bool mayHideUses(QStringView code)
{
    return code.contains(u"eval") || code.contains(u"\\u") || code.contains(u"delete");
}

ReadTexts textsReadBy(QStringView code, const ContextDictionary &context)
{
    ReadTexts read;
    if (mayHideUses(code)) {
        addAll(context, read);
        return read;
    }
    for (qsizetype at = code.indexOf(kContext); at >= 0; at = code.indexOf(kContext, at + 1))
        addReachable(context, code.sliced(at + kContext.size()), read);
    return read;
}

void emptyLongTexts(ContextDictionary &dictionary, const ReadTexts &read)
{
    for (ContextEntry &entry : dictionary) {
        if (auto *inner = std::get_if<ContextDictionary>(&entry.value))
            emptyLongTexts(*inner, read);
        auto *text = std::get_if<Text>(&entry.value);
        const bool isRead = std::find(read.begin(), read.end(), &entry) != read.end();
        if (text != nullptr && !isRead && text->size() >= SharedTexts::kLeastLength)
            *text = Text();
    }
}

} // namespace

ContextDictionary withoutUnreadTexts(ContextDictionary context, QStringView code)
{
    const ReadTexts read = textsReadBy(code, context);
    emptyLongTexts(context, read);
    return context;
}

} // namespace penwick
