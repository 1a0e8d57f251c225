#include "preferences/PreferenceRow.h"

#include "command/WordQuery.h"
#include "controls/DetailPane.h"
#include "controls/ElidedLabel.h"
#include "controls/SymbolIcon.h"
#include "controls/VerbatimText.h"
#include "wording/WordingLookup.h"

#include <QCheckBox>
#include <QGridLayout>
#include <QMouseEvent>
#include <QSpinBox>
#include <QToolButton>

namespace penwick {

using namespace Qt::StringLiterals;

namespace {

/// Lets a widget keep its place in the layout while it is hidden.
void keepPlace(QWidget *widget)
{
    QSizePolicy policy = widget->sizePolicy();
    policy.setRetainSizeWhenHidden(true);
    widget->setSizePolicy(policy);
}

} // namespace

PreferenceRow::PreferenceRow(const Preference &row, Preferences &preferences, QWidget *parent)
    : QWidget(parent)
    , m_row(row)
    , m_preferences(preferences)
    , m_mark(new QLabel(u"●"_s))
    , m_title(new ElidedLabel)
    , m_control(makePreferenceControl(
          row, [this](const QString &value) { m_preferences.setText(m_row.id, value); }))
    , m_reset(new QToolButton)
    , m_note(new ElidedLabel)
{
    const QString key = row.key.toString();
    setObjectName(key);
    m_control.widget->setObjectName(key + u".control"_s);
    m_reset->setObjectName(key + u".reset"_s);
    m_note->setObjectName(key + u".note"_s);
    m_title->setBuddy(m_control.widget); // Screen readers name a combo box only by its label.
    m_title->installEventFilter(this);
    m_reset->setIcon(symbolIcon(u"arrow.uturn.backward"_s));
    m_reset->setAutoRaise(true);
    m_reset->setFocusPolicy(Qt::StrongFocus);
    makeLayout();
    connect(m_reset, &QToolButton::clicked, this, &PreferenceRow::resetValue);
    Preferences::observe(row.id, this, [this] { refresh(); });
}

void PreferenceRow::makeLayout()
{
    auto *grid = new QGridLayout(this);
    grid->setContentsMargins(0, 0, 0, 0);
    // Equal shares, whatever the texts are, so that the controls of all rows are below each other.
    for (QWidget *widget : {static_cast<QWidget *>(m_title), m_control.widget})
        widget->setSizePolicy(QSizePolicy::Ignored, widget->sizePolicy().verticalPolicy());
    grid->addWidget(m_mark, 0, 0);
    grid->addWidget(m_title, 0, 1);
    grid->addWidget(m_control.widget, 0, 2);
    grid->addWidget(m_reset, 0, 3);
    grid->addWidget(m_note, 1, 1, 1, 3);
    grid->setColumnStretch(1, 3);
    grid->setColumnStretch(2, 2);
    for (QWidget *widget : {static_cast<QWidget *>(m_mark), static_cast<QWidget *>(m_reset)})
        keepPlace(widget);
}

void PreferenceRow::relabel()
{
    const QString title = wording::text(m_row.titleKey.toString());
    setTitle(m_title, title);
    m_control.widget->setAccessibleName(title);
    m_control.relabel();
    m_mark->setAccessibleName(wording::text(u"preference.changed"_s));
    const QString standard = readableValue(m_row, m_row.standard.toString());
    m_reset->setToolTip(verbatimToolTip(wording::text(u"preference.reset"_s),
                                        wording::text(u"preference.standard"_s, {standard})));
    m_reset->setAccessibleName(wording::text(u"preference.resetOne"_s, {title}));
    refresh();
}

void PreferenceRow::refresh()
{
    const bool isBroken = m_preferences.isBroken(m_row.id);
    const bool isChanged = m_preferences.isChanged(m_row.id);
    m_control.show(m_preferences.text(m_row.id));
    // The focus would go anywhere when the button disappears.
    if (!isChanged && !isBroken && m_reset->hasFocus())
        m_control.widget->setFocus();
    m_mark->setVisible(isChanged);
    m_reset->setVisible(isChanged || isBroken);
    m_note->setVisible(isBroken);
    describe();
}

void PreferenceRow::describe()
{
    const QString standard = readableValue(m_row, m_row.standard.toString());
    QString description = wording::text(u"preference.standard"_s, {standard});
    if (m_preferences.isBroken(m_row.id)) {
        setTitle(m_note, wording::text(u"preference.broken"_s, {m_row.key.toString(), standard}));
        description = m_note->text();
    }
    m_control.widget->setAccessibleDescription(description);
    m_reset->setAccessibleDescription(description);
}

bool PreferenceRow::matches(const WordQuery &query, const QString &others) const
{
    QString words = others + u' ' + m_row.key.toString();
    for (const Preference::Choice &choice : m_row.choices)
        words += u' ' + wording::text(choice.titleKey.toString());
    return query.rank(searchable(wording::text(m_row.titleKey.toString())), searchable(words))
        .has_value();
}

void PreferenceRow::commit()
{
    if (auto *number = qobject_cast<QSpinBox *>(m_control.widget))
        number->interpretText();
}

void PreferenceRow::resetValue()
{
    m_preferences.reset(m_row.id);
    refresh();
}

/// A click on the title is one on the check box, or goes to another control.
bool PreferenceRow::eventFilter(QObject *watched, QEvent *event)
{
    if (watched == m_title && event->type() == QEvent::MouseButtonPress &&
        static_cast<QMouseEvent *>(event)->button() == Qt::LeftButton) {
        m_control.widget->setFocus(Qt::MouseFocusReason);
        if (auto *box = qobject_cast<QCheckBox *>(m_control.widget))
            box->click();
    }
    return QWidget::eventFilter(watched, event);
}

} // namespace penwick
