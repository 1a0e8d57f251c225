#include "preferences/PreferencesView.h"

#include "command/ReadablePlaceholder.h"
#include "command/WordQuery.h"
#include "controls/Alerts.h"
#include "controls/ButtonRow.h"
#include "controls/DetailPane.h"
#include "controls/ElidedLabel.h"
#include "controls/VerbatimText.h"
#include "preferences/PreferenceRow.h"
#include "wording/UIWordingProfileManager.h"
#include "wording/WordingLookup.h"

#include <QFrame>
#include <QKeyEvent>
#include <QLineEdit>
#include <QPushButton>
#include <QScrollArea>
#include <QVBoxLayout>

#include <utility>

namespace penwick {

using namespace Qt::StringLiterals;

namespace {

constexpr int kMargin = 12;
constexpr int kSideMargin = 20;

ElidedLabel *makeGroupTitle()
{
    auto *label = new ElidedLabel;
    QFont font = label->font();
    font.setBold(true);
    label->setFont(font);
    return label;
}

} // namespace

PreferencesView::PreferencesView(Services services, QWidget *parent)
    : QWidget(parent)
    , m_services(std::move(services))
    , m_search(new QLineEdit)
    , m_nothing(new ElidedLabel)
    , m_path(new ElidedLabel)
    , m_open(makeActionButton(u"preferencesOpenFile"_s, u"doc.text"_s))
    , m_resetAll(makeActionButton(u"preferencesResetAll"_s, u"arrow.uturn.backward"_s))
    , m_buttons(new ButtonRow({m_open, m_resetAll}))
{
    auto *all = new QVBoxLayout(this);
    all->setContentsMargins(0, 0, 0, 0);
    all->setSpacing(0);
    auto *header = new QVBoxLayout;
    header->setContentsMargins(kSideMargin, kMargin, kSideMargin, kMargin);
    header->addWidget(m_search);
    all->addLayout(header);
    all->addWidget(makeDivider());
    all->addWidget(makeScrollArea(makeGroups()), 1);
    all->addWidget(makeDivider());
    all->addWidget(m_buttons);
    m_search->setObjectName(u"preferencesSearch"_s);
    m_search->setClearButtonEnabled(true);
    m_search->installEventFilter(this);
    connect(m_search, &QLineEdit::textChanged, this, &PreferencesView::showMatches);
    connect(m_open, &QPushButton::clicked, this, [this] { m_services.openFile(); });
    connect(m_resetAll, &QPushButton::clicked, this, &PreferencesView::askToResetAll);
    m_services.center.addObserver(UIWordingProfileDidChange, this, [this] { relabel(); });
    relabel();
    makePlaceholderReadable(m_search);
    m_search->setFocus();
}

QWidget *PreferencesView::makeGroups()
{
    auto *content = new QWidget;
    auto *layout = makePaneLayout(content);
    for (const PreferenceGroup &each : preferenceGroups()) {
        Group group{each, makeGroupTitle(), nullptr, {}};
        auto *rows = new QVBoxLayout;
        for (const Preference &row : each.rows) {
            group.rows.append(new PreferenceRow(row, m_services.preferences));
            rows->addWidget(group.rows.last());
        }
        group.frame = makeGroup(rows);
        // On the base colour, styles leave the outlines of check boxes invisible in the dark.
        group.frame->setBackgroundRole(QPalette::Window);
        layout->addWidget(group.title);
        layout->addWidget(group.frame);
        m_groups.append(group);
    }
    m_nothing->setObjectName(u"preferencesNothing"_s);
    layout->addWidget(m_nothing);
    layout->addStretch();
    layout->addWidget(m_path);
    return content;
}

void PreferencesView::relabel()
{
    const QString search = wording::text(u"preference.search"_s);
    m_search->setPlaceholderText(verbatimText(search));
    m_search->setAccessibleName(search);
    for (const Group &group : std::as_const(m_groups)) {
        setTitle(group.title, wording::text(group.content.titleKey.toString()));
        for (PreferenceRow *row : group.rows)
            row->relabel();
    }
    setTitle(m_nothing, wording::text(u"palette.nothing"_s));
    const QString path = visibleLine(m_services.filePath);
    setTitle(m_path, wording::text(u"preference.file"_s, {path}));
    m_buttons->setText(m_open, wording::text(u"command.settingsFile"_s));
    m_buttons->setHint(m_open, path);
    m_buttons->setText(m_resetAll, wording::text(u"preference.resetAll"_s));
    showMatches();
}

void PreferencesView::showMatches()
{
    const WordQuery query(m_search->text());
    bool isAnyShown = false;
    for (const Group &group : std::as_const(m_groups)) {
        const QString title = group.title->text();
        bool isShown = false;
        for (PreferenceRow *row : group.rows) {
            const bool matches = row->matches(query, title);
            row->setVisible(matches);
            isShown |= matches;
        }
        group.title->setVisible(isShown);
        group.title->setContentsMargins(0, isAnyShown ? kMargin : 0, 0, 0);
        group.frame->setVisible(isShown);
        isAnyShown |= isShown;
    }
    m_nothing->setVisible(!isAnyShown);
}

void PreferencesView::focusFirstControl()
{
    for (const Group &group : std::as_const(m_groups))
        for (PreferenceRow *row : group.rows)
            if (!row->isHidden())
                return row->control()->setFocus(Qt::TabFocusReason);
}

void PreferencesView::commit()
{
    for (const Group &group : std::as_const(m_groups))
        for (PreferenceRow *row : group.rows)
            row->commit();
}

void PreferencesView::askToResetAll()
{
    confirm(this,
            wording::text(u"preference.resetAllTitle"_s),
            wording::text(u"preference.resetAllMessage"_s),
            wording::text(u"preference.reset"_s),
            [this] { resetAll(); });
}

void PreferencesView::resetAll()
{
    for (const Preference &row : allPreferences())
        m_services.preferences.reset(row.id);
    for (const Group &group : std::as_const(m_groups))
        for (PreferenceRow *row : group.rows)
            row->refresh();
}

bool PreferencesView::eventFilter(QObject *watched, QEvent *event)
{
    if (watched == m_search && event->type() == QEvent::PaletteChange)
        makePlaceholderReadable(m_search);
    if (watched == m_search && event->type() == QEvent::KeyPress) {
        const int key = static_cast<QKeyEvent *>(event)->key();
        if (key == Qt::Key_Down || key == Qt::Key_Return || key == Qt::Key_Enter) {
            focusFirstControl();
            return true;
        }
    }
    return QWidget::eventFilter(watched, event);
}

} // namespace penwick
