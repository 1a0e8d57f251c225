#include "preferences/Preference.h"

#include <algorithm>
#include <array>

namespace penwick {

using namespace Qt::StringLiterals;

namespace {

using Id = PreferenceId;
using Kind = Preference::Kind;
using Choice = Preference::Choice;

constexpr std::array kTabKeyInserts{
    Choice{u"tab", u"preference.tabKeyInserts.tab"},
    Choice{u"spaces", u"preference.tabKeyInserts.spaces"},
};

constexpr std::array kMacroMemory{Choice{u"automatic", u"preference.automatic"}};
constexpr std::array kShownMarks{
    Choice{u"blanks", u"preference.shownMarks.blanks"},
    Choice{u"all", u"preference.shownMarks.all"},
};

constexpr std::array kWrapping{
    Choice{u"window", u"preference.wrapping.window"},
    Choice{u"off", u"preference.wrapping.off"},
    Choice{u"column", u"preference.wrapping.column"},
};

// One row per line, also beyond the column limit.
// clang-format off
constexpr Preference kPreferences[] = {
    {Id::FontFamily, u"fontFamily", Kind::FontFamily, u"preference.fontFamily", u""},
    {Id::FontSize, u"fontSize", Kind::Number, u"preference.fontSize", u"14", 6, 72, {}, u"preference.pixels"},
    {Id::LineSpacing, u"lineSpacing", Kind::Number, u"preference.lineSpacing", u"100", 100, 200, {}, u"preference.percent"},
    {Id::ShowsBlanks, u"showsBlanks", Kind::Switch, u"editor.showBlanks", u"false"},
    {Id::ShownMarks, u"shownMarks", Kind::Choice, u"preference.shownMarks", u"blanks", 0, 0, kShownMarks},
    {Id::ShowsLineNumbers, u"showsLineNumbers", Kind::Switch, u"command.lineNumbers", u"false"},
    {Id::MarksCurrentLine, u"marksCurrentLine", Kind::Switch, u"command.currentLine", u"false"},
    {Id::ShowsHint, u"showsHint", Kind::Switch, u"preference.showsHint", u"true"},
    {Id::Zoom, u"zoom", Kind::Number, u"preference.zoom", u"100", 50, 300, {}, u"preference.percent"},
    {Id::Wrapping, u"wrapping", Kind::Choice, u"preference.wrapping", u"window", 0, 0, kWrapping},
    {Id::WrapColumn, u"wrapColumn", Kind::Number, u"preference.wrapColumn", u"80", 20, 1000, {}, u"preference.columns"},
    {Id::TabWidth, u"tabWidth", Kind::Number, u"preference.tabWidth", u"4", 1, 16, {}, u"preference.columns"},
    {Id::TabKeyInserts, u"tabKeyInserts", Kind::Choice, u"preference.tabKeyInserts", u"tab", 0, 0, kTabKeyInserts},
    {Id::KeepsIndentation, u"keepIndentation", Kind::Switch, u"preference.keepIndentation", u"false"},
    {Id::ConvertsPastedLineEnds, u"convertPastedLineEnds", Kind::Switch, u"preference.convertPastedLineEnds", u"false"},
    {Id::UndoLimit, u"undoLimitMegabytes", Kind::Number, u"preference.undoLimit", u"1000", 1, 100000, {}, u"preference.megabytes"},
    {Id::KeepsRecoveryCopies, u"recovery", Kind::Switch, u"preference.recovery", u"true"},
    {Id::KeepsRecentFiles, u"keepsRecentFiles", Kind::Switch, u"preference.keepsRecentFiles", u"true"},
    {Id::MacroMemory, u"macroMemoryLimitMegabytes", Kind::Number, u"preference.macroMemory", u"automatic", 64, 1 << 30, kMacroMemory, u"preference.megabytes"},
};

// clang-format on

bool isAmong(std::span<const Choice> choices, QStringView value)
{
    return std::ranges::any_of(choices, [value](const Choice &c) { return c.value == value; });
}

} // namespace

bool Preference::isValid(QStringView value) const
{
    switch (kind) {
    case Kind::Switch:
        return value == u"true" || value == u"false";
    case Kind::Number: {
        bool isNumber = false;
        const int number = value.toInt(&isNumber);
        return (isNumber && number >= smallest && number <= largest) || isAmong(choices, value);
    }
    case Kind::Choice:
        return isAmong(choices, value);
    case Kind::Text:
    case Kind::FontFamily:
        break;
    }
    return true;
}

std::span<const Preference> allPreferences()
{
    return kPreferences;
}

const Preference &preference(PreferenceId id)
{
    return *std::ranges::find(kPreferences, id, &Preference::id);
}

} // namespace penwick
