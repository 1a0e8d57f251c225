#include "controls/ListDetailView.h"

#include "controls/ColorContrast.h"
#include "controls/RowModel.h"
#include "controls/SidebarDelegate.h"
#include "controls/SymbolIcon.h"
#include "controls/VerbatimText.h"
#include "text/CutText.h"

#include <QEvent>
#include <QHBoxLayout>
#include <QKeyEvent>
#include <QLabel>
#include <QListView>
#include <QScopedValueRollback>
#include <QShortcut>
#include <QSplitter>
#include <QStackedWidget>
#include <QToolButton>

namespace penwick {

namespace {

constexpr int kHeaderMargin = 10;

QStandardItem *makeItem(const ListDetailView::Row &row, const QString &moveHint)
{
    const QString name = cutText(row.name, kLongestShown);
    auto *item = new QStandardItem(name);
    item->setEditable(false);
    item->setData(row.id, SidebarDelegate::IdRole);
    item->setData(row.badge, SidebarDelegate::BadgeRole);
    item->setData(row.symbol, SidebarDelegate::SymbolRole);
    item->setToolTip(verbatimToolTip(row.name, moveHint));
    item->setDropEnabled(false); // A row is dropped between others.
    QStringList spoken{name};
    if (!row.badge.isEmpty())
        spoken += row.badge;
    if (!row.symbolMeaning.isEmpty())
        spoken += row.symbolMeaning;
    item->setAccessibleText(spoken.join(QStringLiteral(", ")));
    if (row.isOn) {
        item->setCheckable(true);
        item->setCheckState(*row.isOn ? Qt::Checked : Qt::Unchecked);
    }
    return item;
}

} // namespace

ListDetailView::ListDetailView(QWidget *detail, ListWidth width, QWidget *parent)
    : QWidget(parent)
    , m_header(new QHBoxLayout)
    , m_list(new QListView)
    , m_model(new RowModel(this))
    , m_detailSide(new QStackedWidget)
    , m_emptyLabel(new QLabel)
{
    makeList();
    auto *side = new QWidget;
    side->setMinimumWidth(width.minimum);
    side->setMaximumWidth(width.maximum);
    m_header->setContentsMargins(kHeaderMargin, kHeaderMargin, kHeaderMargin, kHeaderMargin);
    auto *sideLayout = new QVBoxLayout(side);
    sideLayout->setContentsMargins(0, 0, 0, 0);
    sideLayout->setSpacing(0);
    sideLayout->addLayout(m_header);
    sideLayout->addWidget(m_list);

    m_emptyLabel->setAlignment(Qt::AlignCenter);
    m_emptyLabel->setTextFormat(Qt::PlainText);
    m_emptyLabel->setWordWrap(true);
    m_detailSide->addWidget(m_emptyLabel);
    m_detailSide->addWidget(detail);

    auto *splitter = new QSplitter;
    splitter->setChildrenCollapsible(false);
    splitter->setHandleWidth(1);
    splitter->addWidget(side);
    splitter->addWidget(m_detailSide);
    splitter->setStretchFactor(1, 1);
    splitter->setSizes({width.ideal, width.ideal});
    auto *layout = new QHBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(splitter);
    colorEmptyText();
}

void ListDetailView::makeList()
{
    m_list->setModel(m_model);
    m_list->setItemDelegate(new SidebarDelegate(m_list));
    m_list->setFrameShape(QFrame::NoFrame);
    m_list->setUniformItemSizes(true);
    m_list->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    m_list->setEditTriggers(QAbstractItemView::NoEditTriggers);
    m_list->setTabKeyNavigation(false);
    m_list->installEventFilter(this);
    connect(m_list->selectionModel(), &QItemSelectionModel::selectionChanged, this, [this] {
        if (!m_isUpdating)
            Q_EMIT markedByUser();
    });
    // Queued, so that the rows do not change during the drop.
    connect(m_model, &RowModel::dropped, this, &ListDetailView::handleDrop, Qt::QueuedConnection);
    connect(m_model, &QStandardItemModel::itemChanged, this, [this](const QStandardItem *item) {
        if (!m_isUpdating && item->isCheckable())
            Q_EMIT switchToggled(item->data(SidebarDelegate::IdRole).toString(),
                                 item->checkState() == Qt::Checked);
    });
}

QToolButton *ListDetailView::addHeaderButton(const QString &name, const QString &symbol)
{
    auto *button = new QToolButton;
    button->setObjectName(name);
    button->setIcon(symbolIcon(symbol));
    button->setToolButtonStyle(Qt::ToolButtonTextBesideIcon);
    button->setAutoRaise(true);
    button->setFocusPolicy(Qt::StrongFocus);
    for (const auto key : {Qt::Key_Return, Qt::Key_Enter}) {
        auto *press = new QShortcut(key, button);
        press->setContext(Qt::WidgetShortcut);
        connect(press, &QShortcut::activated, button, &QToolButton::click);
    }
    m_header->addWidget(button);
    return button;
}

void ListDetailView::setHeaderText(QToolButton *button, const QString &text)
{
    setVerbatimText(button, text);
    button->setAccessibleName(text);
    button->setToolTip(verbatimToolTip(text));
}

void ListDetailView::setRows(const QList<Row> &rows)
{
    const QScopedValueRollback updating(m_isUpdating, true);
    const std::optional<QString> marked = markedId();
    // Replaces existing rows in place, so that the list keeps its scroll position.
    for (int i = 0; i < rows.size(); ++i)
        m_model->setItem(i, makeItem(rows[i], m_moveHint));
    m_model->setRowCount(static_cast<int>(rows.size()));
    mark(marked);
}

void ListDetailView::setListName(const QString &name)
{
    m_list->setAccessibleName(name);
}

void ListDetailView::setMovable(const QString &hint)
{
    m_moveHint = hint;
    m_list->setAccessibleDescription(hint);
    m_list->setDragDropMode(QAbstractItemView::InternalMove);
}

void ListDetailView::setEmptyText(const QString &text)
{
    m_emptyLabel->setText(text);
}

std::optional<QString> ListDetailView::markedId() const
{
    const QModelIndexList selected = m_list->selectionModel()->selectedIndexes();
    if (selected.isEmpty())
        return std::nullopt;
    return selected.constFirst().data(SidebarDelegate::IdRole).toString();
}

void ListDetailView::mark(const std::optional<QString> &id)
{
    const QScopedValueRollback updating(m_isUpdating, true);
    if (id && markedId() == id)
        return;
    m_list->clearSelection(); // The current row stays.
    for (int i = 0; id && i < m_model->rowCount(); ++i) {
        const QModelIndex index = m_model->index(i, 0);
        if (index.data(SidebarDelegate::IdRole).toString() != *id)
            continue;
        m_list->setCurrentIndex(index);
        m_list->scrollTo(index);
        return;
    }
}

void ListDetailView::setDetailShown(bool isShown)
{
    m_detailSide->setCurrentIndex(isShown ? 1 : 0);
}

/// Handles a navigation key in a list that has a current row but no selection. QListView does not
/// select the current row when the key leads to that same row. True when no further handling is
/// needed.
bool ListDetailView::handleNavigationKey(int key)
{
    const QModelIndex place = m_list->currentIndex();
    const bool isStep = key == Qt::Key_Up || key == Qt::Key_Down;
    if (!place.isValid() || markedId() || !(isStep || key == Qt::Key_Home || key == Qt::Key_End))
        return false;
    if (isStep || place == m_model->index(key == Qt::Key_Home ? 0 : m_model->rowCount() - 1, 0))
        m_list->selectionModel()->select(place, QItemSelectionModel::ClearAndSelect);
    return isStep;
}

/// Gives the placeholder text the secondary colour, in which it is readable. The toolkit's own is
/// too pale on the colour of a window.
void ListDetailView::colorEmptyText()
{
    constexpr double kSecondary = 0.6;
    constexpr double kReadable = 4.5;
    const QColor window = palette().color(QPalette::Window);
    const QColor text = palette().color(QPalette::WindowText);
    QPalette own;
    own.setColor(QPalette::WindowText,
                 colorWithContrast(mixedColor(window, text, kSecondary), text, window, kReadable));
    m_emptyLabel->setPalette(own);
}

void ListDetailView::changeEvent(QEvent *event)
{
    QWidget::changeEvent(event);
    if (event->type() == QEvent::PaletteChange)
        colorEmptyText();
}

bool ListDetailView::handleMoveKey(const QKeyEvent &key)
{
    const std::optional<QString> id = markedId();
    const bool isUp = key.key() == Qt::Key_Up;
    if (m_moveHint.isEmpty() || (key.modifiers() & ~Qt::KeypadModifier) != Qt::AltModifier ||
        !(isUp || key.key() == Qt::Key_Down))
        return false;
    const int place = m_list->currentIndex().row() + (isUp ? -1 : 1);
    if (id && place >= 0 && place < m_model->rowCount())
        Q_EMIT moveRequested(*id, place);
    return true;
}

void ListDetailView::handleDrop(const QString &id, int before)
{
    for (int i = 0; i < m_model->rowCount(); ++i) {
        if (m_model->index(i, 0).data(SidebarDelegate::IdRole).toString() != id)
            continue;
        const int place = before > i ? before - 1 : before;
        if (place != i)
            Q_EMIT moveRequested(id, place);
        return;
    }
}

bool ListDetailView::eventFilter(QObject *watched, QEvent *event)
{
    if (watched == m_list && event->type() == QEvent::KeyPress) {
        const auto *key = static_cast<const QKeyEvent *>(event); // NOLINT: type() was checked
        if (key->matches(QKeySequence::Delete) || key->key() == Qt::Key_Backspace) {
            Q_EMIT deleteRequested();
            return true;
        }
        if (handleMoveKey(*key) || handleNavigationKey(key->key()))
            return true;
    }
    return QWidget::eventFilter(watched, event);
}

} // namespace penwick
