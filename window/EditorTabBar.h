#pragma once

#include "window/TabLabel.h"

#include <QHash>
#include <QPixmap>
#include <QPointer>
#include <QStringList>
#include <QTabBar>

#include <optional>

namespace penwick {

class TabMimeData;

/// The tabs of an editor window. The user reorders them by dragging; a tab dragged out of the bar
/// emits `tabDraggedOut`. The bar closes no tab and opens no menu itself: it emits a signal for
/// each request. Its texts come from the wording lookup and follow a change of the wording at once.
class EditorTabBar final : public QTabBar
{
    Q_OBJECT

public:
    explicit EditorTabBar(QWidget *parent = nullptr);

    /// Adds a tab before the one at `index`.
    void insert(int index, const TabLabel &label);
    void setLabel(int index, const TabLabel &label);

    /// Returns the names of the tabs, each on one line, whole also where a tab shows less.
    [[nodiscard]] QStringList names() const;
    /// Returns what the tab shows of its name at its current width. Similar names are cut where
    /// they do not differ; see `distinctNames`.
    [[nodiscard]] QString shownName(int index) const;
    [[nodiscard]] bool isEdited(int index) const;

    /// Returns whether a bar of this width shows all tabs at once.
    [[nodiscard]] bool fitsInto(int width) const;

    /// Returns the picture of the tab that follows the mouse during a drag.
    [[nodiscard]] QPixmap picture(int index) const;

    /// Returns the index of the tab before which a tab dropped at `position` is inserted; `count()`
    /// for after the last one.
    [[nodiscard]] int dropIndexAt(const QPoint &position) const;

Q_SIGNALS:
    /// Emitted when the user clicks the tab's close button, or the tab with the middle mouse
    /// button.
    void closeRequested(int index);
    /// Emitted when the mouse has dragged a tab out of the bar.
    /// \param hotSpot the mouse position relative to the tab's picture.
    void tabDraggedOut(int index, const QPoint &hotSpot);
    void menuRequested(int index, const QPoint &globalPosition);
    void tabDropped(const penwick::TabMimeData *mime, int index);
    /// Emitted when the tabs have been laid out anew.
    void laidOut();

protected:
    bool event(QEvent *event) override;
    void mousePressEvent(QMouseEvent *event) override;
    void mouseMoveEvent(QMouseEvent *event) override;
    void mouseReleaseEvent(QMouseEvent *event) override;
    void contextMenuEvent(QContextMenuEvent *event) override;
    void paintEvent(QPaintEvent *event) override;
    void initStyleOption(QStyleOptionTab *option, int index) const override;
    void changeEvent(QEvent *event) override;
    void tabLayoutChange() override;
    [[nodiscard]] QSize tabSizeHint(int index) const override;
    [[nodiscard]] QSize minimumTabSizeHint(int index) const override;

private:
    bool dragEvent(QEvent *event);
    [[nodiscard]] QRect dropMarkRect(int index) const;
    void showDropMark(std::optional<int> index);
    void endMoving(const QMouseEvent &event, const QPoint &pressedAt);
    void relabel();
    [[nodiscard]] int characterWidths(int count) const;
    [[nodiscard]] QStringList shownNames() const;

    std::optional<QPoint> m_pressedAt; // Where the left button was pressed on a tab.
    int m_pressedIndex = -1;
    QPointer<QWidget> m_pressedTab; // Its button: identifies it when indexes change.
    QPoint m_hotSpot;
    int m_middlePressed = -1;
    std::optional<int> m_dropMark;
    bool m_isPainting = false;
    mutable QHash<QString, QSize> m_sizeHints;       // By the text of a tab, before limits.
    mutable std::optional<QStringList> m_shownNames; // For the current layout, once it is painted.
};

} // namespace penwick
