#include "window/LineEndCommands.h"

#include "controls/VerbatimText.h"
#include "view/TextView.h"
#include "wording/WordingLookup.h"

#include <QMenu>

namespace penwick {

using namespace Qt::StringLiterals;

namespace {

/// Returns the title of a menu entry with an access key, which stands in parentheses behind it as
/// usual in Japanese.
QString withAccessKey(const QString &title, QChar key)
{
    return verbatimText(title) + u"(&"_s + key + u')';
}

QChar accessKey(LineEnd lineEnd)
{
    switch (lineEnd) {
    case LineEnd::LineFeed:
        return u'L';
    case LineEnd::CrLf:
        return u'W';
    case LineEnd::CarriageReturn:
        return u'C';
    }
    return {};
}

} // namespace

LineEndCommands::LineEndCommands(TextView *view, QObject *scope, Preferences &preferences, int wait)
    : QObject(scope)
    , m_view(view)
    , m_wait(wait)
{
    connect(view, &TextView::contextMenuWillOpen, this, &LineEndCommands::extendMenu);
    const auto choose = [view, &preferences] {
        view->setConvertsPastedLineEnds(preferences.isOn(PreferenceId::ConvertsPastedLineEnds));
    };
    choose();
    Preferences::observe(PreferenceId::ConvertsPastedLineEnds, this, choose);
}

QString LineEndCommands::name(LineEnd lineEnd)
{
    switch (lineEnd) {
    case LineEnd::LineFeed:
        return wording::text(u"editor.lineEnds.lf"_s);
    case LineEnd::CrLf:
        return wording::text(u"editor.lineEnds.crLf"_s);
    case LineEnd::CarriageReturn:
        return wording::text(u"editor.lineEnds.cr"_s);
    }
    return {};
}

void LineEndCommands::extendMenu(QMenu *menu)
{
    QMenu *conversions =
        menu->addMenu(withAccessKey(wording::text(u"editor.lineEnds.convert"_s), u'N'));
    for (const LineEnd lineEnd : kLineEnds) {
        QAction *action = conversions->addAction(withAccessKey(name(lineEnd), accessKey(lineEnd)),
                                                 this,
                                                 [this, lineEnd] { convert(lineEnd); });
        action->setEnabled(canConvert(lineEnd));
    }
}

TextRange LineEndCommands::wholeOrSelection() const
{
    if (const ColumnSelection *columns = m_view->columns())
        return rangeOf(m_view->string(), columns->lines());
    const TextRange selected = m_view->selectedRange();
    return selected.isEmpty() ? TextRange{0, m_view->string().size()} : selected;
}

bool LineEndCommands::canConvert(LineEnd lineEnd) const
{
    const TextRange range = wholeOrSelection();
    return !m_view->string().mid(range.location, range.length).metrics().hasOnly(lineEnd);
}

void LineEndCommands::convert(LineEnd lineEnd)
{
    m_view->commitMarkedText();
    convert(wholeOrSelection(), lineEnd);
}

void LineEndCommands::convertWhole(LineEnd lineEnd)
{
    m_view->commitMarkedText();
    convert({0, m_view->string().size()}, lineEnd);
}

void LineEndCommands::convert(TextRange range, LineEnd lineEnd)
{
    const Text text = m_view->string();
    const TextRange wide = rangeOfLineEnds(text, range, lineEnd);
    const Text part = text.mid(wide.location, wide.length);
    if (part.metrics().hasOnly(lineEnd))
        return;
    const auto work = [this, text, wide, part, lineEnd](const auto & /*isCancelled*/) {
        return [this, text, wide, lineEnd, converted = part.withLineEnds(lineEnd)] {
            apply(text, wide, lineEnd, converted);
        };
    };
    m_task.start(work, m_wait);
}

void LineEndCommands::apply(const Text &before,
                            TextRange range,
                            LineEnd lineEnd,
                            const Text &converted)
{
    m_view->commitMarkedText();
    if (m_view->string().isSameValue(before))
        m_view->applyOutsideChange(range, converted);
    else if (range.length == before.size())
        convert({0, m_view->string().size()}, lineEnd); // The text changed meanwhile: start over.
}

} // namespace penwick
