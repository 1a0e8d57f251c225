#pragma once

#include <QMimeData>
#include <QPointer>

namespace penwick {

class EditorWindow;
class EditorWindowController;

/// A tab on its way to another place. It holds no bytes: what it means only this process can see,
/// and where it is dropped is noted here, for the tab moves when the drag is over.
class TabMimeData final : public QMimeData
{
    Q_OBJECT

public:
    explicit TabMimeData(EditorWindowController *tab);
    ~TabMimeData() override;

    /// The tab in `mime`, which may be null; null for everything else that is dragged.
    [[nodiscard]] static const TabMimeData *of(const QMimeData *mime);

    /// Null when the tab was closed meanwhile.
    [[nodiscard]] EditorWindowController *tab() const;

    /// The tab is to stand in `window` before the tab at `index`, behind all where that is -1.
    void dropOn(EditorWindow *window, int index) const;

    /// Null where it was dropped on no window, or that is gone.
    [[nodiscard]] EditorWindow *target() const;

    [[nodiscard]] int targetIndex() const { return m_index; }

private:
    QPointer<EditorWindowController> m_tab;
    // The toolkit shows the data to whom it is dropped on, but not to be changed.
    mutable QPointer<EditorWindow> m_target;
    mutable int m_index = -1;
};

} // namespace penwick
