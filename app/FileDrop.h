#pragma once

#include <QObject>
#include <QStringList>

#include <functional>

class QWidget;

namespace penwick {

/// Takes the files that are dropped on a window, wherever in it: on the text, a field, the status
/// bar. It watches the whole application, because each field of a window would take what is dropped
/// on it for a text.
class FileDrop final : public QObject
{
public:
    /// True for windows that take files. They must accept drops.
    using IsTarget = std::function<bool(const QWidget *window)>;
    /// Gets the absolute paths in a later turn of the event loop: until the drop has been answered,
    /// the program that the files come from stands still.
    using Open = std::function<void(const QStringList &paths)>;

    FileDrop(IsTarget isTarget, Open open, QObject *parent = nullptr);

protected:
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    IsTarget m_isTarget;
    Open m_open;
};

} // namespace penwick
