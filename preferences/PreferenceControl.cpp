#include "preferences/PreferenceControl.h"

#include "controls/DetailPane.h"
#include "controls/TextField.h"
#include "controls/VerbatimText.h"
#include "wording/WordingLookup.h"

#include <QCheckBox>
#include <QComboBox>
#include <QEvent>
#include <QFontDatabase>
#include <QSignalBlocker>
#include <QSpinBox>

#include <utility>

namespace penwick {

using namespace Qt::StringLiterals;

namespace {

using Choose = std::function<void(const QString &)>;

constexpr int kShortestList = 12; // Characters of a combo box, at least.

/// Passes the wheel on while a control lacks the focus, so that scrolling over it changes no value.
class WheelGuard final : public QObject
{
public:
    using QObject::QObject;

    bool eventFilter(QObject *watched, QEvent *event) override
    {
        if (event->type() != QEvent::Wheel || static_cast<QWidget *>(watched)->hasFocus())
            return false;
        event->ignore();
        return true;
    }
};

void guardWheel(QWidget *control)
{
    control->setFocusPolicy(Qt::StrongFocus);
    control->installEventFilter(new WheelGuard(control));
}

QString titleOf(const Preference::Choice &choice)
{
    return wording::text(choice.titleKey.toString());
}

/// Returns the text with the unit of a number around `%1`.
QString unitOf(const Preference &row)
{
    return row.unitKey.isEmpty() ? u"%1"_s : wording::text(row.unitKey.toString());
}

PreferenceControl makeSwitch(Choose choose)
{
    auto *box = new QCheckBox;
    QObject::connect(box, &QCheckBox::clicked, box, [choose = std::move(choose)](bool isOn) {
        choose(isOn ? u"true"_s : u"false"_s);
    });
    return {box, [box](const QString &value) { box->setChecked(value == u"true"); }, [] {}};
}

/// A row with a choice has it one step below the smallest number.
PreferenceControl makeNumber(const Preference &row, Choose choose)
{
    auto *box = new QSpinBox;
    const int least = row.choices.empty() ? row.smallest : row.smallest - 1;
    box->setRange(least, row.largest);
    box->setKeyboardTracking(false); // While "12" is typed, 1 is not meant.
    if (row.largest - row.smallest > 1000)
        box->setStepType(QSpinBox::AdaptiveDecimalStepType);
    guardWheel(box);
    const auto take = [&row, choose = std::move(choose)](int number) {
        const bool isChoice = number < row.smallest;
        choose(isChoice ? row.choices.front().value.toString() : QString::number(number));
    };
    QObject::connect(box, &QSpinBox::valueChanged, box, take);
    const auto show = [box, least](const QString &value) {
        const QSignalBlocker blocker(box);
        bool isNumber = false;
        const int number = value.toInt(&isNumber);
        box->setValue(isNumber ? number : least);
    };
    const auto relabel = [box, &row] {
        const QStringList unit = unitOf(row).split(u"%1"_s);
        box->setPrefix(unit.value(0));
        box->setSuffix(unit.value(1));
        if (!row.choices.empty())
            box->setSpecialValueText(titleOf(row.choices.front()));
    };
    return {box, show, relabel};
}

QComboBox *makeComboBox(Choose choose)
{
    auto *box = new QComboBox;
    box->setSizeAdjustPolicy(QComboBox::AdjustToMinimumContentsLengthWithIcon);
    box->setMinimumContentsLength(kShortestList);
    guardWheel(box);
    QObject::connect(box, &QComboBox::activated, box, [box, choose = std::move(choose)](int index) {
        choose(box->itemData(index).toString());
    });
    return box;
}

PreferenceControl makeChoice(const Preference &row, Choose choose)
{
    QComboBox *box = makeComboBox(std::move(choose));
    for (const Preference::Choice &choice : row.choices)
        box->addItem(QString(), choice.value.toString());
    const auto show = [box](const QString &value) { box->setCurrentIndex(box->findData(value)); };
    const auto relabel = [box, &row] {
        int index = 0;
        for (const Preference::Choice &choice : row.choices)
            box->setItemText(index++, titleOf(choice));
    };
    return {box, show, relabel};
}

PreferenceControl makeText(Choose choose)
{
    TextField *field = makeTextField({});
    QObject::connect(field,
                     &QLineEdit::editingFinished,
                     field,
                     [field, choose = std::move(choose)] { choose(field->wholeText()); });
    return {field, [field](const QString &value) { field->setWholeText(value); }, [] {}};
}

PreferenceControl makeFontFamily(Choose choose)
{
    QComboBox *box = makeComboBox(std::move(choose));
    box->addItem(QString(), QString());
    for (const QString &family : QFontDatabase::families())
        if (!QFontDatabase::isPrivateFamily(family))
            box->addItem(visibleLine(family), family);
    const auto show = [box](const QString &value) {
        if (box->findData(value) < 0)
            box->addItem(visibleLine(value), value); // Not installed here.
        box->setCurrentIndex(box->findData(value));
    };
    const auto relabel = [box] { box->setItemText(0, wording::text(u"preference.automatic"_s)); };
    return {box, show, relabel};
}

} // namespace

PreferenceControl makePreferenceControl(const Preference &row, Choose choose)
{
    switch (row.kind) {
    case Preference::Kind::Switch:
        return makeSwitch(std::move(choose));
    case Preference::Kind::Number:
        return makeNumber(row, std::move(choose));
    case Preference::Kind::Choice:
        return makeChoice(row, std::move(choose));
    case Preference::Kind::FontFamily:
        return makeFontFamily(std::move(choose));
    case Preference::Kind::Text:
        break;
    }
    return makeText(std::move(choose));
}

QString readableValue(const Preference &row, const QString &value)
{
    for (const Preference::Choice &choice : row.choices)
        if (choice.value == value)
            return titleOf(choice);
    switch (row.kind) {
    case Preference::Kind::Switch:
        return value == u"true" ? wording::text(u"palette.on"_s) : wording::text(u"palette.off"_s);
    case Preference::Kind::Number:
        return unitOf(row).replace(u"%1"_s, value);
    case Preference::Kind::FontFamily:
        return value.isEmpty() ? wording::text(u"preference.automatic"_s) : visibleLine(value);
    case Preference::Kind::Choice:
    case Preference::Kind::Text:
        break;
    }
    return visibleLine(value);
}

} // namespace penwick
