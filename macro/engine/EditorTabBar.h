#pragma once

#include "macro/engine/TabLabel.h"

#include <QPixmap>
#include <QPointer>
#include <QTabBar>

#include <optional>

namespace penwick {

class TabMimeData;

/// The tabs of an editor window. They are reordered by dragging; what is dragged farther leaves the
/// bar. It shows what it is told and reports what is asked of it. Its texts come from the wording
/// lookup and follow a change of the wording at once.
class EditorTabBar final : public QTabBar
{
    Q_OBJECT

public:
    explicit EditorTabBar(QWidget *parent = nullptr);

    /// Adds a tab before the one at `index`.
    void insert(int index, const TabLabel &label);
    void setLabel(int index, const TabLabel &label);

    /// The tab as it hangs on the mouse.
    [[nodiscard]] QPixmap picture(int index) const;

    /// Where a tab that is dropped at `position` belongs: before the tab of this index, or behind
    /// all when it is `count()`.
    [[nodiscard]] int dropIndexAt(const QPoint &position) const;

Q_SIGNALS:
    /// By its button or the middle button of the mouse.
    void closeRequested(int index);
    /// The mouse has pulled a tab out of the bar.
    /// \param hotSpot where it holds the tab, in the coordinates of the tab's picture.
    void pulledOut(int index, const QPoint &hotSpot);
    void menuRequested(int index, const QPoint &globalPosition);
    void tabDropped(const penwick::TabMimeData *mime, int index);

protected:
    bool event(QEvent *event) override;
    void mousePressEvent(QMouseEvent *event) override;
    void mouseMoveEvent(QMouseEvent *event) override;
    void mouseReleaseEvent(QMouseEvent *event) override;
    void contextMenuEvent(QContextMenuEvent *event) override;
    void paintEvent(QPaintEvent *event) override;
    [[nodiscard]] QSize tabSizeHint(int index) const override;
    [[nodiscard]] QSize minimumTabSizeHint(int index) const override;

private:
    bool dragEvent(QEvent *event);
    [[nodiscard]] QRect dropMarkRect(int index) const;
    void showDropMark(std::optional<int> index);
    void endMoving(const QMouseEvent &event, const QPoint &pressedAt);
    void relabel();
    [[nodiscard]] int characterWidths(int count) const;

    std::optional<QPoint> m_pressedAt; // Where the left button went down on a tab.
    int m_pressedIndex = -1;
    QPointer<QWidget> m_pressedTab; // Its button, for the index changes.
    QPoint m_hotSpot;
    int m_middlePressed = -1;
    std::optional<int> m_dropMark;
};

} // namespace penwick
