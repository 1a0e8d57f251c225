#pragma once

#include <QMimeData>
#include <QPointer>

namespace penwick {

class EditorWindow;
class EditorWindowController;

/// The data of a tab that is being dragged. It contains no bytes, because only this process can use
/// it. It also records where the tab was dropped: the tab moves after the drag has ended.
class TabMimeData final : public QMimeData
{
    Q_OBJECT

public:
    explicit TabMimeData(EditorWindowController *tab);
    ~TabMimeData() override;

    /// Returns `mime` as a tab's data; null for any other data and for null.
    [[nodiscard]] static const TabMimeData *of(const QMimeData *mime);

    /// Null when the tab was closed meanwhile.
    [[nodiscard]] EditorWindowController *tab() const;

    /// Records that the tab is to move to `window`, before the tab at `index`; -1 for after the
    /// last.
    void dropOn(EditorWindow *window, int index) const;

    /// Null when the tab was not dropped on a window, or when that window was destroyed.
    [[nodiscard]] EditorWindow *target() const;

    [[nodiscard]] int targetIndex() const { return m_index; }

private:
    QPointer<EditorWindowController> m_tab;
    // Mutable, because the toolkit gives a drop target only const access to the data.
    mutable QPointer<EditorWindow> m_target;
    mutable int m_index = -1;
};

} // namespace penwick
