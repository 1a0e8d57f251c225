#include "window/EditorTabBar.h"

#include "controls/VerbatimText.h"
#include "platform/settings/NotificationCenter.h"
#include "text/CutText.h"
#include "window/TabCloseButton.h"
#include "window/TabMimeData.h"
#include "window/TabNames.h"
#include "wording/UIWordingProfileManager.h"
#include "wording/WordingLookup.h"

#include <QApplication>
#include <QContextMenuEvent>
#include <QDir>
#include <QDropEvent>
#include <QMouseEvent>
#include <QPainter>
#include <QStyleOptionTab>
#include <QToolButton>

#include <algorithm>
#include <utility>

namespace penwick {

using namespace Qt::StringLiterals;

namespace {

// In widths of an average character, so that both follow the font and the scale.
constexpr int kMaximumTabWidth = 36;
constexpr int kMinimumTabWidth = 22;

constexpr int kDropMarkWidth = 3;
constexpr int kFrontLineHeight = 2;

constexpr QTabBar::ButtonPosition kButtonSide = QTabBar::RightSide;

TabCloseButton *closeButtonOf(const QTabBar &bar, int index)
{
    return qobject_cast<TabCloseButton *>(bar.tabButton(index, kButtonSide));
}

QString accessibleNameOf(const TabLabel &label)
{
    const QString name = cutText(label.name, kLongestName);
    return label.isEdited ? wording::text(u"editor.tab.edited"_s, {name}) : name;
}

} // namespace

EditorTabBar::EditorTabBar(QWidget *parent)
    : QTabBar(parent)
{
    setDocumentMode(true);
    setMovable(true);
    setExpanding(false);
    setUsesScrollButtons(true);
    setElideMode(Qt::ElideNone); // The names are cut by `shownNames`, only for painting.
    // Selects the tab under a dragged text. Dragged tabs are handled in `event`.
    setChangeCurrentOnDrag(true);
    setAcceptDrops(true);
    NotificationCenter::defaultCenter().addObserver(
        UIWordingProfileDidChange, this, [this] { relabel(); });
    relabel();
}

void EditorTabBar::insert(int index, const TabLabel &label)
{
    const int place = insertTab(index, verbatimText(visibleLine(label.name)));
    auto *button = new TabCloseButton(this);
    connect(button, &QAbstractButton::clicked, this, [this, button] {
        for (int i = 0; i < count(); ++i)
            if (closeButtonOf(*this, i) == button)
                return Q_EMIT closeRequested(i);
    });
    setTabButton(place, kButtonSide, button);
    setLabel(place, label);
    relabel();
}

void EditorTabBar::setLabel(int index, const TabLabel &label)
{
    const QString name = visibleLine(label.name);
    const QString text = verbatimText(name);
    m_shownNames.reset();
    setTabData(index, name);
    if (tabText(index) != text) // Setting it lays out all tabs.
        setTabText(index, text);
    setAccessibleTabName(index, accessibleNameOf(label));
    const QString path = QDir::toNativeSeparators(label.filePath);
    setTabToolTip(
        index, verbatimToolTip(visibleLine(path.isEmpty() ? label.name : path, kLongestToolTip)));
    closeButtonOf(*this, index)->setEdited(label.isEdited);
}

QStringList EditorTabBar::names() const
{
    QStringList names;
    for (int i = 0; i < count(); ++i)
        names << tabData(i).toString();
    return names;
}

bool EditorTabBar::isEdited(int index) const
{
    const TabCloseButton *button = closeButtonOf(*this, index);
    return button != nullptr && button->isEdited();
}

bool EditorTabBar::fitsInto(int width) const
{
    return count() * characterWidths(kMinimumTabWidth) <= width;
}

void EditorTabBar::relabel()
{
    const QString close = wording::text(u"editor.tab.close"_s);
    for (int i = 0; i < count(); ++i) {
        if (TabCloseButton *button = closeButtonOf(*this, i)) {
            button->setToolTip(verbatimToolTip(close));
            button->setAccessibleName(close);
        }
    }
    if (auto *left = findChild<QToolButton *>(u"ScrollLeftButton"_s))
        left->setAccessibleName(wording::text(u"editor.tab.scrollLeft"_s));
    if (auto *right = findChild<QToolButton *>(u"ScrollRightButton"_s))
        right->setAccessibleName(wording::text(u"editor.tab.scrollRight"_s));
}

QPixmap EditorTabBar::picture(int index) const
{
    QStyleOptionTab option;
    initStyleOption(&option, index);
    option.text = verbatimText(shownName(index));
    option.rect.moveTo(0, 0);
    option.state |= QStyle::State_Selected;
    option.rightButtonSize = {};
    QPixmap pixmap(option.rect.size() * devicePixelRatioF());
    pixmap.setDevicePixelRatio(devicePixelRatioF());
    pixmap.fill(palette().color(QPalette::Window));
    QPainter painter(&pixmap);
    style()->drawControl(QStyle::CE_TabBarTabLabel, &option, &painter, this);
    painter.setPen(palette().color(QPalette::Mid));
    painter.drawRect(option.rect.adjusted(0, 0, -1, -1));
    return pixmap;
}

int EditorTabBar::dropIndexAt(const QPoint &position) const
{
    int index = 0;
    while (index < count() && tabRect(index).center().x() < position.x())
        ++index;
    return index;
}

bool EditorTabBar::event(QEvent *event)
{
    return dragEvent(event) || QTabBar::event(event);
}

/// Handles the events of a tab that is dragged over the bar. Returns true when the event is
/// consumed.
bool EditorTabBar::dragEvent(QEvent *event)
{
    switch (event->type()) {
    case QEvent::DragLeave:
        showDropMark(std::nullopt);
        return false;
    case QEvent::DragEnter:
    case QEvent::DragMove:
    case QEvent::Drop:
        break;
    default:
        return false;
    }
    auto *drop = static_cast<QDropEvent *>(event);
    const TabMimeData *mime = TabMimeData::of(drop->mimeData());
    if (mime == nullptr)
        return false;
    drop->setDropAction(Qt::MoveAction);
    drop->accept();
    const int index = dropIndexAt(drop->position().toPoint());
    const bool isDrop = event->type() == QEvent::Drop;
    showDropMark(isDrop ? std::nullopt : std::optional(index));
    if (isDrop)
        Q_EMIT tabDropped(mime, index);
    return true;
}

void EditorTabBar::showDropMark(std::optional<int> index)
{
    if (std::exchange(m_dropMark, index) != index)
        update();
}

void EditorTabBar::paintEvent(QPaintEvent *event)
{
    m_isPainting = true;
    QTabBar::paintEvent(event);
    m_isPainting = false;
    QPainter painter(this);
    const QColor accent = palette().color(QPalette::Highlight);
    // Mark the current tab: in some styles it hardly differs from the others on a dark desktop. A
    // pressed tab gets no line, because it may be painted at the mouse while it is moved.
    if (!m_pressedAt && count() > 1) {
        QRect line = tabRect(currentIndex());
        line.setHeight(kFrontLineHeight);
        painter.fillRect(line, accent);
    }
    if (m_dropMark)
        painter.fillRect(dropMarkRect(*m_dropMark), accent);
}

QRect EditorTabBar::dropMarkRect(int index) const
{
    const int last = count() - 1;
    int x = 0;
    if (index <= last)
        x = tabRect(index).left();
    else if (last >= 0)
        x = tabRect(last).right();
    x = std::clamp(x - kDropMarkWidth / 2, 0, std::max(0, width() - kDropMarkWidth));
    return {x, 0, kDropMarkWidth, height()};
}

void EditorTabBar::mousePressEvent(QMouseEvent *event)
{
    const QPoint position = event->position().toPoint();
    const int index = tabAt(position);
    m_middlePressed = event->button() == Qt::MiddleButton ? index : -1;
    if (event->button() == Qt::MiddleButton)
        return event->accept();
    QTabBar::mousePressEvent(event);
    if (event->button() == Qt::LeftButton && index >= 0) {
        update();
        m_pressedAt = position;
        m_pressedIndex = index;
        m_pressedTab = tabButton(index, kButtonSide);
        m_hotSpot = position - tabRect(index).topLeft();
    }
}

void EditorTabBar::mouseMoveEvent(QMouseEvent *event)
{
    const QPoint position = event->position().toPoint();
    const int reach = std::max(QApplication::startDragDistance(), height() / 2);
    const bool isOutside = !rect().adjusted(-reach, -reach, reach, reach).contains(position);
    // A shortcut may have selected another tab since the press.
    const bool isInFront = tabButton(currentIndex(), kButtonSide) == m_pressedTab;
    const bool isPulled = event->buttons().testFlag(Qt::LeftButton) && isOutside && isInFront;
    if (!m_pressedAt || !isPulled)
        return QTabBar::mouseMoveEvent(event);
    endMoving(*event, *m_pressedAt);
    // The tab may have been reordered on its way out of the bar: put it back.
    moveTab(currentIndex(), m_pressedIndex);
    m_pressedAt.reset();
    update();
    Q_EMIT tabDraggedOut(currentIndex(), m_hotSpot);
}

/// Ends QTabBar's own moving of the pressed tab by a synthetic release. The real release goes to
/// the drag.
void EditorTabBar::endMoving(const QMouseEvent &event, const QPoint &pressedAt)
{
    QMouseEvent release(QEvent::MouseButtonRelease,
                        pressedAt,
                        event.globalPosition(),
                        Qt::LeftButton,
                        Qt::NoButton,
                        event.modifiers());
    QTabBar::mouseReleaseEvent(&release);
}

void EditorTabBar::mouseReleaseEvent(QMouseEvent *event)
{
    m_pressedAt.reset();
    update();
    const int middlePressed = std::exchange(m_middlePressed, -1);
    if (event->button() != Qt::MiddleButton)
        return QTabBar::mouseReleaseEvent(event);
    event->accept();
    if (middlePressed >= 0 && tabAt(event->position().toPoint()) == middlePressed)
        Q_EMIT closeRequested(middlePressed);
}

void EditorTabBar::contextMenuEvent(QContextMenuEvent *event)
{
    const bool isByKey = event->reason() == QContextMenuEvent::Keyboard;
    const int index = isByKey ? currentIndex() : tabAt(event->pos());
    if (index < 0)
        return QTabBar::contextMenuEvent(event);
    const QPoint place = isByKey ? mapToGlobal(tabRect(index).bottomLeft()) : event->globalPos();
    Q_EMIT menuRequested(index, place);
}

QString EditorTabBar::shownName(int index) const
{
    if (!m_shownNames)
        m_shownNames = shownNames();
    return m_shownNames->value(index);
}

QStringList EditorTabBar::shownNames() const
{
    return distinctNames(names(), [this](qsizetype index, const QString &name) {
        QStyleOptionTab option;
        QTabBar::initStyleOption(&option, static_cast<int>(index));
        const QRect text = style()->subElementRect(QStyle::SE_TabBarTabText, &option, this);
        return fontMetrics().elidedText(name, Qt::ElideMiddle, text.width());
    });
}

void EditorTabBar::initStyleOption(QStyleOptionTab *option, int index) const
{
    QTabBar::initStyleOption(option, index);
    if (m_isPainting) // Also called for each tab of each layout, which does not need it.
        option->text = verbatimText(shownName(index));
}

void EditorTabBar::changeEvent(QEvent *event)
{
    m_sizeHints.clear(); // The font or the style may have changed.
    QTabBar::changeEvent(event);
}

void EditorTabBar::tabLayoutChange()
{
    m_shownNames.reset();
    if (m_sizeHints.size() > qsizetype{2} * count())
        m_sizeHints.clear(); // Of tabs that are gone.
    Q_EMIT laidOut();
}

QSize EditorTabBar::tabSizeHint(int index) const
{
    // Asked for each tab in each layout, and measuring a text is slow.
    const QString text = tabText(index);
    if (tabButton(index, kButtonSide) == nullptr) // It is being inserted.
        return QTabBar::tabSizeHint(index);
    auto known = m_sizeHints.constFind(text);
    if (known == m_sizeHints.constEnd())
        known = m_sizeHints.insert(text, QTabBar::tabSizeHint(index));
    QSize size = *known;
    size.setWidth(std::clamp(
        size.width(), characterWidths(kMinimumTabWidth), characterWidths(kMaximumTabWidth)));
    return size;
}

// Tabs keep this width; when there is no room for all of them, the bar scrolls.
QSize EditorTabBar::minimumTabSizeHint(int index) const
{
    QSize size = tabSizeHint(index);
    size.setWidth(characterWidths(kMinimumTabWidth));
    return size;
}

int EditorTabBar::characterWidths(int count) const
{
    return fontMetrics().averageCharWidth() * count;
}

} // namespace penwick
