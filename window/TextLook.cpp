#include "window/TextLook.h"

#include "platform/settings/NotificationCenter.h"
#include "view/EditorFont.h"
#include "view/LineNumberGutter.h"
#include "view/TextView.h"
#include "window/Zoom.h"
#include "wording/UIWordingProfileManager.h"
#include "wording/WordingLookup.h"

#include <QBoxLayout>

namespace penwick {

using namespace Qt::StringLiterals;

namespace {

std::optional<PreferenceId> switchOf(CommandId id)
{
    switch (id) {
    case CommandId::ShowLineNumbers:
        return PreferenceId::ShowsLineNumbers;
    case CommandId::MarkCurrentLine:
        return PreferenceId::MarksCurrentLine;
    default:
        return std::nullopt;
    }
}

} // namespace

TextLook::TextLook(
    TextView *view, QBoxLayout *row, Zoom *zoom, QWidget *scope, Preferences &preferences)
    : QObject(scope)
    , m_view(view)
    , m_row(row)
    , m_zoom(zoom)
    , m_preferences(preferences)
{
    Preferences::observe(PreferenceId::FontFamily, this, [this] { updateFont(); });
    Preferences::observe(PreferenceId::FontSize, this, [this] { updateFont(); });
    Preferences::observe(PreferenceId::LineSpacing, this, [this] { updateLineSpacing(); });
    Preferences::observe(PreferenceId::ShowsLineNumbers, this, [this] { updateLineNumbers(); });
    Preferences::observe(PreferenceId::MarksCurrentLine, this, [this] { updateCurrentLine(); });
    NotificationCenter::defaultCenter().addObserver(
        UIWordingProfileDidChange, this, [this] { relabel(); });
    updateLineSpacing();
    updateLineNumbers();
    updateCurrentLine();
}

TextLook::~TextLook()
{
    delete m_gutter;
}

std::optional<CommandState> TextLook::commandState(CommandId id) const
{
    const auto preference = switchOf(id);
    return preference ? std::optional(CommandState{true, m_preferences.isOn(*preference)})
                      : std::nullopt;
}

bool TextLook::performCommand(CommandId id)
{
    const auto preference = switchOf(id);
    if (preference)
        m_preferences.setOn(*preference, !m_preferences.isOn(*preference));
    return preference.has_value();
}

QFont TextLook::fontIn(const Preferences &preferences)
{
    return editorFont(Zoom::pixels(preferences.number(PreferenceId::FontSize), preferences),
                      preferences.text(PreferenceId::FontFamily));
}

void TextLook::updateFont()
{
    m_zoom->setSize(m_preferences.number(PreferenceId::FontSize));
    m_view->setFont(fontIn(m_preferences));
}

void TextLook::updateLineSpacing()
{
    m_view->setLineSpacing(m_preferences.number(PreferenceId::LineSpacing));
}

void TextLook::updateLineNumbers()
{
    const bool isOn = m_preferences.isOn(PreferenceId::ShowsLineNumbers);
    if (isOn == (m_gutter != nullptr))
        return;
    if (!isOn) {
        delete m_gutter;
        m_gutter = nullptr;
        return;
    }
    m_gutter = new LineNumberGutter(m_view, TextView::LineCount::LineBreaks);
    m_row->insertWidget(0, m_gutter);
    relabel();
    updateCurrentLine();
}

void TextLook::updateCurrentLine()
{
    const bool marks = m_preferences.isOn(PreferenceId::MarksCurrentLine);
    m_view->setMarksCurrentLine(marks);
    if (m_gutter != nullptr)
        m_gutter->setMarksCurrentLine(marks);
}

void TextLook::relabel()
{
    if (m_gutter != nullptr)
        m_gutter->setAccessibleName(wording::text(u"editor.lineNumbers"_s));
}

} // namespace penwick
